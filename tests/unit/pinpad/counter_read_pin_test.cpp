// SPDX-License-Identifier: MIT
// Reading the PIN in clear.
#include <climits>

#include <gwq/pinpad/counter.h>
#include "support/fake_tty.h"
#include "support/guarded_buffer.h"
#include "support/terminal_rig.h"
#include "wire/frames.h"

namespace gwq::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::size_t kPinRoom = 2048;

class CounterReadPin : public TerminalRig {
 protected:
  int ReadPin(int capacity, int mode = 0, int timeout = 30) {
    return GWQ_ReadPin(0, 9600, mode, timeout, pin_.text(), capacity);
  }

  void ExpectEntry(std::string_view mode = wire::kEntryMode0,
                   std::string_view timeout = wire::kEntryTimeout30) {
    usb_.ExpectCommand(wire::kEntryOptions).ExpectCommand(timeout).ExpectCommand(mode);
  }
  void ExpectLeave() { usb_.ExpectCommand(wire::kLeaveEntry); }

  // Exactly these bytes, no terminator behind them.
  void ExpectPin(const Bytes& digits) {
    EXPECT_EQ(pin_.Content(), Concat(digits, Bytes(kPinRoom - digits.size(), 0x55)));
  }

  GuardedBuffer pin_{kPinRoom, 0x55};
};

TEST_F(CounterReadPin, SequenceEndsWithLeavingEntry) {
  ExpectEntry();
  usb_.Answer(wire::kClearPin, 7);
  ExpectLeave();
  EXPECT_EQ(ReadPin(4), 0);
  ExpectPin(BytesOf("4711"));
}

TEST_F(CounterReadPin, Mode1HasItsOwnByte) {
  ExpectEntry(wire::kEntryMode1);
  usb_.Answer(wire::kClearPin);
  ExpectLeave();
  EXPECT_EQ(ReadPin(2048, 1), 0);
  ExpectPin(BytesOf("4711"));
}

TEST_F(CounterReadPin, TimeoutsAtTheirBoundsAreSent) {
  ExpectEntry(wire::kEntryMode0, wire::kEntryTimeout1);
  usb_.Answer(wire::kClearPin);
  ExpectLeave();
  EXPECT_EQ(ReadPin(4, 0, 1), 0);
  ExpectEntry(wire::kEntryMode0, wire::kEntryTimeout999);
  usb_.Answer(wire::kClearPin);
  ExpectLeave();
  EXPECT_EQ(ReadPin(4, 0, 999), 0);
}

TEST_F(CounterReadPin, LogsItsLinesInOrder) {
  ExpectEntry();
  usb_.Answer(wire::kClearPin);
  ExpectLeave();
  const LogCapture log;
  EXPECT_EQ(ReadPin(4), 0);
  EXPECT_THAT(OwnMessages(log),
              ElementsAre("[GWQ_ReadPin]", "[GWQ_ReadPin] Pin=4711", "[GWQ_ReadPin] nRet=0"));
  const auto all = log.Messages();
  const auto pin = std::find(all.begin(), all.end(), "[GWQ_ReadPin] Pin=4711");
  EXPECT_EQ(*(pin + 1), "TransProc nPort=0 \n") << "entry is left in between";
  EXPECT_EQ(all.back(), "[GWQ_ReadPin] nRet=0");
}

TEST_F(CounterReadPin, BufferTooSmallLeavesEntryAndLogsNoResult) {
  ExpectEntry();
  usb_.Answer(wire::kClearPin);
  ExpectLeave();
  const LogCapture log;
  EXPECT_EQ(ReadPin(3), -24);
  ExpectPin({});
  EXPECT_THAT(OwnMessages(log), ElementsAre("[GWQ_ReadPin]"));
}

TEST_F(CounterReadPin, NoDigitsNeedNoRoom) {
  ExpectEntry();
  usb_.Answer("\r");
  ExpectLeave();
  EXPECT_EQ(ReadPin(0), 0);
  ExpectEntry();
  usb_.Answer("1\r");
  ExpectLeave();
  EXPECT_EQ(ReadPin(0), -24);
  ExpectPin({});
}

TEST_F(CounterReadPin, AnswerThatBeginsWithZeroHasNoDigits) {
  ExpectEntry();
  usb_.Answer(std::string_view("\0\0\r", 3));
  ExpectLeave();
  const LogCapture log;
  EXPECT_EQ(ReadPin(0), 0);
  ExpectPin({});
  EXPECT_THAT(OwnMessages(log), ElementsAre("[GWQ_ReadPin]", "[GWQ_ReadPin] Pin=", "[GWQ_ReadPin] nRet=0"));
}

TEST_F(CounterReadPin, AnswerOfAZeroReportHasNoDigits) {
  ExpectEntry();
  usb_.Answer(Bytes(1024, 0));
  ExpectLeave();
  EXPECT_EQ(ReadPin(0), 0);
  ExpectPin({});
}

