// SPDX-License-Identifier: MIT
// What the command line asks of recordings.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace gwq::terminal::recording {

struct RecordOptions {
  std::string file;      // empty: nothing is recorded
  bool secrets = false;  // keys, PINs and numbers too
};

// A device on a bus, as captures name it.
struct BusAddress {
  std::uint16_t bus = 0;
  std::uint8_t device = 0;
  friend bool operator==(const BusAddress&, const BusAddress&) = default;
  friend bool operator<(const BusAddress& one, const BusAddress& other) {
    return one.bus != other.bus ? one.bus < other.bus : one.device < other.device;
  }
};

// How the server of a replay ends when the host differed.
inline constexpr int kReplayDiffered = 3;

struct ReplayOptions {
  std::string file;                  // empty: nothing is replayed
  bool fast = false;                 // without the waits
  std::optional<BusAddress> device;  // which of a capture; nothing: found by what it says
};

}  // namespace gwq::terminal::recording
