// SPDX-License-Identifier: MIT
// Exchanges on the USB link: identities, reports, answers, time-outs.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <libusb-1.0/libusb.h>

#include <climits>

#include <gwq/frame/port.h>
#include <gwq/frame/transaction.h>
#include <gwq/links/usb_hid.h>
#include "support/fake_tty.h"
#include "support/guarded_buffer.h"
#include "support/log_capture.h"
#include "support/named.h"
#include "support/scripted_usb.h"
#include "support/test_clock.h"
#include "usb_ids.h"

namespace gwq::test {
namespace {

using std::string_view_literals::operator""sv;
using testing::ElementsAre;

constexpr UsbDevice kFirst{.vid = kUsbIdentities[0].vid, .pid = kUsbIdentities[0].pid};
constexpr UsbDevice kSecond{.vid = kUsbIdentities[1].vid, .pid = kUsbIdentities[1].pid};

constexpr int kAnswerLen = 64;
constexpr int kUntouched = kAnswerLen;

int Never(unsigned char*, int) {
  return 1;
}

int AtOnce(unsigned char*, int) {
  return 0;
}

class EngineUsb : public testing::Test {
 protected:
  EngineUsb() {
    ResetClock();
    SetTime(1'700'000'000);
    TransMssionLinux_t port{};
    ICC_ChangeTermParam(&port);
  }

  int Exchange(std::string command, int length, GwqEndOfRead end = &EndOfRead2, int timeout_ms = 3000) {
    std::fill_n(answer_.data(), answer_.size(), std::uint8_t{0});
    return TransProcByEnd(0, 9600, command.data(), length, answer_.text(), &answer_len_, end, timeout_ms);
  }

  ScriptedUsb usb_;
  GuardedBuffer answer_{kAnswerLen + 1024};
  int answer_len_ = kAnswerLen;
};

TEST_F(EngineUsb, ExchangeOpensSendsReadsAndCloses) {
  usb_.Plug(kFirst)
      .ExpectCommand("\x1B[0GETVERSION")
      .Answer(
          "\x02"
          "abc\x03",
          2);
  const LogCapture log;
  EXPECT_EQ(Exchange("\x1B[0GETVERSION", 13), 0);
  EXPECT_EQ(answer_len_, 5);
  EXPECT_EQ(answer_.First(5), BytesOf("\x02"
                                      "abc\x03"));
  EXPECT_THAT(usb_.Calls(), ElementsAre("list", testing::StartsWith("open "), "driver_active 0", "claim 0",
                                        "out 0x02 1024 1000ms", "in 0x81 1024 200ms", "in 0x81 1024 200ms",
                                        "in 0x81 1024 200ms", "close", "free_list"));
  char opened[64];
  std::snprintf(opened, sizeof opened, "ICC_OpenTransPort: PID=%x,VID=%x, nRet=0",
                static_cast<unsigned>(kFirst.pid), static_cast<unsigned>(kFirst.vid));
  EXPECT_THAT(log.Messages(),
              ElementsAre(" TransProc  nPort=0", testing::StartsWith("\nOpen Device:"),
                          "libusb_get_device_list:1", "find target device!!", "libusb_open success ,nRet=0",
                          "driver_active  Cnt1=0\n", "libusb_claim_interface  nRet=0\n",
                          "Open device success!  End\n", opened, " TransProc  nPor2=0",
                          "[EndOfRead2] return 0", "\nClose Device Begin", "Close Device Success! End\n"));
}

TEST_F(EngineUsb, NeitherIdentityThereGivesMinus3AfterOneCloseInBetween) {
  const LogCapture log;
  EXPECT_EQ(Exchange("x", 1), -3);
  const auto messages = log.Messages();
  EXPECT_EQ(std::count(messages.begin(), messages.end(), "\nClose Device Begin"), 1);
  EXPECT_EQ(usb_.Count("list"), 2);
  EXPECT_EQ(messages.back().substr(messages.back().size() - 7), "nRet=-7");
  EXPECT_EQ(answer_len_, kUntouched);
  EXPECT_TRUE(answer_.AllAre(0));
}

TEST_F(EngineUsb, SecondIdentityIsTriedWithOneCloseInBetween) {
  usb_.Plug(kSecond).ExpectCommand("x").AnswerReport("\x03");
  const LogCapture log;
  EXPECT_EQ(Exchange("x", 1), 0);
  const auto messages = log.Messages();
  EXPECT_EQ(std::count(messages.begin(), messages.end(), "\nClose Device Begin"), 2)
      << "in between and at the end";
  const auto between = std::find(messages.begin(), messages.end(), "\nClose Device Begin");
  EXPECT_THAT(std::vector<std::string>(between - 1, between + 2),
              ElementsAre(testing::EndsWith("nRet=-7"), "\nClose Device Begin",
                          "m_targetDev == NULL, not need clsoe, return\n"));
}

TEST_F(EngineUsb, FirstIdentityIsPreferred) {
  usb_.Plug(kSecond).Plug(kFirst).ExpectCommand("x").AnswerReport("\x03");
  EXPECT_EQ(Exchange("x", 1), 0);
  EXPECT_EQ(usb_.Count("list"), 1);
}

TEST_F(EngineUsb, SecondIdentityIsTriedWhenTheFirstCannotBeClaimed) {
  UsbDevice busy = kFirst;
  busy.claim_result = LIBUSB_ERROR_BUSY;
  usb_.Plug(busy).Plug(kSecond).ExpectCommand("x").AnswerReport("\x03");
  EXPECT_EQ(Exchange("x", 1), 0);
  EXPECT_EQ(usb_.Count("open"), 2);
}

TEST_F(EngineUsb, BothFailingToOpenGivesMinus3) {
  UsbDevice first = kFirst;
  first.open_result = LIBUSB_ERROR_ACCESS;
  UsbDevice second = kSecond;
  second.open_result = LIBUSB_ERROR_ACCESS;
  usb_.Plug(first).Plug(second);
  EXPECT_EQ(Exchange("x", 1), -3);
  EXPECT_EQ(usb_.Count("out"), 0);
}

TEST_F(EngineUsb, LengthOf0MeansTheCommandsTextLength) {
  usb_.Plug(kFirst).ExpectCommand("abc").AnswerReport("\x03");
  EXPECT_EQ(Exchange(std::string("abc\0def"sv), 0), 0);
}

TEST_F(EngineUsb, EmptyCommandSendsNothingAndReads) {
  usb_.Plug(kFirst).AnswerReport("\x03");
  EXPECT_EQ(Exchange("", 0), 0);
  EXPECT_EQ(usb_.Count("out"), 0);
}

TEST_F(EngineUsb, NegativeLengthSendsNothingAndReads) {
  usb_.Plug(kFirst).AnswerReport("\x03");
  EXPECT_EQ(Exchange("abc", -1), 0);
  EXPECT_EQ(usb_.Count("out"), 0);
}

TEST_F(EngineUsb, NullCommandGivesMinus10AndCloses) {
  usb_.Plug(kFirst).Expect({});
  EXPECT_EQ(TransProc(0, 0, nullptr, 5, answer_.text(), &answer_len_, 1000), -10);
  EXPECT_EQ(TransProc(0, 0, nullptr, 0, answer_.text(), &answer_len_, 1000), -10);
  EXPECT_EQ(usb_.Count("close"), 2);
  EXPECT_EQ(answer_len_, kUntouched);
}

class EngineReports : public EngineUsb, public testing::WithParamInterface<int> {};

TEST_P(EngineReports, CommandGoesOutInZeroPaddedReports) {
  std::string command(static_cast<std::size_t>(GetParam()), '\0');
  for (std::size_t i = 0; i < command.size(); ++i) command[i] = static_cast<char>(i % 255 + 1);
  GuardedBuffer bytes(BytesOf(command));
  usb_.Plug(kFirst).ExpectCommand(command);
  EXPECT_EQ(TransProcOnlySend(0, 0, bytes.text(), GetParam(), 1000), 0);
  EXPECT_EQ(usb_.Count("out 0x02 1024 1000ms"), (GetParam() + 1023) / 1024);
  EXPECT_EQ(usb_.Count("in"), 0);
}

INSTANTIATE_TEST_SUITE_P(Lengths, EngineReports,
                         testing::Values(1, 10, 1023, 1024, 1025, 2047, 2048, 2049, 5000));

TEST_F(EngineUsb, ZeroBytesInACommandOfGivenLengthAreSent) {
  usb_.Plug(kFirst).ExpectCommand("a\0b\0"sv).AnswerReport("\x03");
  EXPECT_EQ(Exchange(std::string("a\0b\0"sv), 4), 0);
}

TEST_F(EngineUsb, ReportThatDoesNotGoOutAtAllPassesAndTheReadTells) {
  usb_.Plug(kFirst).Answer("\x03");
  for (int i = 0; i < 5; ++i) usb_.NextOutMoves(0, LIBUSB_ERROR_TIMEOUT);
  EXPECT_EQ(Exchange("x", 1), 0) << "a write of -5 goes on to the read";
  for (int i = 0; i < 5; ++i) usb_.NextOutMoves(0, LIBUSB_ERROR_TIMEOUT);
  answer_len_ = kAnswerLen;
  EXPECT_EQ(Exchange("x", 1), -11);
  for (int i = 0; i < 5; ++i) usb_.NextOutMoves(0, LIBUSB_ERROR_TIMEOUT);
  char command[] = "x";
  EXPECT_EQ(TransProcOnlySend(0, 0, command, 1, 1000), 0);
}

TEST_F(EngineUsb, ReportsBehindOneThatFailedAreStillSent) {
  usb_.Plug(kFirst);
  for (int i = 0; i < 5; ++i) usb_.NextOutMoves(0, LIBUSB_ERROR_IO);
  std::string command(2000, 'a');
  command.append(48, 'b');
  EXPECT_EQ(TransProcOnlySend(0, 0, command.data(), 2048, 1000), 0);
  EXPECT_EQ(usb_.Sent(), BytesOf(command.substr(1024)));
}

// On the way to its second report the exchange is led to the serial line, whose writes can come out short.
class EngineShortReport : public EngineUsb {
 protected:
  int SendSecondReportMoving(ssize_t bytes) {
    FakeTty tty;
    TransMssionLinux_t port{};
    port.nLinkType = GWQ_LINK_SERIAL;
    port.nBaud = 9600;
    tty.Path().copy(port.szTtyName, sizeof port.szTtyName - 1);
    usb_.Plug(kFirst).OnTransfer([&port](const Transfer&) { ICC_OpenTransPort(&port); });
    tty.NextWritesMove({bytes, -1});
    std::string command(2048, 'a');
    const int result = TransProcOnlySend(0, 0, command.data(), 2048, 1000);
    if (bytes >= 1024) tty.NextWritesMove({});
    ICC_CloseLinuxHid();
    return result;
  }
};

TEST_F(EngineShortReport, ReportOfWhich0To1023BytesWentOutFails) {
  EXPECT_EQ(SendSecondReportMoving(0), -10);
  EXPECT_EQ(SendSecondReportMoving(1), -10);
  EXPECT_EQ(SendSecondReportMoving(1023), -10);
}

TEST_F(EngineShortReport, ReportOfWhich1024BytesWentOutPasses) {
  EXPECT_EQ(SendSecondReportMoving(1024), 0);
}

TEST_F(EngineUsb, AnswerLengthEndsAtTheFirstZeroByte) {
  usb_.Plug(kFirst).ExpectCommand("x").Answer("ab\0cd\r"sv);
  EXPECT_EQ(Exchange("x", 1, &EndOfConditionD), 0);
  EXPECT_EQ(answer_len_, 2);
  EXPECT_EQ(answer_.First(6), BytesOf("ab\0cd\r"sv));
}

TEST_F(EngineUsb, AnswerOfZerosHasLength0) {
  usb_.Plug(kFirst).ExpectCommand("x").Answer(Bytes(1024, 0));
  EXPECT_EQ(Exchange("x", 1, &EndOfCondition4), 0);
  EXPECT_EQ(answer_len_, 0);
}

TEST_F(EngineUsb, AnswerMayComeInPieces) {
  usb_.Plug(kFirst)
      .ExpectCommand("x")
      .Answer(
          "\x02"
          "ab")
      .Answer("", 3)
      .Answer("cd", 1)
      .Answer("\x03");
  EXPECT_EQ(Exchange("x", 1), 0);
  EXPECT_EQ(answer_.First(6), BytesOf("\x02"
                                      "abcd\x03"));
  EXPECT_EQ(answer_len_, 6);
}

TEST_F(EngineUsb, AnswerThatReachesTheMaximumIsKeptWhole) {
  usb_.Plug(kFirst).ExpectCommand("x").Answer(Bytes(kAnswerLen - 1, 'a')).Answer(Bytes(1024, 'b'));
  EXPECT_EQ(TransProcByEnd(0, 0, std::string("x").data(), 1, answer_.text(), &answer_len_, &Never, 1000), 0);
  EXPECT_EQ(answer_.First(kAnswerLen + 1023), Concat(Bytes(kAnswerLen - 1, 'a'), Bytes(1024, 'b')));
  EXPECT_EQ(answer_len_, kAnswerLen + 1023);
}

TEST_F(EngineUsb, ReadThatBringsNothingGivesMinus2) {
  usb_.Plug(kFirst).ExpectCommand("x");
  EXPECT_EQ(Exchange("x", 1, &AtOnce), -2);
  EXPECT_EQ(answer_len_, kUntouched);
  answer_len_ = 0;
  usb_.ExpectCommand("x");
  EXPECT_EQ(Exchange("x", 1), -2) << "a maximum of 0 is reached at once";
}

TEST_F(EngineUsb, NegativeMaximumGivesMinus11) {
  usb_.Plug(kFirst).ExpectCommand("x");
  answer_len_ = -1;
  EXPECT_EQ(Exchange("x", 1), -11);
  EXPECT_EQ(answer_len_, -1);
}

TEST_F(EngineUsb, MaximumOfMinus27LooksLikeACancelledRead) {
  usb_.Plug(kFirst).ExpectCommand("x");
  answer_len_ = -27;
  EXPECT_EQ(Exchange("x", 1), -23);
}

TEST_F(EngineUsb, NoAnswerGivesMinus11AndLeavesTheLength) {
  usb_.Plug(kFirst).ExpectCommand("x").Answer("half");
  EXPECT_EQ(Exchange("x", 1), -11);
  EXPECT_EQ(answer_len_, kUntouched);
}

TEST_F(EngineUsb, DeviceThatVanishesWhileWaitingGivesMinus11AndIsClosed) {
  usb_.Plug(kFirst).ExpectCommand("x");
  usb_.OnTransfer([this](const Transfer& transfer) {
    if (transfer.in) usb_.Unplug();
  });
  EXPECT_EQ(Exchange("x", 1), -11);
  EXPECT_EQ(usb_.Count("close"), 1);
  EXPECT_EQ(Exchange("x", 1), -3) << "gone";
}

TEST_F(EngineUsb, NullAnswerOrLengthSkipsTheRead) {
  usb_.Plug(kFirst).ExpectCommand("x").ExpectCommand("x");
  char command[] = "x";
  EXPECT_EQ(TransProc(0, 0, command, 1, nullptr, &answer_len_, 1000), 0);
  EXPECT_EQ(TransProc(0, 0, command, 1, answer_.text(), nullptr, 1000), 0);
  EXPECT_EQ(usb_.Count("in"), 0);
  EXPECT_EQ(answer_len_, kUntouched);
}

TEST_F(EngineUsb, LinkKeepsTheTypeOfTheLastSuccessfulOpen) {
  TransMssionLinux_t serial{};
  serial.nLinkType = GWQ_LINK_SERIAL;
  ICC_ChangeTermParam(&serial);
  const LogCapture log;
  EXPECT_EQ(Exchange("x", 1), -3);
  const auto messages = log.Messages();
  EXPECT_EQ(std::count(messages.begin(), messages.end(), "\nClose Device Begin"), 0)
      << "the close between the identities went to the serial link";
  unsigned char byte = 0;
  EXPECT_EQ(ICC_WriteDataToTransPort(&byte, 1), -5) << "still the serial link";
}

struct TimeoutCase {
  int milliseconds;
  int transfers;  // of 200 ms, from the beginning of a second
};

std::string NameOf(const TimeoutCase& each) {
  return std::to_string(each.milliseconds);
}

class EngineTimeout : public EngineUsb, public testing::WithParamInterface<TimeoutCase> {};

TEST_P(EngineTimeout, IsCutDownToWholeSeconds) {
  usb_.Plug(kFirst).ExpectCommand("x");
  EXPECT_EQ(Exchange("x", 1, nullptr, GetParam().milliseconds), -11);
  EXPECT_EQ(usb_.Count("in"), GetParam().transfers);
}

INSTANTIATE_TEST_SUITE_P(Values, EngineTimeout,
                         testing::Values(TimeoutCase{0, 5}, TimeoutCase{999, 5}, TimeoutCase{1000, 10},
                                         TimeoutCase{1999, 10}, TimeoutCase{2000, 15}, TimeoutCase{-999, 5},
                                         TimeoutCase{-1000, 1}, TimeoutCase{INT_MIN, 1}));

TEST_F(EngineUsb, NegativePortSendsTheCommandUncut) {
  usb_.Plug(kFirst).Expect(BytesOf("abc")).Answer("\x03");
  const LogCapture log;
  char command[] = "abc";
  EXPECT_EQ(TransProc(-1, 0, command, 3, answer_.text(), &answer_len_, 1000), 0);
  EXPECT_EQ(usb_.Count("out 0x02 3 1000ms"), 1);
  EXPECT_EQ(log.Messages().front(), " TransProc  nPort=-1");
}

TEST_F(EngineUsb, NegativePortFailsForWhatDoesNotGoOutWhole) {
  usb_.Plug(kFirst).Expect({});
  for (int i = 0; i < 5; ++i) usb_.NextOutMoves(0);
  char command[] = "abc";
  EXPECT_EQ(TransProc(INT_MIN, 0, command, 3, answer_.text(), &answer_len_, 1000), -10);
  EXPECT_EQ(TransProc(-1, 0, nullptr, 3, answer_.text(), &answer_len_, 1000), -10);
  EXPECT_EQ(usb_.Count("in"), 0);
}

TEST_F(EngineUsb, NegativePortSendsALongCommandInOneTransfer) {
  std::string command(3000, 'x');
  usb_.Plug(kFirst).Expect(BytesOf(command));
  EXPECT_EQ(TransProcOnlySend(-1, 0, command.data(), 3000, 1000), 0);
  EXPECT_EQ(usb_.Count("out 0x02 3000 1000ms"), 1);
}

}  // namespace
}  // namespace gwq::test
