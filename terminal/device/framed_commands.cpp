// SPDX-License-Identifier: MIT
#include "device/framed_commands.h"

#include <algorithm>
#include <cstdio>
#include <string>

#include "protocol/pinpad_frame.h"

namespace gwq::terminal::device {
namespace {

std::string Hex(std::uint16_t word) {
  char text[5] = {};
  std::snprintf(text, sizeof text, "%04X", static_cast<unsigned>(word));
  return text;
}

}  // namespace

std::optional<FramedAnswer> FramedCommands::CarryOut(std::span<const std::uint8_t> frame,
                                                     const OnCommand& on_command) const {
  const auto body = protocol::ReadFrame(frame);
  if (!body) return FramedAnswer{kStatusDamagedFrame, {}};
  if (body->size() < 2) return FramedAnswer{kStatusUnknownCommand, {}};
  const int code = ((*body)[0] << 8) | (*body)[1];
  const auto has_code = [code](const Handler& handler) { return handler.row->code == code; };
  const auto handler = std::find_if(handlers_.begin(), handlers_.end(), has_code);
  if (handler == handlers_.end()) return FramedAnswer{kStatusUnknownCommand, {}};
  on_command(*handler->row);
  return handler->run(Arguments(*body).subspan(2));
}

void AnswerFrame(HostChannel& host, FramedAnswer answer) {
  host.Answer(protocol::MakeAnswerFrame(answer.status, answer.data), "PIN-pad status " + Hex(answer.status));
  Wipe(answer.data);
}

}  // namespace gwq::terminal::device
