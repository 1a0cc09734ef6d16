// SPDX-License-Identifier: MIT
// A clock in the test's hand. A program that links gwq_test_support has its own time, sleep, usleep and
// nanosleep, which the library under test (and std::this_thread::sleep_for) then calls: no sleep is ever
// slept, each is recorded and moves the clock instead.
//
// Until the first SetTime the clock runs with the wall clock, ahead of it by what was slept; from then on it
// stands still but for AdvanceMs and the sleeps. All functions may be called from any thread.
#pragma once

#include <cstdint>
#include <ctime>
#include <vector>

namespace gwq::test {

// Stops the clock at this time.
void SetTime(std::time_t now);

// What time() answers, and more exactly.
std::time_t Now();
std::int64_t NowMs();

// Moves the clock without a sleep being recorded.
void AdvanceMs(std::int64_t milliseconds);

// The sleeps since the last ResetClock, oldest first, in milliseconds rounded up.
std::vector<std::int64_t> SleptMs();

// For tests that sleep without end.
void ForgetSleeps();

// Back to the wall clock, with no sleeps recorded.
void ResetClock();

// Really waits; for tests that must give another thread a moment.
void ReallySleepMs(int milliseconds);

}  // namespace gwq::test
