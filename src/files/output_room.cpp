#include "files/internal/output_room.h"

#include <gwq/extra.h>
#include <gwq/frame/port.h>

namespace gwq {
namespace {

constexpr int kUnlimited = 0;
thread_local int t_output_room = kUnlimited;

}  // namespace

bool FindsRoom(std::size_t bytes) {
  return t_output_room == kUnlimited || bytes <= static_cast<std::size_t>(t_output_room);
}

}  // namespace gwq

int GWQ_SetOutputRoom(int bytes) {
  if (bytes < 0) return GWQ_BAD_ARGUMENT;
  gwq::t_output_room = bytes;
  return GWQ_OK;
}
