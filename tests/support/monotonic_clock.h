// SPDX-License-Identifier: MIT
// The library's monotonic clock in the test's hand: it moves with the test clock, but not when that
// is set back. For one source of a program that is linked with -Wl,--wrap=clock_gettime.
#pragma once

#include <ctime>

#include "support/test_clock.h"

namespace gwq::test {

inline std::int64_t g_set_back_ms = 0;

inline std::int64_t MonotonicNowMs() {
  return NowMs() + g_set_back_ms;
}

// The wall clock alone.
inline void SetBackBy(std::time_t seconds) {
  SetTime(Now() - seconds);
  g_set_back_ms += seconds * 1000;
}

}  // namespace gwq::test

extern "C" {

int __real_clock_gettime(clockid_t clock, std::timespec* out);
int __wrap_clock_gettime(clockid_t clock, std::timespec* out);

[[gnu::used]] inline int __wrap_clock_gettime(clockid_t clock, std::timespec* out) {
  if (clock != CLOCK_MONOTONIC) return __real_clock_gettime(clock, out);
  const std::int64_t now = gwq::test::MonotonicNowMs();
  *out = {.tv_sec = now / 1000, .tv_nsec = static_cast<long>(now % 1000 * 1'000'000)};
  return 0;
}

}  // extern "C"
