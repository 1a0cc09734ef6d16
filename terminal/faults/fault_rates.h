// SPDX-License-Identifier: MIT
// How badly a terminal behaves, as the command line says it.
//
//   seed=7,drop=1,delay=2,cut=1,repeat=1,flip=1,length=1,checksum=1,garbage=1,silence=1,stall=1,unplug=0.1
//
// The numbers are per cent: of the answers, and for `stall` and `unplug` of the transfers. A list
// that names no kind of fault has all of them at their usual frequency; one that names any has only
// those. Without a seed there is a new one each time.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

namespace gwq::terminal::faults {

enum class Fault : std::size_t {
  kDrop,      // the answer is lost
  kDelay,     // it comes later
  kCut,       // its end is missing
  kRepeat,    // it comes twice
  kFlip,      // a bit is wrong
  kLength,    // bytes at its beginning, where lengths stand, are extreme
  kChecksum,  // one of its last bytes is wrong, or one of the first, where packets have their check
  kGarbage,   // random bytes come in its place
  kSilence,   // this answer and some that follow are lost
  kStall,     // a transfer hangs, a part of it moved, or fails
  kUnplug,    // the terminal is gone from the bus for a moment
};
inline constexpr std::size_t kFaultKinds = 11;

struct FaultRates {
  std::uint64_t seed = 0;
  std::array<double, kFaultKinds> percent{};

  [[nodiscard]] double PercentOf(Fault fault) const { return percent[static_cast<std::size_t>(fault)]; }
};

// Throws std::runtime_error, telling what is wrong.
[[nodiscard]] FaultRates ParseRates(const std::string& text);

// What ParseRates turns into the same again.
[[nodiscard]] std::string RatesText(const FaultRates& rates);

}  // namespace gwq::terminal::faults
