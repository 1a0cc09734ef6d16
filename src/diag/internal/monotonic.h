// SPDX-License-Identifier: MIT
// The monotonic clock, which setting the time of day does not move.
#pragma once

#include <cstdint>
#include <ctime>

namespace gwq {

inline std::int64_t MonotonicUs() {
  std::timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return std::int64_t{now.tv_sec} * 1'000'000 + now.tv_nsec / 1000;
}

inline std::int64_t MonotonicMs() {
  return MonotonicUs() / 1000;
}

}  // namespace gwq