TEST_F(CounterReadPin, LastByteGoesAlsoWhenItIsNoCr) {
  ExpectEntry();
  usb_.Answer(PaddedToReports(BytesOf("4711\r")));
  ExpectLeave();
  EXPECT_EQ(ReadPin(4), 0) << "a whole report reaches the maximum";
  ExpectPin(BytesOf("4711"));
  ExpectEntry();
  usb_.Answer(PaddedToReports(BytesOf("98765")));
  ExpectLeave();
  EXPECT_EQ(ReadPin(4), 0);
  ExpectPin(BytesOf("9876"));
}

TEST_F(CounterReadPin, LongestAnswerIsCopiedWhole) {
  ExpectEntry();
  usb_.Answer(Bytes(1023, '1')).Answer(Bytes(1024, '2'));
  ExpectLeave();
  EXPECT_EQ(ReadPin(2046), 0);
  ExpectPin(Concat(Bytes(1023, '1'), Bytes(1023, '2')));
  ExpectEntry();
  usb_.Answer(Bytes(1023, '1')).Answer(Bytes(1024, '2'));
  ExpectLeave();
  EXPECT_EQ(ReadPin(2045), -24);
}

TEST_F(CounterReadPin, SilenceLeavesEntryAfterTheEntryTimeAnd3Seconds) {
  ExpectEntry(wire::kEntryMode0, wire::kEntryTimeout1);
  ExpectLeave();
  const LogCapture log;
  EXPECT_EQ(ReadPin(4, 0, 1), -11);
  EXPECT_EQ(Elapsed(), kDrainSeconds + 5) << "more than 1 + 3 whole seconds";
  ExpectPin({});
  EXPECT_THAT(OwnMessages(log), ElementsAre("[GWQ_ReadPin]", "[GWQ_ReadPin] nRet=-11"));
}

TEST_F(CounterReadPin, CancelledEntryIsLeft) {
  ExpectEntry();
  ExpectLeave();
  usb_.OnTransfer([](const Transfer& transfer) {
    if (transfer.in && transfer.index == kDrainReads + 2) CancelRead();
  });
  const LogCapture log;
  EXPECT_EQ(ReadPin(4), -23);
  EXPECT_EQ(OwnMessages(log).back(), "[GWQ_ReadPin] nRet=-23");
}

TEST_F(CounterReadPin, FailureBeforeTheEntryCommandEndsItWithoutLeaving) {
  usb_.ExpectCommand(wire::kEntryOptions);
  FailSending(0);
  const LogCapture log;
  EXPECT_EQ(ReadPin(4), -10);
  EXPECT_THAT(OwnMessages(log), ElementsAre("[GWQ_ReadPin]"));
  usb_.ExpectCommand(wire::kEntryOptions).ExpectCommand(wire::kEntryTimeout30);
  FailSending(2);
  EXPECT_EQ(ReadPin(4), -10);
  ExpectPin({});
}

TEST_F(CounterReadPin, EntryCommandThatFailsIsStillFollowedByLeaving) {
  ExpectEntry();
  ExpectLeave();
  FailSending(2);
  EXPECT_EQ(ReadPin(4), -10);
  ExpectPin({});
}

TEST_F(CounterReadPin, LeavingThatFailsDoesNotMatter) {
  ExpectEntry();
  usb_.Answer(wire::kClearPin);
  ExpectLeave();
  FailSending(3);
  EXPECT_EQ(ReadPin(4), 0);
  ExpectPin(BytesOf("4711"));
}

TEST_F(CounterReadPin, AbsentTerminalGivesMinus3) {
  usb_.Unplug();
  EXPECT_EQ(ReadPin(4), -3);
}

TEST_F(CounterReadPin, ArgumentsOutOfRangeAreRefusedBeforeTheDrain) {
  const LogCapture log;
  for (const int mode : {-1, 2, INT_MAX}) EXPECT_EQ(ReadPin(4, mode), -1);
  for (const int timeout : {0, 1000, -1, INT_MIN, INT_MAX}) EXPECT_EQ(ReadPin(4, 0, timeout), -1);
  for (const int capacity : {-1, 2049, INT_MIN, INT_MAX}) EXPECT_EQ(ReadPin(capacity), -1);
  EXPECT_EQ(GWQ_ReadPin(0, 9600, 0, 30, nullptr, 4), -1);
  EXPECT_THAT(usb_.Calls(), IsEmpty());
  EXPECT_THAT(log.Messages(), testing::Each("[GWQ_ReadPin]"));
  EXPECT_EQ(log.Messages().size(), 13U);
}

TEST_F(CounterReadPin, SerialPortIsNotDrained) {
  FakeTty tty("/dev/ttyS41");
  tty.Respond([](const Bytes& written) {
    return written == BytesOf(wire::kEntryMode1) ? std::string(wire::kClearPin) : std::string();
  });
  int reads = 0;
  tty.OnRead([&reads](int) { ++reads; });
  EXPECT_EQ(GWQ_ReadPin(42, 9600, 1, 30, pin_.text(), 4), 0);
  ExpectPin(BytesOf("4711"));
  EXPECT_EQ(reads, 1);
  std::string all;
  for (const auto frame : {wire::kEntryOptions, wire::kEntryTimeout30, wire::kEntryMode1, wire::kLeaveEntry})
    all += frame;
  EXPECT_EQ(tty.Received(), BytesOf(all));
  EXPECT_THAT(usb_.Calls(), IsEmpty());
}

}  // namespace
}  // namespace gwq::test
