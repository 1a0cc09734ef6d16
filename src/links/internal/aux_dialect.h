// The escape sequences by which terminals switch their auxiliary port on and off.
#pragma once

#include <array>
#include <string_view>

namespace gwq {

// Terminal dialects; every other number speaks as the first.
enum AuxDialect { kAuxFirst = 1, kAuxSecond = 2, kAuxThird = 3, kAuxFifth = 5 };

using AuxSequence = std::array<char, 48>;  // text

// Ports and bauds that a dialect has no code for take its default.
AuxSequence AuxSwitchOn(int type, int port, int baud);

const char* AuxSwitchOff(int type);

// What stands around each write; empty for dialects that switch for good.
struct AuxWrapping {
  std::string_view prefix;
  std::string_view suffix;
};
AuxWrapping AuxWrappingOf(int type);

}  // namespace gwq
