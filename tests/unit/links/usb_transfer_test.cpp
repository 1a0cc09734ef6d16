// SPDX-License-Identifier: MIT
// Writing, reading and cancelling on the two USB links.
#include "unit/links/usb_links.h"

#include <atomic>
#include <thread>

#include "support/guarded_buffer.h"
#include "support/test_clock.h"

namespace gwq::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::time_t kStart = 1'700'000'000;

class UsbTransfer : public UsbLinks {
 protected:
  UsbTransfer() {
    ResetClock();
    SetTime(kStart);
    usb_.Plug({.vid = kVid, .pid = kPid});
    EXPECT_EQ(Open(), 0);
    opening_ = usb_.Calls().size();
  }
  ~UsbTransfer() override { Close(); }

  // The calls since the device was opened.
  [[nodiscard]] Lines Transfers() const {
    const Lines calls = usb_.Calls();
    return {calls.begin() + static_cast<std::ptrdiff_t>(opening_), calls.end()};
  }
  [[nodiscard]] static Lines OfThisKind(Lines transfers) {
    for (std::string& transfer : transfers) transfer.insert(0, GetParam().kind);
    return transfers;
  }
  [[nodiscard]] int Count(std::string_view prefix) const {
    return usb_.Count(std::string(GetParam().kind).append(prefix));
  }
  // What follows a read that was cancelled.
  static void ExpectPauseOfACancel() { EXPECT_EQ(SleptMs(), GetParam().slept_after_cancel); }

 private:
  std::size_t opening_ = 0;
};
INSTANTIATE_TEST_SUITE_P(Links, UsbTransfer, testing::ValuesIn(kUsbLinks), kByName);

class UsbClosed : public UsbLinks {};
INSTANTIATE_TEST_SUITE_P(Links, UsbClosed, testing::ValuesIn(kUsbLinks), kByName);

TEST_P(UsbTransfer, WriteIsOneTransferOfAllBytes) {
  Bytes data = Pattern(1024);
  EXPECT_EQ(Write(data.data(), 1024), 1024);
  EXPECT_EQ(usb_.Sent(), data);
  EXPECT_EQ(Transfers(), OfThisKind({"out 0x02 1024 1000ms"}));
}

TEST_P(UsbTransfer, WriteGoesOnWhereAPartialTransferEnded) {
  Bytes data = Pattern(1024);
  usb_.NextOutMoves(1000, LIBUSB_ERROR_TIMEOUT);
  EXPECT_EQ(Write(data.data(), 1024), 1024);
  EXPECT_EQ(usb_.Sent(), data);
  EXPECT_EQ(Transfers(), OfThisKind({"out 0x02 1024 1000ms", "out 0x02 24 1000ms"}));
}

TEST_P(UsbTransfer, WriteLooksAtTheCountAndNotAtTheResult) {
  Bytes data = Pattern(10);
  usb_.NextOutMoves(10, LIBUSB_ERROR_IO);
  EXPECT_EQ(Write(data.data(), 10), 10);
  EXPECT_EQ(Count("out"), 1);
}

TEST_P(UsbTransfer, WriteGivesUpAfterFiveTransfersThatMoveNothing) {
  Bytes data = Pattern(10);
  for (int i = 0; i < 5; ++i) usb_.NextOutMoves(0, LIBUSB_ERROR_TIMEOUT);
  EXPECT_EQ(Write(data.data(), 10), -5);
  EXPECT_EQ(Count("out 0x02 10 1000ms"), 5);
  EXPECT_EQ(Now(), kStart + 5);
  EXPECT_THAT(usb_.Sent(), IsEmpty());
}

TEST_P(UsbTransfer, WriteSucceedsAtTheFifthTransfer) {
  Bytes data = Pattern(10);
  usb_.NextOutMoves(2).NextOutMoves(0, LIBUSB_ERROR_PIPE).NextOutMoves(2).NextOutMoves(1).NextOutMoves(5);
  EXPECT_EQ(Write(data.data(), 10), 10);
  EXPECT_EQ(usb_.Sent(), data);
}

TEST_P(UsbTransfer, WriteFailsWhenFiveTransfersDoNotSuffice) {
  Bytes data = Pattern(10);
  for (int i = 0; i < 5; ++i) usb_.NextOutMoves(1);
  EXPECT_EQ(Write(data.data(), 10), -5);
  EXPECT_EQ(usb_.Sent(), Pattern(5));
}

TEST_P(UsbTransfer, WriteToADeviceThatVanishedFails) {
  Bytes data = Pattern(10);
  usb_.Unplug();
  EXPECT_EQ(Write(data.data(), 10), -5);
  EXPECT_EQ(Count("out"), 5);
}

