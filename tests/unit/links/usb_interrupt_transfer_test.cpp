// SPDX-License-Identifier: MIT
// What is the interrupt-transfer link's own: its log, its pause after a cancel, and what its reports may be.
#include "support/guarded_buffer.h"
#include "support/log_capture.h"
#include "support/test_clock.h"
#include "unit/links/usb_links.h"

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

TEST_F(InterruptTransfer, ReadRefusesANullBuffer) {
  const LogCapture log;
  EXPECT_EQ(ICC_ReadLinuxSdt(nullptr, 1, 0, nullptr), -2);
  EXPECT_EQ(usb_.Count("interrupt in"), 0);
  EXPECT_THAT(log.Messages(), IsEmpty());
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

TEST_F(InterruptTransfer, MaximumOf0OrLessEndsWithItAfterOneTransfer) {
  usb_.Answer(Pattern(1024)).Answer(Pattern(1024));
  GuardedBuffer buffer(1024);
  EXPECT_EQ(ICC_ReadLinuxSdt(buffer.data(), 0, 5, nullptr), 0);
  EXPECT_EQ(ICC_ReadLinuxSdt(buffer.data(), -3, 5, nullptr), -3);
  EXPECT_EQ(usb_.Count("interrupt in"), 2);
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

TEST_F(InterruptTransfer, TimeoutOf0EndsWhenTheSecondChanges) {
  unsigned char buffer[1024] = {};
  const LogCapture log;
  EXPECT_EQ(ICC_ReadLinuxSdt(buffer, 1, 0, &Never), -4);
  EXPECT_EQ(usb_.Count("interrupt in"), 5) << "of 200 ms each";
  EXPECT_EQ(Now(), kStart + 1);
  EXPECT_THAT(SleptMs(), IsEmpty()) << "a transfer's own time-out needs no pause";
  EXPECT_EQ(log.Messages().back(), "read ret:-4\n");
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

}  // namespace
}  // namespace gwq::test
