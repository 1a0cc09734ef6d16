// SPDX-License-Identifier: MIT
// Cancelling from a second thread while the customer lets the first one wait.
#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <thread>

#include "e2e/library/library.h"

namespace gwq::test {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr int kBaud = 115200;

class Cancel : public testing::Test {
 protected:
  // Starts a PIN entry that nobody answers, and cancels until it ends. Returns its status.
  int CancelledRead(milliseconds after) {
    int status = 0;
    std::thread reader([&] {
      std::array<char, 16> pin{};
      status = lib.read_pin(port, kBaud, 0, 60, pin.data(), 15);
      ended = Clock::now();
    });
    std::this_thread::sleep_for(after);
    const Clock::time_point cancelled = Clock::now();
    EXPECT_EQ(0, lib.cancel_read());
    EXPECT_LT(Clock::now() - cancelled, milliseconds(100)) << "cancelling waited";
    reader.join();
    EXPECT_LT(ended - cancelled, milliseconds(700));
    return status;
  }

  Library lib;
  int port = 0;
  Clock::time_point ended;
};

using CancelOnUsb = Cancel;

class CancelOnSerial : public Cancel {
 protected:
  CancelOnSerial() { port = 78; }
};

// The drain before the entry may take a second; the entry then waits for the customer.
constexpr milliseconds kWellIntoTheWait{1500};

TEST_F(CancelOnUsb, EndsTheWaitAndTheNextCallWorks) {
  EXPECT_EQ(GWQ_CANCELLED, CancelledRead(kWellIntoTheWait));
  EXPECT_EQ(1, lib.takes_utf8());
  EXPECT_EQ(GWQ_CANCELLED, CancelledRead(kWellIntoTheWait));
}

// A cancelled serial read is a failed read to the engine, on purpose.
TEST_F(CancelOnSerial, EndsTheWaitAsAFailedRead) {
  EXPECT_EQ(GWQ_READ_FAILED, CancelledRead(milliseconds(300)));
  EXPECT_EQ(0, lib.reset_key(port, kBaud));
}

TEST_F(CancelOnUsb, WithoutARunningExchangeIsLost) {
  EXPECT_EQ(0, lib.cancel_read());
  EXPECT_EQ(1, lib.takes_utf8());
}

TEST_F(CancelOnUsb, TwoThreadsExchangeOneAfterTheOther) {
  const auto ask = [this] {
    for (int i = 0; i < 50; ++i) EXPECT_EQ(1, lib.takes_utf8());
  };
  std::thread first(ask);
  std::thread second(ask);
  first.join();
  second.join();
}

}  // namespace
}  // namespace gwq::test