TEST_P(UsbTransfer, WriteOfNothingSucceedsAndOfLessFails) {
  unsigned char byte = 0;
  EXPECT_EQ(Write(&byte, 0), 0);
  EXPECT_EQ(Write(&byte, -1), -5);
  EXPECT_EQ(Write(nullptr, 1), -5);
  EXPECT_THAT(usb_.Sent(), IsEmpty());
}

TEST_P(UsbClosed, ReadEndsWithItsTimeoutAndDoesNotSpin) {
  ResetClock();
  SetTime(kStart);
  unsigned char buffer[1024 + 1] = {};
  EXPECT_EQ(Read(buffer, 1, 2, nullptr), -4);
  EXPECT_EQ(Now(), kStart + 3);
  EXPECT_FALSE(SleptMs().empty());
  EXPECT_TRUE(usb_.Calls().empty());
}

TEST_P(UsbTransfer, ReadRefusesANullBuffer) {
  EXPECT_EQ(Read(nullptr, 1, 0, nullptr), -2);
  EXPECT_EQ(Count("in"), 0);
}

TEST_P(UsbTransfer, ReadTakesReportsOf1024BytesIn200Ms) {
  usb_.Answer(Pattern(1024)).Answer(Pattern(1024));
  GuardedBuffer buffer(2048);
  EXPECT_EQ(Read(buffer.data(), 2048, 5, nullptr), 2048);
  EXPECT_EQ(buffer.Content(), Concat(Pattern(1024), Pattern(1024)));
  EXPECT_EQ(Transfers(), OfThisKind({"in 0x81 1024 200ms", "in 0x81 1024 200ms"}));
}

TEST_P(UsbTransfer, ReportBeyondTheMaximumIsKeptWhole) {
  usb_.Answer(Pattern(64));
  GuardedBuffer buffer(64, 0x55);
  EXPECT_EQ(Read(buffer.data(), 10, 5, nullptr), 10);
  EXPECT_EQ(buffer.Content(), Pattern(64));
}

TEST_P(UsbTransfer, LongestOvershootIs1023Bytes) {
  usb_.Answer(Pattern(1)).Answer(Pattern(8)).Answer(Pattern(1024));
  GuardedBuffer buffer(10 + 1023);
  EXPECT_EQ(Read(buffer.data(), 10, 5, nullptr), 10);
  EXPECT_EQ(buffer.Content(), Concat(Concat(Pattern(1), Pattern(8)), Pattern(1024)));
}

TEST_P(UsbTransfer, ReadAppendsExactlyWhatArrived) {
  usb_.Answer("ab").Answer("").Answer("c");
  g_asked.clear();
  GuardedBuffer buffer(6, 0x55);
  EXPECT_EQ(Read(buffer.data(), 6, 5, &UntilThree), 3);
  EXPECT_EQ(buffer.Content(), BytesOf("abcUUU"));
  EXPECT_THAT(g_asked, ElementsAre(2, 2, 3)) << "asked also after an empty transfer";
}

TEST_P(UsbTransfer, BytesThatComeWithAnErrorCount) {
  usb_.AnswerWithResult(BytesOf("abc"), LIBUSB_ERROR_OVERFLOW);
  GuardedBuffer buffer(3);
  EXPECT_EQ(Read(buffer.data(), 3, 5, nullptr), 3);
  EXPECT_EQ(buffer.Content(), BytesOf("abc"));
  EXPECT_THAT(SleptMs(), IsEmpty());
}

TEST_P(UsbTransfer, MaximumIsLookedAtBeforeThePredicate) {
  usb_.Answer("abc");
  g_asked.clear();
  unsigned char buffer[3 + 1024] = {};
  EXPECT_EQ(Read(buffer, 2, 5, &UntilThree), 2);
  EXPECT_THAT(g_asked, IsEmpty());
}

TEST_P(UsbTransfer, PredicateMayEndAReadThatBroughtNothing) {
  unsigned char byte = 0x55;
  EXPECT_EQ(Read(&byte, 1, 5, &AtOnce), 0);
  EXPECT_EQ(byte, 0x55);
  EXPECT_EQ(Count("in"), 1);
}

TEST_P(UsbTransfer, MaximumOf0OrLessEndsWithItAfterOneTransfer) {
  unsigned char byte = 0x55;
  EXPECT_EQ(Read(&byte, 0, 5, nullptr), 0);
  EXPECT_EQ(Read(&byte, -3, 5, nullptr), -3);
  EXPECT_EQ(Count("in"), 2);
}

TEST_P(UsbTransfer, TimeoutOf0EndsWhenTheSecondChanges) {
  unsigned char buffer[1024 + 1] = {};
  EXPECT_EQ(Read(buffer, 1, 0, &Never), -4);
  EXPECT_EQ(Count("in"), 5) << "of 200 ms each";
  EXPECT_EQ(Now(), kStart + 1);
  EXPECT_THAT(SleptMs(), IsEmpty()) << "a transfer's own time-out needs no pause";
}

