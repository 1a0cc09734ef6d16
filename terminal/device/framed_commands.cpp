// SPDX-License-Identifier: MIT
#include "device/framed_commands.h"

#include <algorithm>
#include <cstdio>
#include <string>

#include "device/pinpad_frame.h"

namespace gwq::terminal {
namespace {

std::string Hex(std::uint16_t word) {
  char text[5] = {};
  std::snprintf(text, sizeof text, "%04X", static_cast<unsigned>(word));
  return text;
}

}  // namespace

std::optional<FramedAnswer> FramedCommands::Run(std::span<const std::uint8_t> frame) const {
  const auto body = ReadFrame(frame);
  if (!body) return FramedAnswer{kStatusDamagedFrame, {}};
  if (body->size() < 2) return FramedAnswer{kStatusUnknownCommand, {}};
  const int code = ((*body)[0] << 8) | (*body)[1];
  const auto has_code = [code](const FramedCommand& row) { return row.code == code; };
  const auto row = std::find_if(rows_.begin(), rows_.end(), has_code);
  if (row == rows_.end()) return FramedAnswer{kStatusUnknownCommand, {}};
  return row->run(Arguments(*body).subspan(2));
}

void AnswerFrame(Outlet& outlet, FramedAnswer answer) {
  outlet.Answer(MakeAnswerFrame(answer.status, answer.data), "PIN-pad status " + Hex(answer.status));
  Wipe(answer.data);
}

}  // namespace gwq::terminal
