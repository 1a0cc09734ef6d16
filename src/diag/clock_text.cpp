// SPDX-License-Identifier: MIT
#include "diag/internal/clock_text.h"

#include <cstddef>
#include <cstdio>

namespace gwq {
namespace {

// localtime_r, not localtime, which would read TZ at every call and race with a host that changes
// its environment.
std::tm Local(std::time_t time) {
  std::tm local{};
  localtime_r(&time, &local);
  return local;
}

struct WallClock {
  std::tm local;
  int milliseconds;
};

WallClock Now() {
  std::timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  WallClock clock{};
  clock.local = Local(now.tv_sec);
  clock.milliseconds = static_cast<int>(now.tv_nsec / 1'000'000);
  return clock;
}

}  // namespace

void WriteDigits(int number, std::span<char> place) {
  for (std::size_t i = place.size(); i-- > 0; number /= 10) {
    place[i] = static_cast<char>('0' + number % 10);
  }
}

std::tm LocalDate() {
  return Local(time(nullptr));
}

ClockText TimeStamp() {
  const WallClock now = Now();
  ClockText text{"00:00:00(000)"};
  const std::span<char> place(text);
  WriteDigits(now.local.tm_hour, place.subspan(0, 2));
  WriteDigits(now.local.tm_min, place.subspan(3, 2));
  WriteDigits(now.local.tm_sec, place.subspan(6, 2));
  WriteDigits(now.milliseconds, place.subspan(9, 3));
  return text;
}

const char* FullTimeStamp() {
  static ClockText s_szFullTime;
  const WallClock now = Now();
  std::snprintf(s_szFullTime.data(), s_szFullTime.size(), "%04d-%02d-%02d %02d:%02d:%02d(%03d)",
                now.local.tm_year + 1900, now.local.tm_mon + 1, now.local.tm_mday, now.local.tm_hour,
                now.local.tm_min, now.local.tm_sec, now.milliseconds);
  return s_szFullTime.data();
}

char* ScratchText() {
  static std::array<char, 512> s_szScratch;
  s_szScratch.fill('\0');
  return s_szScratch.data();
}

}  // namespace gwq
