// SPDX-License-Identifier: MIT
// Reading the PIN as a DES and as an ANSI PIN block.
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

constexpr std::size_t kBlockRoom = 1025;

class CounterPinBlock : public TerminalRig {
 protected:
  int ReadDes(int digit1 = 1, int digit2 = 3, int timeout = 30) {
    return GWQ_ReadPinDES(0, 9600, digit1, digit2, timeout, block_.text());
  }
  int ReadAnsi(std::string account, int digit1 = 1, int digit2 = 2, int timeout = 30) {
    GuardedBuffer text(BytesOf(account + '\0'));
    return GWQ_ReadPinAnsi(0, 9600, digit1, digit2, timeout, text.text(), block_.text());
  }
  void ExpectEntry(std::string_view command, std::string_view timeout = wire::kEntryTimeout30) {
    usb_.ExpectCommand(timeout).ExpectCommand(command);
  }
  void ExpectLeave() { usb_.ExpectCommand(wire::kLeaveEntry); }
  void Answered(std::string_view command, const Bytes& answer) {
    ExpectEntry(command);
    usb_.Answer(answer);
    ExpectLeave();
  }

  void ExpectBlock(const Bytes& text) {
    EXPECT_EQ(block_.Content(), Concat(text, Bytes(kBlockRoom - text.size(), 0x55)));
  }

  GuardedBuffer block_{kBlockRoom, 0x55};
};

TEST_F(CounterPinBlock, DesSequenceGivesTheBlockInHex) {
  Answered(wire::kDesBlock, BytesOf(wire::kBlock8));
  const LogCapture log;
  EXPECT_EQ(ReadDes(), 0);
  ExpectBlock(BytesOf(wire::kBlock8Hex));
  EXPECT_THAT(OwnMessages(log), ElementsAre("[GWQ_ReadPinDES]", "port:0 timeout:33000"));
  EXPECT_EQ(log.Messages().at(1), "port:0 timeout:33000") << "before the drain";
}

TEST_F(CounterPinBlock, AnsiSequenceGivesTheBlockInHex) {
  Answered(wire::kAnsiBlock, BytesOf(wire::kBlock10));
  const LogCapture log;
  EXPECT_EQ(ReadAnsi("6222021234567890"), 0);
  ExpectBlock(BytesOf(wire::kBlock10Hex));
  EXPECT_THAT(OwnMessages(log), ElementsAre("GWQ_ReadPinAnsi", "port:0 timeout:33000"));
}

TEST_F(CounterPinBlock, EmptyAccountMeansSixZeros) {
  Answered(wire::kAnsiBlockNoAccount, BytesOf(wire::kBlock8));
  EXPECT_EQ(ReadAnsi("", 0, 1), 0);
}

TEST_F(CounterPinBlock, AccountIsSentAsItIs) {
  Answered("\x1BI12not a number|%s\x03\r\n", BytesOf(wire::kBlock8));
  EXPECT_EQ(ReadAnsi("not a number|%s\x03"), 0);
}

TEST_F(CounterPinBlock, AccountIsCutWhereTheCommandEnds) {
  Answered("\x1BI12" + std::string(1017, '7') + "\r\n", BytesOf(wire::kBlock8));
  EXPECT_EQ(ReadAnsi(std::string(1017, '7')), 0);
  Answered("\x1BI12" + std::string(1018, '7') + "\r", BytesOf(wire::kBlock8));
  EXPECT_EQ(ReadAnsi(std::string(1018, '7')), 0);
  Answered("\x1BI12" + std::string(1019, '7'), BytesOf(wire::kBlock8));
  EXPECT_EQ(ReadAnsi(std::string(5000, '7')), 0);
}

TEST_F(CounterPinBlock, DigitsAndTimeoutsAtTheirBoundsAreSent) {
  const Bytes block = BytesOf(wire::kBlock8);
  Answered(
      "\x1B"
      "F00\r\n",
      block);
  EXPECT_EQ(ReadDes(0, 0), 0);
  usb_.ExpectCommand(wire::kEntryTimeout1).ExpectCommand(wire::kDesBlock).Answer(block);
  ExpectLeave();
  EXPECT_EQ(ReadDes(1, 3, 1), 0);
  usb_.ExpectCommand(wire::kEntryTimeout999).ExpectCommand("\x1BI03000000\r\n").Answer(block);
  ExpectLeave();
  EXPECT_EQ(ReadAnsi("", 0, 3, 999), 0);
}

TEST_F(CounterPinBlock, ArgumentsOutOfRangeAreRefusedBeforeTheDrain) {
  const LogCapture log;
  for (const int digit1 : {-1, 2, INT_MIN}) {
    EXPECT_EQ(ReadDes(digit1), -1);
    EXPECT_EQ(ReadAnsi("1", digit1), -1);
  }
  for (const int digit2 : {-1, 4, INT_MAX}) {
    EXPECT_EQ(ReadDes(0, digit2), -1);
    EXPECT_EQ(ReadAnsi("1", 0, digit2), -1);
  }
  for (const int timeout : {0, 1000, -1, INT_MAX}) {
    EXPECT_EQ(ReadDes(0, 0, timeout), -1);
    EXPECT_EQ(ReadAnsi("1", 0, 0, timeout), -1);
  }
  char account[] = "1";
  EXPECT_EQ(GWQ_ReadPinDES(0, 9600, 0, 0, 30, nullptr), -1);
  EXPECT_EQ(GWQ_ReadPinAnsi(0, 9600, 0, 0, 30, account, nullptr), -1);
  EXPECT_EQ(GWQ_ReadPinAnsi(0, 9600, 0, 0, 30, nullptr, block_.text()), -1);
  EXPECT_THAT(usb_.Calls(), IsEmpty());
  ExpectBlock({});
  EXPECT_EQ(log.Messages().size(), 23U) << "the name alone, each time";
  for (const std::string& message : log.Messages()) EXPECT_FALSE(message.starts_with("port:"));
}

