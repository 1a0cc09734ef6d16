// When a read of any link is over.
#pragma once

#include <ctime>
#include <optional>

#include <gwq/links/serial.h>
#include <gwq/status_codes.h>

namespace gwq {

class ReadEnd {
 public:
  ReadEnd(int maximum, int timeout_s, GwqEndOfRead predicate)
      : maximum_(maximum), timeout_s_(timeout_s), predicate_(predicate), start_(time(nullptr)) {}

  // The read's result when it is over after `count` bytes: enough bytes, a complete answer, or the time;
  // looked at in this order, so that an answer in the last moment still counts.
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

}  // namespace gwq
