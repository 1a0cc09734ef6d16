// Writing, reading and cancelling on the USB device.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <libusb-1.0/libusb.h>

#include <atomic>
#include <numeric>
#include <thread>

#include <gwq/links/usb_hid.h>
#include "support/guarded_buffer.h"
#include "support/log_capture.h"
#include "support/scripted_usb.h"
#include "support/test_clock.h"

namespace gwq::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::time_t kStart = 1'700'000'000;
constexpr int kVid = 0xABCD;
constexpr int kPid = 0x12EF;

class UsbTransfer : public testing::Test {
 protected:
  UsbTransfer() {
    ResetClock();
    SetTime(kStart);
    usb_.Plug({.vid = kVid, .pid = kPid});
    EXPECT_EQ(ICC_OpenLinuxHid(kVid, kPid), 0);
  }
  ~UsbTransfer() override { ICC_CloseLinuxHid(); }

  std::vector<std::string> Transfers() const {
    const auto calls = usb_.Calls();
    return {calls.begin() + 4, calls.end()};
  }

  ScriptedUsb usb_;
};

Bytes Pattern(std::size_t size) {
  Bytes bytes(size);
  std::iota(bytes.begin(), bytes.end(), std::uint8_t{1});
  return bytes;
}

int Never(unsigned char*, int) {
  return 1;
}

int AtOnce(unsigned char*, int) {
  return 0;
}

std::vector<int> g_asked;

int UntilThree(unsigned char*, int count) {
  g_asked.push_back(count);
  return count >= 3 ? 0 : -1;
}

TEST_F(UsbTransfer, WriteIsOneTransferOfAllBytes) {
  Bytes data = Pattern(1024);
  EXPECT_EQ(ICC_WriteLinuxHid(data.data(), 1024), 1024);
  EXPECT_EQ(usb_.Sent(), data);
  EXPECT_THAT(Transfers(), ElementsAre("out 0x02 1024 1000ms"));
}

TEST_F(UsbTransfer, WriteGoesOnWhereAPartialTransferEnded) {
  Bytes data = Pattern(1024);
  usb_.NextOutMoves(1000, LIBUSB_ERROR_TIMEOUT);
  EXPECT_EQ(ICC_WriteLinuxHid(data.data(), 1024), 1024);
  EXPECT_EQ(usb_.Sent(), data);
  EXPECT_THAT(Transfers(), ElementsAre("out 0x02 1024 1000ms", "out 0x02 24 1000ms"));
}

TEST_F(UsbTransfer, WriteLooksAtTheCountAndNotAtTheResult) {
  Bytes data = Pattern(10);
  usb_.NextOutMoves(10, LIBUSB_ERROR_IO);
  EXPECT_EQ(ICC_WriteLinuxHid(data.data(), 10), 10);
  EXPECT_EQ(usb_.Count("out"), 1);
}

TEST_F(UsbTransfer, WriteGivesUpAfterFiveTransfersThatMoveNothing) {
  Bytes data = Pattern(10);
  for (int i = 0; i < 5; ++i) usb_.NextOutMoves(0, LIBUSB_ERROR_TIMEOUT);
  EXPECT_EQ(ICC_WriteLinuxHid(data.data(), 10), -5);
  EXPECT_EQ(usb_.Count("out 0x02 10 1000ms"), 5);
  EXPECT_EQ(Now(), kStart + 5);
  EXPECT_THAT(usb_.Sent(), IsEmpty());
}

TEST_F(UsbTransfer, WriteSucceedsAtTheFifthTransfer) {
  Bytes data = Pattern(10);
  usb_.NextOutMoves(2).NextOutMoves(0, LIBUSB_ERROR_PIPE).NextOutMoves(2).NextOutMoves(1).NextOutMoves(5);
  EXPECT_EQ(ICC_WriteLinuxHid(data.data(), 10), 10);
  EXPECT_EQ(usb_.Sent(), data);
}

