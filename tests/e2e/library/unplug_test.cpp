// SPDX-License-Identifier: MIT
// A terminal that vanishes under a call, and comes back.
#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <thread>

#include "e2e/library/pad_rig.h"

namespace gwq::test {
namespace {

using std::chrono::milliseconds;

void TellTerminal(int signal) {
  const char* pid = std::getenv("GWQ_TERMINAL_PID");  // NOLINT(concurrency-mt-unsafe)
  ASSERT_NE(nullptr, pid) << "not run under gwq-terminal";
  ASSERT_EQ(0, kill(std::atoi(pid), signal));
}

class Unplugged : public Pad {
 protected:
  // A read that is on its way by then waits for the customer: the drain before it may take a second.
  static std::thread UnplugsSoon() {
    return std::thread([] {
      std::this_thread::sleep_for(milliseconds(1500));
      TellTerminal(SIGUSR1);
    });
  }

  void ExpectBackOncePluggedIn() {
    TellTerminal(SIGUSR2);
    int utf8 = 0;
    for (int i = 0; i < 50 && utf8 == 0; ++i) {
      std::this_thread::sleep_for(milliseconds(20));
      utf8 = lib.takes_utf8();
    }
    EXPECT_EQ(1, utf8);
  }
};

TEST_F(Unplugged, InTheMiddleOfAReadEndsItWithItsTimeOutAndANewOneWorksOnceItIsBack) {
  std::thread hand = UnplugsSoon();
  std::array<char, 16> pin{};
  EXPECT_EQ(GWQ_READ_FAILED, lib.read_pin(0, kBaud, 0, 1, pin.data(), 15));
  hand.join();
  EXPECT_STREQ("", pin.data());
  EXPECT_EQ(0, lib.takes_utf8());
  ExpectBackOncePluggedIn();
}

TEST_F(Unplugged, InTheMiddleOfAPinPadEntryFailsTheReadAndThenIsNotOpened) {
  Prepare(Algorithm::kTripleDes, 6);
  std::thread hand = UnplugsSoon();
  const Entry entry = GetPin(2);
  hand.join();
  EXPECT_EQ(GWQ_READ_FAILED, entry.status);
  EXPECT_EQ("", entry.block);
  std::string factor;
  EXPECT_EQ(GWQ_NOT_OPENED, ReadFactor(factor));
  ExpectBackOncePluggedIn();
}

}  // namespace
}  // namespace gwq::test
