#include "device/framed_commands.h"

#include <algorithm>

#include "device/pinpad_frame.h"

namespace gwq::terminal {

FramedAnswer FramedCommands::Run(std::span<const std::uint8_t> frame) const {
  const auto body = ReadFrame(frame);
  if (!body) return {kStatusDamagedFrame, {}};
  if (body->size() < 2) return {kStatusUnknownCommand, {}};
  const int code = ((*body)[0] << 8) | (*body)[1];
  const auto has_code = [code](const FramedCommand& row) { return row.code == code; };
  const auto row = std::find_if(rows_.begin(), rows_.end(), has_code);
  if (row == rows_.end()) return {kStatusUnknownCommand, {}};
  return row->run(std::span<const std::uint8_t>(*body).subspan(2));
}

}  // namespace gwq::terminal
