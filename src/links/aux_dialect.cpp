// SPDX-License-Identifier: MIT
#include "links/internal/aux_dialect.h"

#include <algorithm>
#include <cstdio>

#include <gwq/diag/log.h>

namespace gwq {
namespace {

struct PortCodes {
  int port;
  char letter;
  int fifth;
};

struct SpeedCodes {
  int baud;
  int first;
  int third;
};

// Contract: the first entry of each table stands for every port or baud rate that the table lacks.
constexpr std::array kPortCodes{PortCodes{1, 'Y', 45}, PortCodes{2, 'Z', 54}, PortCodes{3, 'X', 60},
                                PortCodes{4, 'V', 45}};
constexpr std::array kSpeedCodes{
    SpeedCodes{9600, 0, 8},   SpeedCodes{4800, 1, 7},   SpeedCodes{2400, 2, 6},
    SpeedCodes{1200, 3, 5},   SpeedCodes{600, 5, 4},    SpeedCodes{300, 6, 3},
    SpeedCodes{19200, 10, 9}, SpeedCodes{38400, 11, 8}, SpeedCodes{115200, 12, 8}};

const PortCodes& CodesOfPort(int port) {
  const auto* const found = std::find_if(kPortCodes.begin(), kPortCodes.end(),
                                         [port](const PortCodes& codes) { return codes.port == port; });
  return found == kPortCodes.end() ? kPortCodes.front() : *found;
}

const SpeedCodes& CodesOfBaud(int baud) {
  const auto* const found = std::find_if(kSpeedCodes.begin(), kSpeedCodes.end(),
                                         [baud](const SpeedCodes& codes) { return codes.baud == baud; });
  return found == kSpeedCodes.end() ? kSpeedCodes.front() : *found;
}

template <typename... Numbers>
AuxSequence Sequence(const char* format, Numbers... numbers) {
  AuxSequence text{};
  std::snprintf(text.data(), text.size(), format, numbers...);
  return text;
}

}  // namespace

AuxSequence AuxSwitchOn(int type, int port, int baud) {
  const PortCodes& codes = CodesOfPort(port);
  const SpeedCodes& speed = CodesOfBaud(baud);
  switch (type) {
    case kAuxSecond:
      return Sequence("\x1B[%d>", codes.port - 1);
    case kAuxThird:
      return Sequence("\x1B[/%d;%d;%d;%d;%d;%dM", codes.port, 1, speed.third, 3, 1, 0);
    case kAuxFifth:
      return Sequence("\x1B!%d;1m\x1B!b", codes.fifth);
    default:
      ICC_DPrintLogToFile("Star_GetOpenAuxCmd  SUCCESS!\n");
      return Sequence("\x1B!%d;%d;%d;%d%c\x1B[/54l\x1B[/53h\x1B[/50h", speed.first, 0, 0, 0, codes.letter);
  }
}

const char* AuxSwitchOff(int type) {
  switch (type) {
    case kAuxSecond:
      return "\x1B[<";
    case kAuxThird:
      return "\x1B[/M";
    case kAuxFifth:
      return "\x1B!P";
    default:
      return "\x1B[/51l\x1B[/50l";
  }
}

AuxWrapping AuxWrappingOf(int type) {
  switch (type) {
    case kAuxSecond:
    case kAuxFifth:
      return {"", ""};
    case kAuxThird:
      return {"\x1B[/|", "|"};
    default:
      return {"\x1B[/51h", "\x1B[/51l"};
  }
}

}  // namespace gwq
