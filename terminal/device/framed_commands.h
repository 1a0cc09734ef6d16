// The table of commands that come in a PIN-pad frame. It has no rows yet: a room
// that knows framed commands adds them here, as the rooms of text commands do.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "device/device.h"

namespace gwq::terminal {

// Status words of our own; a command adds the ones it needs.
inline constexpr std::uint16_t kStatusOk = 0x0000;
inline constexpr std::uint16_t kStatusUnknownCommand = 0x6D00;
inline constexpr std::uint16_t kStatusDamagedFrame = 0x6F01;

struct FramedAnswer {
  std::uint16_t status = kStatusOk;
  Bytes data;
};

struct FramedCommand {
  std::uint16_t code = 0;  // the body's first two bytes
  std::function<FramedAnswer(std::span<const std::uint8_t> arguments)> run;
};

class FramedCommands {
 public:
  void Add(FramedCommand row) { rows_.push_back(std::move(row)); }

  // Carries out the command in a frame as it came. A damaged frame and a code
  // that no row has are answered by a status word too.
  [[nodiscard]] FramedAnswer Run(std::span<const std::uint8_t> frame) const;

 private:
  std::vector<FramedCommand> rows_;
};

}  // namespace gwq::terminal
