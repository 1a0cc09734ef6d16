// SPDX-License-Identifier: MIT
// When a cancel takes effect, and when it is lost.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

#include <gwq/frame/port.h>
#include <gwq/frame/transaction.h>
#include "frame/internal/operation.h"
#include "support/fake_tty.h"
#include "support/log_capture.h"
#include "support/scripted_usb.h"
#include "support/test_clock.h"

namespace gwq::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class EngineCancel : public testing::Test {
 protected:
  EngineCancel() {
    SetTime(1'700'000'000);
    usb_.PlugTerminal();
    TransMssionLinux_t port{};
    ICC_ChangeTermParam(&port);
  }

  int Exchange(int port = 0, std::size_t length = 1) {
    std::string command(length, 'c');
    answer_len_ = 64;
    return TransProc(port, 9600, command.data(), static_cast<int>(length), answer_, &answer_len_, 60'000);
  }

  [[gnu::noinline]] int ExchangeInACall() {
    const Operation operation;
    return Exchange();
  }

  // An exchange that succeeds; whatever stood before is dropped by it.
  void Succeed() {
    usb_.OnTransfer({});
    usb_.Answer("\x03");
    EXPECT_EQ(Exchange(), 0);
  }

  void CancelAt(bool in, int index) {
    usb_.OnTransfer([in, index](const Transfer& transfer) {
      if (transfer.in == in && transfer.index == index) {
        EXPECT_EQ(CancelRead(), 0);
      }
    });
  }

  ScriptedUsb usb_;
  char answer_[64 + 1024] = {};
  int answer_len_ = 64;
};

TEST_F(EngineCancel, WaitingReadGivesMinus23) {
  CancelAt(true, 3);
  EXPECT_EQ(Exchange(), -23);
  EXPECT_EQ(usb_.Count("in"), 4);
  EXPECT_EQ(answer_len_, 64);
}

TEST_F(EngineCancel, BetweenReportsGivesMinus10AndSendsNoMore) {
  CancelAt(false, 1);
  EXPECT_EQ(Exchange(0, 5000), -10);
  EXPECT_EQ(usb_.Count("out"), 2);
  EXPECT_EQ(usb_.Count("in"), 0);
}

TEST_F(EngineCancel, WithTheLastReportGivesMinus10) {
  CancelAt(false, 0);
  EXPECT_EQ(Exchange(), -10);
}

TEST_F(EngineCancel, BeforeTheExchangeIsLost) {
  CancelRead();
  Succeed();
}

TEST_F(EngineCancel, BeforeTheReadStartsIsLostOnAPortThatDoesNotSendReports) {
  CancelAt(false, 0);
  usb_.Answer("\x03");
  EXPECT_EQ(Exchange(-1), 0);
}

TEST_F(EngineCancel, OfOneExchangeDoesNotReachTheNext) {
  CancelAt(true, 0);
  EXPECT_EQ(Exchange(), -23);
  Succeed();
}

TEST_F(EngineCancel, StandingRequestIsNotMadeTwiceUntilAnExchangeDropsIt) {
  Succeed();
  const LogCapture log;
  EXPECT_EQ(CancelRead(), 0);
  EXPECT_THAT(log.Messages(), ElementsAre("[ICC_CancelLinuxHidRead] begin s_bIsReading=0\n"));
  EXPECT_EQ(CancelRead(), 0);
  EXPECT_EQ(log.Messages().size(), 1U) << "the link is not asked again";
  Succeed();
  const LogCapture again;
  EXPECT_EQ(CancelRead(), 0);
  EXPECT_THAT(again.Messages(), ElementsAre("[ICC_CancelLinuxHidRead] begin s_bIsReading=0\n"));
}

TEST_F(EngineCancel, SecondCancelCannotHelpAReadThatLostTheFirst) {
  usb_.OnTransfer([](const Transfer& transfer) {
    if (!transfer.in || transfer.index == 2) CancelRead();
  });
  usb_.Answer("", 5).Answer("\x03");
  EXPECT_EQ(Exchange(-1), 0) << "the request made while sending still stands";
}

TEST_F(EngineCancel, GoesToTheLinkInUse) {
  FakeTty tty("/dev/ttyS41");
  tty.OnRead([](int) { CancelRead(); });
  EXPECT_EQ(Exchange(42), -11);
  Succeed();
}

TEST_F(EngineCancel, WithNoLinkIsHarmless) {
  Succeed();
  TransMssionLinux_t port{};
  port.nLinkType = 7;
  ICC_ChangeTermParam(&port);
  EXPECT_EQ(CancelRead(), 0);
}

// ------------------------------------------------------------------ calls of several exchanges

TEST_F(EngineCancel, OfACallBetweenTwoExchangesEndsTheNextThatAwaitsAnAnswer) {
  const Operation operation;
  Succeed();
  CancelOperations();
  const int sent = usb_.Count("out");
  EXPECT_EQ(Exchange(), -23);
  EXPECT_EQ(TransProcOnlyRead(0, 9600, answer_, &answer_len_, 1000), -23);
  EXPECT_EQ(usb_.Count("out"), sent) << "nothing is sent";
  char close[] = "close";
  EXPECT_EQ(TransProcOnlySend(0, 9600, close, 5, 1000), 0) << "a screen is closed all the same";
}

TEST_F(EngineCancel, OfACallReachesTheCallsWithinIt) {
  const Operation operation;
  CancelOperations();
  EXPECT_EQ(ExchangeInACall(), -23);
  EXPECT_EQ(Exchange(), -23);
}

TEST_F(EngineCancel, OfACallDoesNotReachTheNextCall) {
  { const Operation operation; }
  CancelOperations();
  Succeed();
  const Operation next;
  Succeed();
}

TEST_F(EngineCancel, OfACallReachesOtherThreads) {
  const Operation operation;
  std::thread([] { CancelOperations(); }).join();
  EXPECT_EQ(Exchange(), -23);
}

TEST_F(EngineCancel, CancelWriteSetsItsFlagAlone) {
  g_CancelWrite = 0;
  const LogCapture log;
  CancelWrite();
  EXPECT_EQ(g_CancelWrite, 1);
  EXPECT_THAT(log.Messages(), IsEmpty());
  Succeed();
  EXPECT_EQ(g_CancelWrite, 1) << "only an upload clears it";
  g_CancelWrite = 0;
}

}  // namespace
}  // namespace gwq::test