struct WrongAnswer {
  const char* name;
  Bytes answer;
};

class CounterWrongBlock : public CounterPinBlock, public testing::WithParamInterface<WrongAnswer> {};

TEST_P(CounterWrongBlock, Gives1024CharactersZeroAndLeavesEntry) {
  Answered(wire::kDesBlock, GetParam().answer);
  EXPECT_EQ(ReadDes(), -14);
  ExpectBlock(Bytes(1024, '0'));
}

INSTANTIATE_TEST_SUITE_P(Answers, CounterWrongBlock,
                         testing::Values(WrongAnswer{"Unknown", BytesOf(wire::kUnknownCommand)},
                                         WrongAnswer{"EtxAlone", BytesOf("\x03")},
                                         WrongAnswer{"NoStx", BytesOf("1012\x03")},
                                         WrongAnswer{"Empty", BytesOf("\x02\x03")},
                                         WrongAnswer{"OtherMark", BytesOf("\x02"
                                                                          "3012\x03")},
                                         WrongAnswer{"Mark10With9Bytes", BytesOf("\x02"
                                                                                 "10112233445566778899\x03")},
                                         WrongAnswer{"Mark20With8Bytes", BytesOf("\x02"
                                                                                 "201122334455667788\x03")},
                                         WrongAnswer{"ZeroReport", Bytes(1024, 0)},
                                         WrongAnswer{"FullOfText", Bytes(1024, 'x')}),
                         kByName);

TEST_F(CounterPinBlock, AnswerInAWholeReportIsTakenAsText) {
  Answered(wire::kDesBlock, PaddedToReports(BytesOf(wire::kBlock8)));
  EXPECT_EQ(ReadDes(), 0);
  ExpectBlock(BytesOf(wire::kBlock8Hex));
}

TEST_F(CounterPinBlock, LongestAnswerFillsTheBlockAndNoMore) {
  ExpectEntry(wire::kDesBlock);
  usb_.Answer(
          "\x02"
          "20" +
          std::string(1020, '1'))
      .Answer(std::string(1023, '1') + "\x03");
  ExpectLeave();
  EXPECT_EQ(ReadDes(), 0);
  ExpectBlock(Bytes(1024, '1'));
}

TEST_F(CounterPinBlock, SilenceLeavesTheBlockUntouchedAndLeavesEntry) {
  ExpectEntry(wire::kDesBlock, wire::kEntryTimeout1);
  ExpectLeave();
  EXPECT_EQ(ReadDes(1, 3, 1), -11);
  EXPECT_EQ(Elapsed(), kDrainSeconds + 5) << "more than 1 + 3 whole seconds";
  ExpectBlock({});
}

TEST_F(CounterPinBlock, CancelledEntryIsLeft) {
  ExpectEntry(wire::kAnsiBlock);
  ExpectLeave();
  usb_.OnTransfer([](const Transfer& transfer) {
    if (transfer.in && transfer.index == kDrainReads) CancelRead();
  });
  EXPECT_EQ(ReadAnsi("6222021234567890"), -23);
  ExpectBlock({});
}

TEST_F(CounterPinBlock, FailureBeforeTheEntryCommandEndsItWithoutLeaving) {
  usb_.ExpectCommand(wire::kEntryTimeout30);
  FailSending(0);
  EXPECT_EQ(ReadDes(), -10);
  usb_.Unplug();
  EXPECT_EQ(ReadDes(), -3);
  EXPECT_EQ(ReadAnsi("1"), -3);
  ExpectBlock({});
}

TEST_F(CounterPinBlock, EntryCommandThatFailsIsStillFollowedByLeaving) {
  ExpectEntry(wire::kDesBlock);
  ExpectLeave();
  FailSending(1);
  EXPECT_EQ(ReadDes(), -10);
  ExpectBlock({});
}

TEST_F(CounterPinBlock, SerialPortIsNotDrained) {
  FakeTty tty("/dev/ttyS41");
  tty.Respond([](const Bytes& written) {
    return written == BytesOf(wire::kDesBlock) ? std::string(wire::kBlock8) : std::string();
  });
  int reads = 0;
  tty.OnRead([&reads](int) { ++reads; });
  EXPECT_EQ(GWQ_ReadPinDES(42, 9600, 1, 3, 30, block_.text()), 0);
  ExpectBlock(BytesOf(wire::kBlock8Hex));
  EXPECT_EQ(reads, 1);
  EXPECT_EQ(tty.Received(), BytesOf(std::string(wire::kEntryTimeout30) + std::string(wire::kDesBlock) +
                                    std::string(wire::kLeaveEntry)));
}

}  // namespace
}  // namespace gwq::test