TEST_F(UsbTransfer, WriteFailsWhenFiveTransfersDoNotSuffice) {
  Bytes data = Pattern(10);
  for (int i = 0; i < 5; ++i) usb_.NextOutMoves(1);
  EXPECT_EQ(ICC_WriteLinuxHid(data.data(), 10), -5);
  EXPECT_EQ(usb_.Sent(), Pattern(5));
}

TEST_F(UsbTransfer, WriteToADeviceThatVanishedFails) {
  Bytes data = Pattern(10);
  usb_.Unplug();
  EXPECT_EQ(ICC_WriteLinuxHid(data.data(), 10), -5);
  EXPECT_EQ(usb_.Count("out"), 5);
}

TEST_F(UsbTransfer, WriteOfNothingSucceedsAndOfLessFails) {
  unsigned char byte = 0;
  EXPECT_EQ(ICC_WriteLinuxHid(&byte, 0), 0);
  EXPECT_EQ(ICC_WriteLinuxHid(&byte, -1), -5);
  EXPECT_EQ(ICC_WriteLinuxHid(nullptr, 1), -5);
  EXPECT_THAT(usb_.Sent(), IsEmpty());
}

TEST(UsbClosed, EveryCallSaysSo) {
  const ScriptedUsb usb;
  unsigned char byte = 0;
  EXPECT_EQ(ICC_WriteLinuxHid(&byte, 1), -7);
  const LogCapture log;
  EXPECT_EQ(ICC_CancelLinuxHidRead(), -7);
  EXPECT_THAT(log.Messages(), ElementsAre("[ICC_CancelLinuxHidRead] begin s_bIsReading=0\n"));
  EXPECT_TRUE(usb.Calls().empty());
}

TEST(UsbClosed, ReadEndsWithItsTimeoutAndDoesNotSpin) {
  const ScriptedUsb usb;
  ResetClock();
  SetTime(kStart);
  unsigned char buffer[1024 + 1] = {};
  EXPECT_EQ(ICC_ReadLinuxHid(buffer, 1, 2, nullptr), -4);
  EXPECT_EQ(Now(), kStart + 3);
  EXPECT_FALSE(SleptMs().empty());
  EXPECT_TRUE(usb.Calls().empty());
}

TEST_F(UsbTransfer, ReadRefusesANullBuffer) {
  EXPECT_EQ(ICC_ReadLinuxHid(nullptr, 1, 0, nullptr), -2);
  EXPECT_EQ(usb_.Count("in"), 0);
}

TEST_F(UsbTransfer, ReadTakesReportsOf1024BytesIn200Ms) {
  usb_.Answer(Pattern(1024)).Answer(Pattern(1024));
  GuardedBuffer buffer(2048);
  EXPECT_EQ(ICC_ReadLinuxHid(buffer.data(), 2048, 5, nullptr), 2048);
  EXPECT_EQ(buffer.Content(), Concat(Pattern(1024), Pattern(1024)));
  EXPECT_THAT(Transfers(), ElementsAre("in 0x81 1024 200ms", "in 0x81 1024 200ms"));
}

TEST_F(UsbTransfer, ReportBeyondTheMaximumIsKeptWhole) {
  usb_.Answer(Pattern(64));
  GuardedBuffer buffer(64, 0x55);
  EXPECT_EQ(ICC_ReadLinuxHid(buffer.data(), 10, 5, nullptr), 10);
  EXPECT_EQ(buffer.Content(), Pattern(64));
}

TEST_F(UsbTransfer, LongestOvershootIs1023Bytes) {
  usb_.Answer(Pattern(1)).Answer(Pattern(8)).Answer(Pattern(1024));
  GuardedBuffer buffer(10 + 1023);
  EXPECT_EQ(ICC_ReadLinuxHid(buffer.data(), 10, 5, nullptr), 10);
  EXPECT_EQ(buffer.Content(), Concat(Concat(Pattern(1), Pattern(8)), Pattern(1024)));
}

TEST_F(UsbTransfer, ReadAppendsExactlyWhatArrived) {
  usb_.Answer("ab").Answer("").Answer("c");
  g_asked.clear();
  GuardedBuffer buffer(6, 0x55);
  EXPECT_EQ(ICC_ReadLinuxHid(buffer.data(), 6, 5, &UntilThree), 3);
  EXPECT_EQ(buffer.Content(), BytesOf("abcUUU"));
  EXPECT_THAT(g_asked, ElementsAre(2, 2, 3)) << "asked also after an empty transfer";
}

