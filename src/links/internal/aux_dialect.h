// SPDX-License-Identifier: MIT
// The escape sequences by which terminals switch their auxiliary port on and off.
#pragma once

#include <array>
#include <string_view>

namespace gwq {

// Terminal dialects.
// Contract: every other number means the first one.
enum AuxDialect { kAuxFirst = 1, kAuxSecond = 2, kAuxThird = 3, kAuxFifth = 5 };

using AuxSequence = std::array<char, 48>;  // terminated text

// The sequence that switches the port on. A port or baud rate without a code gets the dialect's
// default.
AuxSequence AuxSwitchOn(int type, int port, int baud);

const char* AuxSwitchOff(int type);

// Sent before and after each write. Empty for the dialects that stay switched until the port is
// closed.
struct AuxWrapping {
  std::string_view prefix;
  std::string_view suffix;
};
AuxWrapping AuxWrappingOf(int type);

}  // namespace gwq
