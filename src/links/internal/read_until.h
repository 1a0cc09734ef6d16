// SPDX-License-Identifier: MIT
// The loop of every link's read.
#pragma once

#include <ctime>
#include <optional>

#include <gwq/links/end_of_read.h>
#include <gwq/status_codes.h>
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

}  // namespace gwq