TEST_P(UsbTransfer, TimeoutEndsOnlyAfterMoreSecondsThanGiven) {
  AdvanceMs(900);
  unsigned char buffer[1024 + 1] = {};
  EXPECT_EQ(Read(buffer, 1, 3, nullptr), -4);
  EXPECT_EQ(Now(), kStart + 4);
  EXPECT_EQ(Count("in"), 16);
}

TEST_P(UsbTransfer, NegativeTimeoutEndsAfterOneTransfer) {
  unsigned char buffer[1024 + 1] = {};
  EXPECT_EQ(Read(buffer, 1, -1, nullptr), -4);
  EXPECT_EQ(Count("in"), 1);
}

TEST_P(UsbTransfer, AnswerInTheLastMomentCounts) {
  usb_.Answer("abc");
  usb_.OnTransfer([](const Transfer&) { AdvanceMs(60'000); });
  GuardedBuffer buffer(4);
  EXPECT_EQ(Read(buffer.data(), 4, 1, &UntilThree), 3);
}

TEST_P(UsbTransfer, BytesReceivedBeforeATimeoutStandInTheBuffer) {
  usb_.Answer("ab");
  GuardedBuffer buffer(4);
  EXPECT_EQ(Read(buffer.data(), 4, 0, &Never), -4);
  EXPECT_EQ(buffer.First(2), BytesOf("ab"));
}

TEST_P(UsbTransfer, DeviceThatVanishesInTheMiddleOfAReadEndsWithTheTimeout) {
  usb_.Answer("ab");
  usb_.OnTransfer([this](const Transfer& transfer) {
    if (transfer.index == 1) usb_.Unplug();
  });
  GuardedBuffer buffer(8);
  EXPECT_EQ(Read(buffer.data(), 8, 2, &Never), -4);
  EXPECT_EQ(buffer.First(2), BytesOf("ab"));
  EXPECT_EQ(Now(), kStart + 3);
  EXPECT_EQ(Count("in"), 1 + 150) << "a pause of 20 ms after each failure";
}

TEST_P(UsbTransfer, FailedTransferIsFollowedByAPause) {
  usb_.AnswerWithResult({}, LIBUSB_ERROR_PIPE).Answer("abc");
  unsigned char buffer[1024 + 3] = {};
  EXPECT_EQ(Read(buffer, 3, 5, nullptr), 3);
  EXPECT_THAT(SleptMs(), ElementsAre(20));
}

TEST_P(UsbTransfer, CancelEndsTheReadAtItsNextPass) {
  usb_.OnTransfer([](const Transfer& transfer) {
    if (transfer.index == 2) {
      EXPECT_EQ(Cancel(), 0);
    }
  });
  unsigned char buffer[1024 + 1] = {};
  EXPECT_EQ(Read(buffer, 1, 60, &Never), -27);
  EXPECT_EQ(Count("in"), 3);
  ExpectPauseOfACancel();
}

TEST_P(UsbTransfer, AnswerThatComesWithTheCancelStillCounts) {
  usb_.Answer("abc");
  usb_.OnTransfer([](const Transfer&) { Cancel(); });
  unsigned char buffer[1024 + 3] = {};
  EXPECT_EQ(Read(buffer, 3, 60, nullptr), 3);
  EXPECT_THAT(SleptMs(), IsEmpty());
}

TEST_P(UsbTransfer, CancelBeforeTheReadStartsIsDropped) {
  EXPECT_EQ(Cancel(), 0);
  usb_.Answer("abc");
  unsigned char buffer[1024 + 3] = {};
  EXPECT_EQ(Read(buffer, 3, 60, nullptr), 3);
}

TEST_P(UsbTransfer, CancelOfOneReadDoesNotReachTheNext) {
  usb_.OnTransfer([](const Transfer& transfer) {
    if (transfer.index == 0) Cancel();
  });
  unsigned char buffer[1024 + 3] = {};
  EXPECT_EQ(Read(buffer, 3, 60, nullptr), -27);
  usb_.Answer("abc");
  EXPECT_EQ(Read(buffer, 3, 60, nullptr), 3);
}

TEST_P(UsbTransfer, CancelFromAnotherThreadEndsTheRead) {
  std::atomic<int> transfers = 0;
  usb_.OnTransfer([&transfers](const Transfer&) { ++transfers; });
  std::thread canceller([&transfers] {
    while (transfers == 0) std::this_thread::yield();
    EXPECT_EQ(Cancel(), 0);
  });
  unsigned char buffer[1024 + 3] = {};
  EXPECT_EQ(Read(buffer, 3, 2'000'000'000, &Never), -27);
  canceller.join();
  ExpectPauseOfACancel();
}

}  // namespace
}  // namespace gwq::test