TEST_F(UsbTransfer, BytesThatComeWithAnErrorCount) {
  usb_.AnswerWithResult(BytesOf("abc"), LIBUSB_ERROR_OVERFLOW);
  GuardedBuffer buffer(3);
  EXPECT_EQ(ICC_ReadLinuxHid(buffer.data(), 3, 5, nullptr), 3);
  EXPECT_EQ(buffer.Content(), BytesOf("abc"));
  EXPECT_THAT(SleptMs(), IsEmpty());
}

TEST_F(UsbTransfer, MaximumIsLookedAtBeforeThePredicate) {
  usb_.Answer("abc");
  g_asked.clear();
  unsigned char buffer[3 + 1024] = {};
  EXPECT_EQ(ICC_ReadLinuxHid(buffer, 2, 5, &UntilThree), 2);
  EXPECT_THAT(g_asked, IsEmpty());
}

TEST_F(UsbTransfer, PredicateMayEndAReadThatBroughtNothing) {
  unsigned char byte = 0x55;
  EXPECT_EQ(ICC_ReadLinuxHid(&byte, 1, 5, &AtOnce), 0);
  EXPECT_EQ(byte, 0x55);
  EXPECT_EQ(usb_.Count("in"), 1);
}

TEST_F(UsbTransfer, MaximumOf0OrLessEndsWithItAfterOneTransfer) {
  unsigned char byte = 0x55;
  EXPECT_EQ(ICC_ReadLinuxHid(&byte, 0, 5, nullptr), 0);
  EXPECT_EQ(ICC_ReadLinuxHid(&byte, -3, 5, nullptr), -3);
  EXPECT_EQ(usb_.Count("in"), 2);
}

TEST_F(UsbTransfer, TimeoutOf0EndsWhenTheSecondChanges) {
  unsigned char buffer[1024 + 1] = {};
  EXPECT_EQ(ICC_ReadLinuxHid(buffer, 1, 0, &Never), -4);
  EXPECT_EQ(usb_.Count("in"), 5) << "of 200 ms each";
  EXPECT_EQ(Now(), kStart + 1);
  EXPECT_THAT(SleptMs(), IsEmpty()) << "a transfer's own time-out needs no pause";
}

TEST_F(UsbTransfer, TimeoutEndsOnlyAfterMoreSecondsThanGiven) {
  AdvanceMs(900);
  unsigned char buffer[1024 + 1] = {};
  EXPECT_EQ(ICC_ReadLinuxHid(buffer, 1, 3, nullptr), -4);
  EXPECT_EQ(Now(), kStart + 4);
  EXPECT_EQ(usb_.Count("in"), 16);
}

TEST_F(UsbTransfer, NegativeTimeoutEndsAfterOneTransfer) {
  unsigned char buffer[1024 + 1] = {};
  EXPECT_EQ(ICC_ReadLinuxHid(buffer, 1, -1, nullptr), -4);
  EXPECT_EQ(usb_.Count("in"), 1);
}

