// SPDX-License-Identifier: MIT
// Two threads at the engine: exchanges take turns, a cancel never waits.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include <gwq/frame/port.h>
#include <gwq/frame/transaction.h>
#include "support/log_capture.h"
#include "support/scripted_usb.h"
#include "support/test_clock.h"
#include "support/turns.h"

namespace gwq::test {
namespace {

constexpr int kRounds = 500;

int Exchange() {
  char command[] = "cmd";
  char answer[64 + 1024] = {};
  int length = 64;
  return TransProc(0, 0, command, 3, answer, &length, 1000);
}

TEST(EngineThreads, SecondExchangeWaitsUntilTheFirstHasClosedItsLink) {
  ScriptedUsb usb;
  usb.PlugTerminal().Answer("\x03").Answer("\x03");
  std::atomic<bool> started = false;
  std::atomic<int> second_result = 1;
  std::thread second;
  usb.OnTransfer([&](const Transfer& transfer) {
    if (!transfer.in || transfer.index != 0) return;
    second = std::thread([&] {
      started = true;
      second_result = Exchange();
    });
    EXPECT_TRUE(Eventually(started));
    ReallySleepMs(30);
    EXPECT_EQ(usb.Count("list"), 1) << "the second exchange must not have begun";
    EXPECT_EQ(second_result, 1);
  });
  EXPECT_EQ(Exchange(), 0);
  second.join();
  EXPECT_EQ(second_result, 0);
  EXPECT_TRUE(TakesTurns(usb.Calls()));
}

TEST(EngineThreads, ExchangesOfTwoThreadsDoNotMix) {
  ScriptedUsb usb;
  usb.PlugTerminal();
  for (int i = 0; i < 2 * kRounds; ++i) usb.Answer("\x02ok\x03");
  const auto rounds = [] {
    int failures = 0;
    for (int i = 0; i < kRounds; ++i) failures += Exchange() == 0 ? 0 : 1;
    return failures;
  };
  int other_failures = -1;
  std::thread other([&] { other_failures = rounds(); });
  EXPECT_EQ(rounds(), 0);
  other.join();
  EXPECT_EQ(other_failures, 0);
  EXPECT_TRUE(TakesTurns(usb.Calls()));
}

TEST(EngineThreads, CancelReturnsWhileAnExchangeHoldsItsTurn) {
  SetTime(1'700'000'000);
  for (int point = 0; point < 8; ++point) {
    ScriptedUsb usb;
    usb.PlugTerminal();
    std::atomic<bool> go = false;
    std::atomic<bool> returned = false;
    std::thread canceller([&] {
      Eventually(go);
      CancelRead();
      returned = true;
    });
    int transfers = 0;
    usb.OnTransfer([&](const Transfer&) {
      if (transfers++ != point) return;
      go = true;
      EXPECT_TRUE(Eventually(returned)) << "the cancel waits for the exchange";
    });
    EXPECT_EQ(Exchange(), point == 0 ? -10 : -23) << "cancel with transfer " << point;
    go = true;
    canceller.join();
  }
}

TEST(EngineThreads, CancelsAtAnyMomentDoNoHarm) {
  ScriptedUsb usb;
  usb.PlugTerminal();
  std::atomic<bool> stop = false;
  std::thread canceller([&stop] {
    while (!stop) {
      CancelRead();
      CancelWrite();
      std::this_thread::yield();
    }
  });
  int succeeded = 0;
  for (int i = 0; i < kRounds; ++i) {
    usb.Answer("\x03");
    const int result = Exchange();
    EXPECT_TRUE(result == 0 || result == -10 || result == -23 || result == -11) << result;
    succeeded += result == 0 ? 1 : 0;
  }
  stop = true;
  canceller.join();
  while (!usb.Finished()) Exchange();  // answers whose exchange was cancelled
  EXPECT_TRUE(TakesTurns(usb.Calls()));
  RecordProperty("succeeded", succeeded);
}

TEST(EngineThreads, CancelsAndLogLinesOfOtherThreadsDoNoHarm) {
  const LogCapture log;
  ScriptedUsb usb;
  usb.PlugTerminal();
  std::atomic<bool> stop = false;
  std::thread canceller([&stop] {
    while (!stop) {
      CancelRead();
      std::this_thread::yield();
    }
  });
  constexpr int kLoggedRounds = 20;
  for (int i = 0; i < kLoggedRounds; ++i) {
    usb.OnTransfer({});
    Exchange();
  }
  stop = true;
  canceller.join();
  int begun = 0;
  for (const std::string& message : log.Messages()) begun += message == " TransProc  nPort=0" ? 1 : 0;
  EXPECT_EQ(begun, kLoggedRounds) << "no line is torn";
}

}  // namespace
}  // namespace gwq::test
