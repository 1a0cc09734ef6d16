// SPDX-License-Identifier: MIT
// Exchanges on a serial port.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <thread>

#include <gwq/frame/port.h>
#include <gwq/frame/transaction.h>
#include "support/fake_tty.h"
#include "support/guarded_buffer.h"
#include "support/log_capture.h"
#include "support/scripted_usb.h"
#include "support/test_clock.h"

namespace gwq::test {
namespace {

using std::string_view_literals::operator""sv;
using testing::ElementsAre;

constexpr int kPort = 42;
constexpr char kDevice[] = "/dev/ttyS41";

class EngineSerial : public testing::Test {
 protected:
  EngineSerial() { SetTime(1'700'000'000); }

  int Exchange(std::string command, int length, int timeout_ms = 3000) {
    return TransProc(kPort, 19200, command.data(), length, answer_.text(), &answer_len_, timeout_ms);
  }

  ScriptedUsb usb_;
  FakeTty tty_{kDevice};
  GuardedBuffer answer_{64 + 1};
  int answer_len_ = 64;
};

TEST_F(EngineSerial, ExchangeOpensSendsReadsAndCloses) {
  tty_.Respond([](const Bytes&) { return "\x02ok\x03"; });
  const LogCapture log;
  EXPECT_EQ(Exchange("abc", 3), 0);
  EXPECT_EQ(tty_.Received(), BytesOf("abc"));
  EXPECT_EQ(answer_len_, 4);
  EXPECT_EQ(answer_.First(4), BytesOf("\x02ok\x03"));
  EXPECT_THAT(tty_.Calls(),
              ElementsAre("open /dev/ttyS41 2", "TCGETA", "TCSETAF", "write 3", "TCSETAF", "close"));
  EXPECT_EQ(tty_.Applied().at(0).c_cflag & CBAUD, static_cast<unsigned>(B19200));
  EXPECT_THAT(log.Messages(),
              ElementsAre(" TransProc  nPort=42", "ICC_OpenLinuxCom szTtyName=/dev/ttyS41",
                          " TransProc  nPor2=42", " ICC_ReadLinuxCom nTimeOut=3", "[EndOfRead2] return 0",
                          "COM PACKGET READ  LEN=4   HEX: 026F6B03"));
  EXPECT_TRUE(usb_.Calls().empty());
}

TEST_F(EngineSerial, Port1IsTtyS0) {
  const FakeTty first("/dev/ttyS0");
  char command[] = "x";
  EXPECT_EQ(TransProcOnlySend(1, 9600, command, 1, 1000), 0);
  EXPECT_EQ(first.Received(), BytesOf("x"));
}

TEST_F(EngineSerial, HighestPortNameFits) {
  const FakeTty last("/dev/ttyS2147483646");
  char command[] = "x";
  EXPECT_EQ(TransProcOnlySend(INT_MAX, 9600, command, 1, 1000), 0);
  EXPECT_EQ(last.Received(), BytesOf("x"));
}

TEST_F(EngineSerial, PortThatDoesNotOpenGivesMinus3) {
  char command[] = "x";
  const LogCapture log;
  EXPECT_EQ(TransProc(100001, 9600, command, 1, answer_.text(), &answer_len_, 1000), -3);
  EXPECT_THAT(log.Messages(),
              ElementsAre(" TransProc  nPort=100001", "ICC_OpenLinuxCom szTtyName=/dev/ttyS100000"));
  EXPECT_EQ(answer_len_, 64);
}

TEST_F(EngineSerial, PortWhoseSettingsFailGivesMinus3) {
  tty_.FailIoctl(TCSETAF);
  EXPECT_EQ(Exchange("x", 1), -3);
}

TEST_F(EngineSerial, LengthOf0IsRefusedByTheLinkAndGivesMinus10) {
  EXPECT_EQ(Exchange("abc", 0), -10);
  EXPECT_TRUE(tty_.Received().empty());
  EXPECT_EQ(tty_.Calls().back(), "close");
  EXPECT_EQ(answer_len_, 64);
}

TEST_F(EngineSerial, NegativeLengthsPassWhereTheLinksRefusalIsNotLess) {
  char command[] = "abc";
  EXPECT_EQ(TransProcOnlySend(kPort, 9600, command, -1, 1000), -10);
  EXPECT_EQ(TransProcOnlySend(kPort, 9600, command, -2, 1000), 0);
  EXPECT_EQ(TransProcOnlySend(kPort, 9600, command, INT_MIN, 1000), 0);
  EXPECT_TRUE(tty_.Received().empty());
}

TEST_F(EngineSerial, NullCommandGivesMinus10) {
  EXPECT_EQ(TransProc(kPort, 9600, nullptr, 3, answer_.text(), &answer_len_, 1000), -10);
  EXPECT_EQ(tty_.Calls().back(), "close");
}

TEST_F(EngineSerial, ShortWriteGivesMinus10) {
  tty_.NextWritesMove({2, -1});
  EXPECT_EQ(Exchange("abc", 3), -10);
  EXPECT_EQ(tty_.Received(), BytesOf("ab"));
}

TEST_F(EngineSerial, CommandIsNeitherCutNorPadded) {
  const std::string command = std::string(1500, 'a') + std::string(3, '\0') + "b";
  tty_.Respond([](const Bytes&) { return "\x03"; });
  EXPECT_EQ(Exchange(command, 1504), 0);
  EXPECT_EQ(tty_.Received(), BytesOf(command));
}

TEST_F(EngineSerial, SilenceGivesMinus11AfterTheWholeSeconds) {
  const std::time_t start = Now();
  EXPECT_EQ(Exchange("x", 1, 2999), -11);
  EXPECT_EQ(Now() - start, 3);
  EXPECT_EQ(Exchange("x", 1, 999), -11);
  EXPECT_EQ(Now() - start, 4) << "999 ms are 0 s, which end with the clock's second";
  EXPECT_EQ(answer_len_, 64);
}

TEST_F(EngineSerial, AnswerLongerThanTheMaximumIsCutThere) {
  tty_.Respond([](const Bytes&) { return std::string(65, 'z'); });
  EXPECT_EQ(Exchange("x", 1), 0);
  EXPECT_EQ(answer_.First(65), Concat(Bytes(64, 'z'), {0}));
  EXPECT_EQ(answer_len_, 64);
}

TEST_F(EngineSerial, CancelWhileSendingIsLost) {
  tty_.Respond([](const Bytes&) {
    CancelRead();
    return "\x03";
  });
  EXPECT_EQ(Exchange("x", 1), 0);
}

TEST_F(EngineSerial, FailedExchangeLeavesTheNextOneAlone) {
  EXPECT_EQ(Exchange("x", 1, 0), -11);
  tty_.Respond([](const Bytes&) { return "\x03"; });
  EXPECT_EQ(Exchange("x", 1, 0), 0);
}

TEST_F(EngineSerial, UsbAndSerialExchangesAlternate) {
  usb_.PlugTerminal();
  tty_.Respond([](const Bytes&) { return "\x03"; });
  char command[] = "x";
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(Exchange("x", 1), 0);
    EXPECT_EQ(TransProcOnlySend(0, 0, command, 1, 1000), 0);
  }
  EXPECT_EQ(tty_.Received(), BytesOf("xxx"));
  EXPECT_EQ(usb_.Count("out"), 3);
}

// A pseudo-terminal whose other side reads nothing takes some kilobytes and no more.
TEST_F(EngineSerial, PeerThatTakesNothingEndsTheExchangeWithItsTimeAndHoldsUpNobody) {
  SetTime(1'700'000'000);
  FakeTty tty("/dev/ttyS44");
  tty.TakeNothing();
  ScriptedUsb usb;
  usb.PlugTerminal().Answer("\x03");
  std::string command(300'000, 'c');
  std::thread clock([] {
    for (int second = 0; second < 3; ++second) {
      ReallySleepMs(150);
      AdvanceMs(1000);
    }
  });
  EXPECT_EQ(TransProcOnlySend(45, 9600, command.data(), static_cast<int>(command.size()), 1000), -10);
  clock.join();
  char answer[64 + 1024] = {};
  int length = 64;
  char question[] = "cmd";
  EXPECT_EQ(TransProc(0, 0, question, 3, answer, &length, 1000), 0);
}

TEST_F(EngineSerial, CancelEndsAWriteThatThePeerDoesNotTake) {
  SetTime(1'700'000'000);
  FakeTty tty("/dev/ttyS44");
  tty.TakeNothing();
  std::string command(300'000, 'c');
  std::thread canceller([] {
    ReallySleepMs(300);
    CancelRead();
  });
  EXPECT_EQ(TransProcOnlySend(45, 9600, command.data(), static_cast<int>(command.size()), 999'000), -10);
  canceller.join();
}

}  // namespace
}  // namespace gwq::test
