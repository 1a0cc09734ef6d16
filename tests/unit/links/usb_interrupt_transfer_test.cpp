// Writing, reading and cancelling on the interrupt-transfer link.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <libusb-1.0/libusb.h>

#include <atomic>
#include <numeric>
#include <thread>

#include <gwq/links/usb_interrupt.h>
#include "support/guarded_buffer.h"
#include "support/log_capture.h"
#include "support/scripted_usb.h"
#include "support/test_clock.h"

namespace gwq::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::time_t kStart = 1'700'000'000;
constexpr std::int64_t kPauseMs = 100'000'000;
constexpr int kVid = 0xABCD;
constexpr int kPid = 0x12EF;

class InterruptTransfer : public testing::Test {
 protected:
  InterruptTransfer() {
    ResetClock();
    SetTime(kStart);
    usb_.Plug({.vid = kVid, .pid = kPid});
    EXPECT_EQ(ICC_OpenLinuxSdt(kVid, kPid), 0);
  }
  ~InterruptTransfer() override { ICC_CloseLinuxSdt(); }

  std::vector<std::string> Transfers() const {
    const auto calls = usb_.Calls();
    return {calls.begin() + 5, calls.end()};
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

TEST_F(InterruptTransfer, WriteIsOneTransferOfAllBytes) {
  Bytes data = Pattern(1024);
  EXPECT_EQ(ICC_WriteLinuxSdt(data.data(), 1024), 1024);
  EXPECT_EQ(usb_.Sent(), data);
  EXPECT_THAT(Transfers(), ElementsAre("interrupt out 0x02 1024 1000ms"));
}

TEST_F(InterruptTransfer, WriteLogsTheDataEachAttemptAndItsSuccess) {
  Bytes data = BytesOf("\x1B[0");
  usb_.NextOutMoves(0, LIBUSB_ERROR_TIMEOUT).NextOutMoves(2, LIBUSB_ERROR_PIPE);
  const LogCapture log;
  EXPECT_EQ(ICC_WriteLinuxSdt(data.data(), 3), 3);
  EXPECT_EQ(usb_.Sent(), data);
  EXPECT_THAT(Transfers(), ElementsAre("interrupt out 0x02 3 1000ms", "interrupt out 0x02 3 1000ms",
                                       "interrupt out 0x02 1 1000ms"));
  EXPECT_THAT(log.Messages(),
              ElementsAre("hid write  LEN=3   HEX: 1B5B30", "nTimes:1 sendlen0 ret:-7\n",
                          "nTimes:2 sendlen2 ret:-9\n", "nTimes:3 sendlen1 ret:0\n", "write ok:3\n"));
}

TEST_F(InterruptTransfer, WriteLooksAtTheCountAndNotAtTheResult) {
  Bytes data = Pattern(10);
  usb_.NextOutMoves(10, LIBUSB_ERROR_IO);
  EXPECT_EQ(ICC_WriteLinuxSdt(data.data(), 10), 10);
  EXPECT_EQ(usb_.Count("interrupt out"), 1);
}

TEST_F(InterruptTransfer, WriteGivesUpAfterFiveAttempts) {
  Bytes data = Pattern(10);
  for (int i = 0; i < 4; ++i) usb_.NextOutMoves(0, LIBUSB_ERROR_TIMEOUT);
  usb_.NextOutMoves(9);
  const LogCapture log;
  EXPECT_EQ(ICC_WriteLinuxSdt(data.data(), 10), -5);
  EXPECT_EQ(usb_.Count("interrupt out 0x02 10 1000ms"), 5);
  EXPECT_EQ(Now(), kStart + 4);
  EXPECT_EQ(usb_.Sent(), Pattern(9));
  EXPECT_EQ(log.Messages().size(), 6U);
  EXPECT_EQ(log.Messages().back(), "nTimes:5 sendlen9 ret:0\n");
}

TEST_F(InterruptTransfer, WriteSucceedsAtTheFifthAttempt) {
  Bytes data = Pattern(10);
  usb_.NextOutMoves(2).NextOutMoves(0, LIBUSB_ERROR_PIPE).NextOutMoves(2).NextOutMoves(1).NextOutMoves(5);
  EXPECT_EQ(ICC_WriteLinuxSdt(data.data(), 10), 10);
  EXPECT_EQ(usb_.Sent(), data);
}

TEST_F(InterruptTransfer, WriteToADeviceThatVanishedFails) {
  Bytes data = Pattern(10);
  usb_.Unplug();
  EXPECT_EQ(ICC_WriteLinuxSdt(data.data(), 10), -5);
  EXPECT_EQ(usb_.Count("interrupt out"), 5);
}

TEST_F(InterruptTransfer, WriteOfNothingSucceedsAndOfLessFails) {
  unsigned char byte = 0;
  const LogCapture log;
  EXPECT_EQ(ICC_WriteLinuxSdt(&byte, 0), 0);
  EXPECT_EQ(ICC_WriteLinuxSdt(&byte, -1), -5);
  EXPECT_EQ(ICC_WriteLinuxSdt(nullptr, 1), -5);
  EXPECT_THAT(usb_.Sent(), IsEmpty());
  EXPECT_THAT(log.Messages(),
              ElementsAre("hid write  LEN=0   HEX: ", "nTimes:1 sendlen0 ret:0\n", "write ok:0\n",
                          "hid write  LEN=-1   HEX: ", "hid write  LEN=1   HEX: "));
}

TEST(InterruptClosed, EveryCallSaysSo) {
  const ScriptedUsb usb;
  unsigned char byte = 0x55;
  const LogCapture log;
  EXPECT_EQ(ICC_WriteLinuxSdt(&byte, 1), -7);
  EXPECT_EQ(ICC_CancelLinuxSdtRead(), -7);
  EXPECT_THAT(log.Messages(), ElementsAre("hid write  LEN=1   HEX: 55"));
  EXPECT_TRUE(usb.Calls().empty());
}

TEST(InterruptClosed, ReadEndsWithItsTimeoutAndDoesNotSpin) {
  const ScriptedUsb usb;
  ResetClock();
  SetTime(kStart);
  unsigned char buffer[1024] = {};
  EXPECT_EQ(ICC_ReadLinuxSdt(buffer, 1, 2, nullptr), -4);
  EXPECT_EQ(Now(), kStart + 3);
  EXPECT_FALSE(SleptMs().empty());
  EXPECT_TRUE(usb.Calls().empty());
}

TEST_F(InterruptTransfer, ReadRefusesANullBuffer) {
  const LogCapture log;
  EXPECT_EQ(ICC_ReadLinuxSdt(nullptr, 1, 0, nullptr), -2);
  EXPECT_EQ(usb_.Count("interrupt in"), 0);
  EXPECT_THAT(log.Messages(), IsEmpty());
}

TEST_F(InterruptTransfer, ReadTakesReportsOf1024BytesIn200Ms) {
  usb_.Answer(Pattern(1024)).Answer(Pattern(1024));
  GuardedBuffer buffer(2048);
  EXPECT_EQ(ICC_ReadLinuxSdt(buffer.data(), 2048, 5, nullptr), 2048);
  EXPECT_EQ(buffer.Content(), Concat(Pattern(1024), Pattern(1024)));
  EXPECT_THAT(Transfers(), ElementsAre("interrupt in 0x81 1024 200ms", "interrupt in 0x81 1024 200ms"));
}

TEST_F(InterruptTransfer, FullReportThatReachesTheMaximumIsNotShownToThePredicate) {
  usb_.Answer(Pattern(1024));
  g_asked.clear();
  GuardedBuffer buffer(1024);
  EXPECT_EQ(ICC_ReadLinuxSdt(buffer.data(), 1024, 5, &UntilThree), 1024);
  EXPECT_THAT(g_asked, IsEmpty());
}

TEST_F(InterruptTransfer, ReadLogsEachTransferAndTheWholeBufferSoFar) {
  usb_.Answer("a").Answer("").Answer("bc");
  g_asked.clear();
  GuardedBuffer buffer(6, 0x55);
  const LogCapture log;
  EXPECT_EQ(ICC_ReadLinuxSdt(buffer.data(), 6, 5, &UntilThree), 3);
  EXPECT_EQ(buffer.Content(), BytesOf("abcUUU"));
  EXPECT_THAT(g_asked, ElementsAre(1, 1, 3)) << "asked also after an empty transfer";
  EXPECT_THAT(log.Messages(), ElementsAre("hid read maxlen:6\n", "hid read:  LEN=1   HEX: 61",
                                          "read real data  LEN=1   HEX: 61", "hid read:  LEN=0   HEX: ",
                                          "read real data  LEN=1   HEX: 61", "hid read:  LEN=2   HEX: 6263",
                                          "read real data  LEN=3   HEX: 616263", "read ret:3\n"));
}

TEST_F(InterruptTransfer, ReadThatReachesTheMaximumDoesNotLogTheBuffer) {
  for (const int maximum : {1, 2}) {
    usb_.Answer("ab");
    GuardedBuffer buffer(2);
    const LogCapture log;
    EXPECT_EQ(ICC_ReadLinuxSdt(buffer.data(), maximum, 5, nullptr), maximum);
    EXPECT_EQ(buffer.Content(), BytesOf("ab"));
    EXPECT_THAT(log.Messages(),
                ElementsAre("hid read maxlen:" + std::to_string(maximum) + "\n",
                            "hid read:  LEN=2   HEX: 6162", "read ret:" + std::to_string(maximum) + "\n"));
  }
}

TEST_F(InterruptTransfer, LongestOvershootIs1023Bytes) {
  usb_.Answer(Pattern(1)).Answer(Pattern(8)).Answer(Pattern(1024));
  GuardedBuffer buffer(10 + 1023);
  EXPECT_EQ(ICC_ReadLinuxSdt(buffer.data(), 10, 5, nullptr), 10);
  EXPECT_EQ(buffer.Content(), Concat(Concat(Pattern(1), Pattern(8)), Pattern(1024)));
}

TEST_F(InterruptTransfer, MaximumOf0OrLessEndsWithItAfterOneTransfer) {
  usb_.Answer(Pattern(1024)).Answer(Pattern(1024));
  GuardedBuffer buffer(1024);
  EXPECT_EQ(ICC_ReadLinuxSdt(buffer.data(), 0, 5, nullptr), 0);
  EXPECT_EQ(ICC_ReadLinuxSdt(buffer.data(), -3, 5, nullptr), -3);
  EXPECT_EQ(usb_.Count("interrupt in"), 2);
}

TEST_F(InterruptTransfer, BytesThatComeWithAnErrorCount) {
  usb_.AnswerWithResult(BytesOf("abc"), LIBUSB_ERROR_OVERFLOW);
  GuardedBuffer buffer(3);
  EXPECT_EQ(ICC_ReadLinuxSdt(buffer.data(), 3, 5, nullptr), 3);
  EXPECT_EQ(buffer.Content(), BytesOf("abc"));
  EXPECT_THAT(SleptMs(), IsEmpty());
}

TEST_F(InterruptTransfer, AnswerLongerThanAReportKeepsToTheReport) {
  usb_.Answer(Pattern(3000));
  GuardedBuffer buffer(1024);
  EXPECT_EQ(ICC_ReadLinuxSdt(buffer.data(), 1, 5, nullptr), 1);
  EXPECT_EQ(buffer.Content(), Pattern(1024));
}

TEST_F(InterruptTransfer, CountsThatCannotBeAreNotBelieved) {
  GuardedBuffer buffer(1024);
  usb_.Answer(Pattern(1024)).NextClaims(2'000'000'000);
  EXPECT_EQ(ICC_ReadLinuxSdt(buffer.data(), 1, 5, nullptr), 1);
  EXPECT_EQ(buffer.Content(), Pattern(1024));
  usb_.Answer("a").NextClaims(-7);
  EXPECT_EQ(ICC_ReadLinuxSdt(buffer.data(), 1, 5, &AtOnce), 0);
  Bytes data = Pattern(10);
  usb_.NextOutMoves(2).NextClaims(-3);
  EXPECT_EQ(ICC_WriteLinuxSdt(data.data(), 10), 10);
  usb_.NextClaims(2'000'000'000);
  EXPECT_EQ(ICC_WriteLinuxSdt(data.data(), 10), 10);
  EXPECT_THAT(Transfers(), ElementsAre("interrupt in 0x81 1024 200ms", "interrupt in 0x81 1024 200ms",
                                       "interrupt out 0x02 10 1000ms", "interrupt out 0x02 10 1000ms",
                                       "interrupt out 0x02 10 1000ms"));
}

TEST_F(InterruptTransfer, PredicateMayEndAReadThatBroughtNothing) {
  unsigned char byte = 0x55;
  EXPECT_EQ(ICC_ReadLinuxSdt(&byte, 1, 5, &AtOnce), 0);
  EXPECT_EQ(byte, 0x55);
  EXPECT_EQ(usb_.Count("interrupt in"), 1);
}

TEST_F(InterruptTransfer, TimeoutOf0EndsWhenTheSecondChanges) {
  unsigned char buffer[1024] = {};
  const LogCapture log;
  EXPECT_EQ(ICC_ReadLinuxSdt(buffer, 1, 0, &Never), -4);
  EXPECT_EQ(usb_.Count("interrupt in"), 5) << "of 200 ms each";
  EXPECT_EQ(Now(), kStart + 1);
  EXPECT_THAT(SleptMs(), IsEmpty()) << "a transfer's own time-out needs no pause";
  EXPECT_EQ(log.Messages().back(), "read ret:-4\n");
}

TEST_F(InterruptTransfer, TimeoutEndsOnlyAfterMoreSecondsThanGiven) {
  AdvanceMs(900);
  unsigned char buffer[1024] = {};
  EXPECT_EQ(ICC_ReadLinuxSdt(buffer, 1, 3, nullptr), -4);
  EXPECT_EQ(Now(), kStart + 4);
  EXPECT_EQ(usb_.Count("interrupt in"), 16);
}

TEST_F(InterruptTransfer, NegativeTimeoutEndsAfterOneTransfer) {
  unsigned char buffer[1024] = {};
  EXPECT_EQ(ICC_ReadLinuxSdt(buffer, 1, -1, nullptr), -4);
  EXPECT_EQ(usb_.Count("interrupt in"), 1);
}

TEST_F(InterruptTransfer, AnswerInTheLastMomentCounts) {
  usb_.Answer("abc");
  usb_.OnTransfer([](const Transfer&) { AdvanceMs(60'000); });
  GuardedBuffer buffer(4);
  EXPECT_EQ(ICC_ReadLinuxSdt(buffer.data(), 4, 1, &UntilThree), 3);
}

TEST_F(InterruptTransfer, DeviceThatVanishesInTheMiddleOfAReadEndsWithTheTimeout) {
  usb_.Answer("ab");
  usb_.OnTransfer([this](const Transfer& transfer) {
    if (transfer.index == 1) usb_.Unplug();
  });
  GuardedBuffer buffer(8);
  EXPECT_EQ(ICC_ReadLinuxSdt(buffer.data(), 8, 2, &Never), -4);
  EXPECT_EQ(buffer.First(2), BytesOf("ab"));
  EXPECT_EQ(Now(), kStart + 3);
  EXPECT_EQ(usb_.Count("interrupt in"), 1 + 150) << "a pause of 20 ms after each failure";
}

TEST_F(InterruptTransfer, CancelledReadPausesFor100000SecondsAndGivesMinus27) {
  usb_.OnTransfer([](const Transfer& transfer) {
    if (transfer.index == 2) {
      EXPECT_EQ(ICC_CancelLinuxSdtRead(), 0);
    }
  });
  unsigned char buffer[1024] = {};
  const LogCapture log;
  EXPECT_EQ(ICC_ReadLinuxSdt(buffer, 1, 60, &Never), -27);
  EXPECT_EQ(usb_.Count("interrupt in"), 3);
  EXPECT_THAT(SleptMs(), ElementsAre(kPauseMs));
  EXPECT_EQ(log.Messages().back(), "read ret:-27\n");
  EXPECT_EQ(log.Messages().size(), 1 + 3 * 2 + 1U) << "the cancel itself is not logged";
}

TEST_F(InterruptTransfer, AnswerThatComesWithTheCancelStillCounts) {
  usb_.Answer("abc");
  usb_.OnTransfer([](const Transfer&) { ICC_CancelLinuxSdtRead(); });
  unsigned char buffer[1024] = {};
  EXPECT_EQ(ICC_ReadLinuxSdt(buffer, 3, 60, nullptr), 3);
  EXPECT_THAT(SleptMs(), IsEmpty());
}

TEST_F(InterruptTransfer, CancelBeforeTheReadStartsIsDropped) {
  EXPECT_EQ(ICC_CancelLinuxSdtRead(), 0);
  usb_.Answer("abc");
  unsigned char buffer[1024] = {};
  EXPECT_EQ(ICC_ReadLinuxSdt(buffer, 3, 60, nullptr), 3);
}

TEST_F(InterruptTransfer, CancelOfOneReadDoesNotReachTheNext) {
  usb_.OnTransfer([](const Transfer& transfer) {
    if (transfer.index == 0) ICC_CancelLinuxSdtRead();
  });
  unsigned char buffer[1024] = {};
  EXPECT_EQ(ICC_ReadLinuxSdt(buffer, 3, 60, nullptr), -27);
  usb_.Answer("abc");
  EXPECT_EQ(ICC_ReadLinuxSdt(buffer, 3, 60, nullptr), 3);
}

TEST_F(InterruptTransfer, CancelFromAnotherThreadEndsTheRead) {
  std::atomic<int> transfers = 0;
  usb_.OnTransfer([&transfers](const Transfer&) { ++transfers; });
  std::thread canceller([&transfers] {
    while (transfers == 0) std::this_thread::yield();
    EXPECT_EQ(ICC_CancelLinuxSdtRead(), 0);
  });
  unsigned char buffer[1024] = {};
  EXPECT_EQ(ICC_ReadLinuxSdt(buffer, 3, 2'000'000'000, &Never), -27);
  canceller.join();
  EXPECT_THAT(SleptMs(), ElementsAre(kPauseMs));
}

}  // namespace
}  // namespace gwq::test
