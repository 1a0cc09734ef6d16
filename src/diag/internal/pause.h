// SPDX-License-Identifier: MIT
// Sleeps that signals do not shorten.
#pragma once

#include <unistd.h>

#include <cerrno>
#include <ctime>

namespace gwq {

inline void PauseMs(int milliseconds) {
  constexpr long kNsPerMs = 1'000'000;
  std::timespec left{.tv_sec = milliseconds / 1000, .tv_nsec = milliseconds % 1000 * kNsPerMs};
  while (nanosleep(&left, &left) != 0 && errno == EINTR) continue;
}

// Calls sleep(), for pauses whose unit is the second.
inline void PauseS(unsigned seconds) {
  while (seconds > 0) {
    seconds = sleep(seconds);  // NOLINT(concurrency-mt-unsafe): built on nanosleep, not on alarms
  }
}

}  // namespace gwq
