// SPDX-License-Identifier: MIT
// What is done for the commands that come in a PIN-pad frame; the parts that know framed
// commands add theirs here, as for text commands.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <vector>

#include "base/types.h"
#include "device/host_channel.h"
#include "device/text_commands.h"

namespace gwq::terminal::device {

// Status words of our own; a command adds the ones it needs.
inline constexpr std::uint16_t kStatusOk = 0x0000;
inline constexpr std::uint16_t kStatusBadArgument = 0x6A80;
inline constexpr std::uint16_t kStatusNoSuchKey = 0x6A88;
inline constexpr std::uint16_t kStatusUnknownCommand = 0x6D00;
inline constexpr std::uint16_t kStatusDamagedFrame = 0x6F01;

struct FramedAnswer {
  std::uint16_t status = kStatusOk;
  Bytes data;
};

// The body behind its first two bytes. Hosts measure bodies as texts: a zero byte
// and what is behind it do not arrive, so an argument that is missing is 0.
using Arguments = std::span<const std::uint8_t>;

inline std::uint8_t ArgumentAt(Arguments arguments, std::size_t index) {
  return index < arguments.size() ? arguments[index] : std::uint8_t{0};
}

class FramedCommands {
 public:
  // Nothing when it answers by itself, now or later.
  using Run = std::function<std::optional<FramedAnswer>(Arguments arguments)>;

  // The row outlives this object.
  void Add(const protocol::CommandRow& row, Run run) { handlers_.push_back({&row, std::move(run)}); }

  // Carries out the command in a frame as it came, and tells `on_command` before. A damaged frame
  // and a code that no row has are answered by a status word too.
  [[nodiscard]] std::optional<FramedAnswer> CarryOut(std::span<const std::uint8_t> frame,
                                                     const OnCommand& on_command) const;

 private:
  struct Handler {
    const protocol::CommandRow* row;
    Run run;
  };
  std::vector<Handler> handlers_;
};

// Wipes the data.
void AnswerFrame(HostChannel& host, FramedAnswer answer);

}  // namespace gwq::terminal::device
