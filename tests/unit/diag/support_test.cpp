// SPDX-License-Identifier: MIT
// What the other tests build on: the test clock and the log capture.
#include <gtest/gtest.h>
#include <time.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include <gwq/diag/log.h>
#include "support/log_capture.h"
#include "support/test_clock.h"

namespace gwq::test {
namespace {

using std::chrono::steady_clock;

class TestClock : public testing::Test {
 protected:
  ~TestClock() override { ResetClock(); }
};

TEST_F(TestClock, RunsWithTheWallClockUntilItIsSet) {
  ResetClock();
  timespec wall{};
  clock_gettime(CLOCK_REALTIME, &wall);
  EXPECT_NEAR(static_cast<double>(time(nullptr)), static_cast<double>(wall.tv_sec), 2.0);
}

TEST_F(TestClock, StandsStillOnceSet) {
  SetTime(1000);
  ReallySleepMs(5);
  time_t out = 0;
  EXPECT_EQ(time(&out), 1000);
  EXPECT_EQ(out, 1000);
  EXPECT_EQ(Now(), 1000);
}

TEST_F(TestClock, EverySleepIsRecordedAndMovesTheClockWithoutWaiting) {
  ResetClock();
  SetTime(1000);
  const auto begun = steady_clock::now();
  EXPECT_EQ(sleep(3000), 0U);
  EXPECT_EQ(usleep(1500), 0);
  std::this_thread::sleep_for(std::chrono::milliseconds(998));
  EXPECT_LT(steady_clock::now() - begun, std::chrono::seconds(60));
  EXPECT_EQ(SleptMs(), (std::vector<std::int64_t>{3'000'000, 2, 998}));
  EXPECT_EQ(Now(), 1000 + 3001);
}

TEST_F(TestClock, AdvanceIsNoSleep) {
  ResetClock();
  SetTime(10);
  AdvanceMs(1999);
  EXPECT_EQ(Now(), 11);
  EXPECT_TRUE(SleptMs().empty());
}

TEST_F(TestClock, SleepsOfAllThreadsAreRecorded) {
  ResetClock();
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([] {
      for (int n = 0; n < 100; ++n) usleep(1000);
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(SleptMs().size(), 400U);
}

TEST(LogCapture, GivesTheMessagesWithoutStampAndLineEnd) {
  const LogCapture log;
  ICC_DPrintLogToFile("first");
  ICC_DPrintLogToFile("two\r\nlines %d\n", 7);
  ICC_DPrintLogToFile("%s", "");
  EXPECT_EQ(log.Messages(), (std::vector<std::string>{"first", "two\r\nlines 7\n", ""}));
}

TEST(LogCapture, BeginsEmptyAndSwitchesOffAtItsEnd) {
  {
    const LogCapture log;
    ICC_DPrintLogToFile("old");
  }
  ICC_DPrintLogToFile("while off");
  const LogCapture log;
  EXPECT_TRUE(log.Messages().empty());
  ICC_DPrintLogToFile("new");
  EXPECT_EQ(log.Messages(), std::vector<std::string>{"new"});
}

}  // namespace
}  // namespace gwq::test
