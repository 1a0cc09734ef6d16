// SPDX-License-Identifier: MIT
#include "files/internal/output_room.h"

#include <gwq/extra.h>
#include <gwq/frame/port.h>

namespace gwq {
namespace {

constexpr int kUnlimited = 0;
thread_local int t_output_room = kUnlimited;

}  // namespace

bool FitsOutputRoom(std::size_t bytes) {
  return t_output_room == kUnlimited || bytes <= static_cast<std::size_t>(t_output_room);
}

}  // namespace gwq

using namespace gwq;

int GWQ_SetOutputRoom(int bytes) {
  if (bytes < 0) return GWQ_BAD_ARGUMENT;
  t_output_room = bytes;
  return GWQ_OK;
}
