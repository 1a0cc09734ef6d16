// The loop of every link's read.
#pragma once

#include <ctime>
#include <optional>

#include <gwq/links/end_of_read.h>
#include <gwq/status_codes.h>
#include "links/internal/read_gate.h"

namespace gwq {

// When a read is over.
class ReadEnd {
 public:
  ReadEnd(int maximum, int timeout_s, GwqEndOfRead predicate)
      : maximum_(maximum), timeout_s_(timeout_s), predicate_(predicate), start_(time(nullptr)) {}

  // The result of a read that is over after `count` bytes: enough bytes, a complete answer, or the time, checked in this
  // order, so that an answer in the last moment counts.
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

// Reads until `end`, or until the gate is cancelled, whose result `cancelled` gives. `read_some` brings what is there to
// buffer + count, waits at most a fraction of a second for it, and returns the bytes it brought or a negative for an error.
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
