// SPDX-License-Identifier: MIT
// The loops of every link's read and drain.
#pragma once

#include <algorithm>
#include <cstdint>
#include <ctime>
#include <optional>

#include <gwq/links/end_of_read.h>
#include <gwq/status_codes.h>
#include "diag/internal/monotonic.h"
#include "links/internal/read_gate.h"

namespace gwq {

// The conditions that end a read.
class ReadEnd {
 public:
  ReadEnd(int maximum, int timeout_s, GwqEndOfRead predicate)
      : maximum_(maximum), timeout_s_(timeout_s), predicate_(predicate), start_(time(nullptr)) {}

  // The result of a read that is over after `count` bytes. The time-out is checked last, so that an
  // answer at the last moment counts.
  // Contract: the predicate is called after every read, also one that brought nothing, unless
  // `maximum` is reached.
  // Contract: more bytes than `maximum` are reported as `maximum`.
  // Contract: the time is in whole seconds of the clock, so that a read takes up to a second longer
  // than its time-out.
  [[nodiscard]] std::optional<int> Reached(unsigned char* buffer, int count) const {
    if (count >= maximum_) return maximum_;
    if (predicate_ != nullptr && predicate_(buffer, count) == 0) return count;
    if (time(nullptr) - start_ > timeout_s_) return GWQ_LINK_TIMEOUT;
    return std::nullopt;
  }

 private:
  int maximum_;
  int timeout_s_;
  GwqEndOfRead predicate_;
  std::time_t start_;
};

// Reads until `end`, or until the gate is cancelled, which returns cancelled(). `read_some` appends
// the available bytes at buffer + count, waits at most a fraction of a second for them, and returns
// their number, negative after an error.
template <typename ReadSome, typename Cancelled>
int ReadUntil(const ReadEnd& end, const ReadGate& gate, unsigned char* buffer, ReadSome read_some,
              Cancelled cancelled) {
  int count = 0;
  while (true) {
    if (gate.cancelled()) return cancelled();
    const int got = read_some(count);
    if (got < 0) return GWQ_LINK_READ;
    count += got;
    if (const auto result = end.Reached(buffer, count)) return *result;
  }
}

// What ends a drain: no byte has arrived for so many milliseconds, or bytes keep coming for a second.
class Silence {
 public:
  explicit Silence(int ms) : length_us_(std::int64_t{ms} * 1000), limit_us_(MonotonicUs() + kLimitUs) {
    Restart();
  }

  void Restart() { ends_us_ = std::min(MonotonicUs() + length_us_, limit_us_); }
  // What remains of it, rounded up; 0 once it is over.
  [[nodiscard]] int LeftMs() const {
    return static_cast<int>((std::max<std::int64_t>(ends_us_ - MonotonicUs(), 0) + 999) / 1000);
  }

 private:
  static constexpr std::int64_t kLimitUs = 1'000'000;

  std::int64_t length_us_;
  std::int64_t limit_us_;
  std::int64_t ends_us_ = 0;
};

// Throws away what arrives until `silence_ms` without a byte are over, which returns
// GWQ_LINK_TIMEOUT, or until the gate is cancelled, which returns `cancelled`. `skip_some` waits at
// most so many milliseconds for bytes and returns their number, negative after an error.
template <typename SkipSome>
int DrainUntilSilent(int silence_ms, const ReadGate& gate, SkipSome skip_some, int cancelled) {
  constexpr int kLongestWaitMs = 200;  // until a cancel is seen
  Silence silence(silence_ms);
  while (true) {
    if (gate.cancelled()) return cancelled;
    const int left_ms = silence.LeftMs();
    if (left_ms == 0) return GWQ_LINK_TIMEOUT;
    const int got = skip_some(std::min(left_ms, kLongestWaitMs));
    if (got < 0) return GWQ_LINK_READ;
    if (got > 0) silence.Restart();
  }
}

}  // namespace gwq