TEST_F(UsbTransfer, AnswerInTheLastMomentCounts) {
  usb_.Answer("abc");
  usb_.OnTransfer([](const Transfer&) { AdvanceMs(60'000); });
  GuardedBuffer buffer(4);
  EXPECT_EQ(ICC_ReadLinuxHid(buffer.data(), 4, 1, &UntilThree), 3);
}

TEST_F(UsbTransfer, BytesReceivedBeforeATimeoutStandInTheBuffer) {
  usb_.Answer("ab");
  GuardedBuffer buffer(4);
  EXPECT_EQ(ICC_ReadLinuxHid(buffer.data(), 4, 0, &Never), -4);
  EXPECT_EQ(buffer.First(2), BytesOf("ab"));
}

TEST_F(UsbTransfer, DeviceThatVanishesInTheMiddleOfAReadEndsWithTheTimeout) {
  usb_.Answer("ab");
  usb_.OnTransfer([this](const Transfer& transfer) {
    if (transfer.index == 1) usb_.Unplug();
  });
  GuardedBuffer buffer(8);
  EXPECT_EQ(ICC_ReadLinuxHid(buffer.data(), 8, 2, &Never), -4);
  EXPECT_EQ(buffer.First(2), BytesOf("ab"));
  EXPECT_EQ(Now(), kStart + 3);
  EXPECT_EQ(usb_.Count("in"), 1 + 150) << "a pause of 20 ms after each failure";
}

TEST_F(UsbTransfer, FailedTransferIsFollowedByAPause) {
  usb_.AnswerWithResult({}, LIBUSB_ERROR_PIPE).Answer("abc");
  unsigned char buffer[1024 + 3] = {};
  EXPECT_EQ(ICC_ReadLinuxHid(buffer, 3, 5, nullptr), 3);
  EXPECT_THAT(SleptMs(), ElementsAre(20));
}

TEST_F(UsbTransfer, CancelEndsTheReadAtItsNextPass) {
  usb_.OnTransfer([](const Transfer& transfer) {
    if (transfer.index == 2) {
      EXPECT_EQ(ICC_CancelLinuxHidRead(), 0);
    }
  });
  unsigned char buffer[1024 + 1] = {};
  EXPECT_EQ(ICC_ReadLinuxHid(buffer, 1, 60, &Never), -27);
  EXPECT_EQ(usb_.Count("in"), 3);
}

TEST_F(UsbTransfer, AnswerThatComesWithTheCancelStillCounts) {
  usb_.Answer("abc");
  usb_.OnTransfer([](const Transfer&) { ICC_CancelLinuxHidRead(); });
  unsigned char buffer[1024 + 3] = {};
  EXPECT_EQ(ICC_ReadLinuxHid(buffer, 3, 60, nullptr), 3);
}

TEST_F(UsbTransfer, CancelBeforeTheReadStartsIsDropped) {
  EXPECT_EQ(ICC_CancelLinuxHidRead(), 0);
  usb_.Answer("abc");
  unsigned char buffer[1024 + 3] = {};
  EXPECT_EQ(ICC_ReadLinuxHid(buffer, 3, 60, nullptr), 3);
}

TEST_F(UsbTransfer, CancelOfOneReadDoesNotReachTheNext) {
  usb_.OnTransfer([](const Transfer& transfer) {
    if (transfer.index == 0) ICC_CancelLinuxHidRead();
  });
  unsigned char buffer[1024 + 3] = {};
  EXPECT_EQ(ICC_ReadLinuxHid(buffer, 3, 60, nullptr), -27);
  usb_.Answer("abc");
  EXPECT_EQ(ICC_ReadLinuxHid(buffer, 3, 60, nullptr), 3);
}

TEST_F(UsbTransfer, CancelLogsWhetherAReadIsRunning) {
  const LogCapture log;
  usb_.OnTransfer([](const Transfer&) { ICC_CancelLinuxHidRead(); });
  unsigned char buffer[1024 + 3] = {};
  ICC_ReadLinuxHid(buffer, 3, 60, nullptr);
  ICC_CancelLinuxHidRead();
  EXPECT_THAT(log.Messages(), ElementsAre("[ICC_CancelLinuxHidRead] begin s_bIsReading=1\n",
                                          "[ICC_CancelLinuxHidRead] begin s_bIsReading=0\n"));
}

TEST_F(UsbTransfer, CancelFromAnotherThreadEndsTheRead) {
  std::atomic<int> transfers = 0;
  usb_.OnTransfer([&transfers](const Transfer&) { ++transfers; });
  std::thread canceller([&transfers] {
    while (transfers == 0) std::this_thread::yield();
    EXPECT_EQ(ICC_CancelLinuxHidRead(), 0);
  });
  unsigned char buffer[1024 + 3] = {};
  EXPECT_EQ(ICC_ReadLinuxHid(buffer, 3, 2'000'000'000, &Never), -27);
  canceller.join();
}

}  // namespace
}  // namespace gwq::test
