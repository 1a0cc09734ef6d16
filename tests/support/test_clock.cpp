// SPDX-License-Identifier: MIT
#include "support/test_clock.h"

#include <poll.h>
#include <sched.h>
#include <unistd.h>

#include <mutex>

namespace gwq::test {
namespace {

constexpr std::int64_t kMsPerSecond = 1000;
constexpr std::int64_t kNsPerMs = 1'000'000;

std::int64_t WallClockMs() {
  std::timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  return now.tv_sec * kMsPerSecond + now.tv_nsec / kNsPerMs;
}

// Made on first use, for the load hook asks for the time before this file's own initialisers; never
// destroyed, for the unload hook may ask after them.
class Clock {
 public:
  static Clock& Instance() {
    static Clock* const s_pClock = new Clock;
    return *s_pClock;
  }

  void Stop(std::time_t now) {
    const std::lock_guard lock(mutex_);
    stopped_ = true;
    ms_ = now * kMsPerSecond;
  }

  std::int64_t Milliseconds() {
    const std::lock_guard lock(mutex_);
    return stopped_ ? ms_ : WallClockMs() + ms_;
  }

  std::time_t Seconds() {
    const std::int64_t now = Milliseconds();
    return now / kMsPerSecond - (now % kMsPerSecond < 0 ? 1 : 0);
  }

  void Advance(std::int64_t milliseconds) {
    const std::lock_guard lock(mutex_);
    ms_ += milliseconds;
  }

  void Sleep(std::int64_t milliseconds) {
    {
      const std::lock_guard lock(mutex_);
      ms_ += milliseconds;
      slept_.push_back(milliseconds);
    }
    // A loop that sleeps until another thread acts must let that thread run.
    sched_yield();
  }

  std::vector<std::int64_t> Slept() {
    const std::lock_guard lock(mutex_);
    return slept_;
  }

  void ForgetSleeps() {
    const std::lock_guard lock(mutex_);
    slept_.clear();
  }

  void Reset() {
    const std::lock_guard lock(mutex_);
    stopped_ = false;
    ms_ = 0;
    slept_.clear();
  }

 private:
  std::mutex mutex_;
  bool stopped_ = false;
  std::int64_t ms_ = 0;  // the time when stopped, else what is added to the wall clock
  std::vector<std::int64_t> slept_;
};

}  // namespace

void SetTime(std::time_t now) {
  Clock::Instance().Stop(now);
}

std::time_t Now() {
  return Clock::Instance().Seconds();
}

std::int64_t NowMs() {
  return Clock::Instance().Milliseconds();
}

void ForgetSleeps() {
  Clock::Instance().ForgetSleeps();
}

void AdvanceMs(std::int64_t milliseconds) {
  Clock::Instance().Advance(milliseconds);
}

std::vector<std::int64_t> SleptMs() {
  return Clock::Instance().Slept();
}

void ResetClock() {
  Clock::Instance().Reset();
}

void ReallySleepMs(int milliseconds) {
  poll(nullptr, 0, milliseconds);
}

}  // namespace gwq::test

using gwq::test::Clock;

extern "C" {

__attribute__((visibility("default"))) std::time_t time(std::time_t* out) noexcept {
  const std::time_t now = Clock::Instance().Seconds();
  if (out != nullptr) *out = now;
  return now;
}

__attribute__((visibility("default"))) unsigned sleep(unsigned seconds) {
  Clock::Instance().Sleep(std::int64_t{seconds} * gwq::test::kMsPerSecond);
  return 0;
}

__attribute__((visibility("default"))) int usleep(useconds_t microseconds) {
  Clock::Instance().Sleep((std::int64_t{microseconds} + 999) / 1000);
  return 0;
}

__attribute__((visibility("default"))) int nanosleep(const std::timespec* wanted, std::timespec* remaining) {
  const std::int64_t ms = wanted->tv_sec * gwq::test::kMsPerSecond +
                          (wanted->tv_nsec + gwq::test::kNsPerMs - 1) / gwq::test::kNsPerMs;
  Clock::Instance().Sleep(ms);
  if (remaining != nullptr) *remaining = {};
  return 0;
}

}  // extern "C"
