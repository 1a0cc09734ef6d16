// SPDX-License-Identifier: MIT
// PIN length and key commands.
#include <cctype>
#include <climits>

#include <gwq/pinpad/counter.h>
#include "support/fake_tty.h"
#include "support/terminal_rig.h"
#include "wire/frames.h"

namespace gwq::test {
namespace {

using std::string_view_literals::operator""sv;
using testing::ElementsAre;
using testing::IsEmpty;

int SetPinLen(int length, int port = 0) {
  return GWQ_SetPinLen(port, 9600, length);
}

int UpdateMKey(int index, std::string new_key, std::string old_key, int port = 0) {
  return GWQ_UpdateMKey(port, 9600, index, new_key.data(), old_key.data());
}

int DownLoadWKey(int master, int working, std::string key, int port = 0) {
  return GWQ_DownLoadWKey(port, 9600, master, working, key.data());
}

std::string Lower(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

class CounterKeys : public TerminalRig {
 protected:
  void ExpectAccepted(std::string_view command) { usb_.ExpectCommand(command).Answer(wire::kKeyAccepted); }
};

TEST_F(CounterKeys, PinLengthIsSentWithoutWaitingForAnAnswer) {
  usb_.ExpectCommand(wire::kPinLength14).ExpectCommand(wire::kPinLength1);
  const LogCapture log;
  EXPECT_EQ(SetPinLen(14), 0);
  EXPECT_EQ(Now(), kStart + kDrainSeconds) << "the drain alone takes time";
  EXPECT_EQ(SetPinLen(1), 0);
  EXPECT_EQ(usb_.Count("in"), 2 * kDrainReads);
  EXPECT_THAT(OwnMessages(log), ElementsAre("[GWQ_SetPinLen] iPortNo=0 iBaudRate=9600 iPinLen=14",
                                            "[GWQ_SetPinLen] iPortNo=0 iBaudRate=9600 iPinLen=1"));
}

TEST_F(CounterKeys, PinLengthOutOfRangeIsRefusedBeforeTheDrain) {
  const LogCapture log;
  for (const int length : {0, 15, -1, INT_MIN, INT_MAX}) EXPECT_EQ(SetPinLen(length), -1) << length;
  EXPECT_THAT(usb_.Calls(), IsEmpty());
  EXPECT_EQ(log.Messages().size(), 5U) << "logged all the same";
  EXPECT_EQ(log.Messages().front(), "[GWQ_SetPinLen] iPortNo=0 iBaudRate=9600 iPinLen=0");
}

TEST_F(CounterKeys, DrainIsOneReadThatComesFirst) {
  usb_.Answer("leftover of a screen").Answer("F").ExpectCommand(wire::kPinLength14);
  const LogCapture log;
  EXPECT_EQ(SetPinLen(14), 0);
  EXPECT_EQ(usb_.Count("in"), 2) << "an F ends it at once";
  EXPECT_EQ(log.Messages().at(1), " TransProcOnlyRead  nPort=0");
  EXPECT_EQ(usb_.Count("list"), 2);
}

TEST_F(CounterKeys, DrainTakesAFullBufferAndLeavesTheRest) {
  usb_.Answer(Bytes(1023, 'x'))
      .Answer(Bytes(1024, 'x'))
      .ExpectCommand(wire::kActivate)
      .Answer(wire::kKeyAccepted);
  EXPECT_EQ(GWQ_ActiveWKey(0, 9600, 3, 10), 0);
  EXPECT_EQ(Now(), kStart);
}

TEST_F(CounterKeys, DrainsResultDoesNotMatter) {
  usb_.OnTransfer([](const Transfer& transfer) {
    if (transfer.in && transfer.index == 0) CancelRead();
  });
  usb_.ExpectCommand(wire::kPinLength14);
  EXPECT_EQ(SetPinLen(14), 0);
}

TEST_F(CounterKeys, SerialPortIsNotDrained) {
  FakeTty tty("/dev/ttyS41");
  int reads = 0;
  tty.OnRead([&reads](int) { ++reads; });
  EXPECT_EQ(SetPinLen(14, 42), 0);
  EXPECT_EQ(tty.Received(), BytesOf(wire::kPinLength14));
  EXPECT_EQ(reads, 0);
  tty.Respond([](const Bytes&) { return std::string(wire::kKeyAccepted); });
  EXPECT_EQ(UpdateMKey(3, wire::kNewMasterKeyHex, wire::kOldMasterKeyHex, 42), 0);
  EXPECT_EQ(DownLoadWKey(3, 10, wire::kWorkingKeyHex, 42), 0);
  EXPECT_EQ(GWQ_ActiveWKey(42, 9600, 3, 10), 0);
  EXPECT_EQ(GWQ_ResetKey(42, 9600), 0);
  EXPECT_EQ(reads, 4) << "one for each acknowledgement";
  std::string all;
  for (const auto frame :
       {wire::kPinLength14, wire::kMasterKey, wire::kWorkingKey, wire::kActivate, wire::kResetKeys}) {
    all += frame;
  }
  EXPECT_EQ(tty.Received(), BytesOf(all));
  EXPECT_THAT(usb_.Calls(), IsEmpty());
}

TEST_F(CounterKeys, EachCommandIsSentByteForByte) {
  ExpectAccepted(wire::kMasterKey);
  EXPECT_EQ(UpdateMKey(3, wire::kNewMasterKeyHex, wire::kOldMasterKeyHex), 0);
  ExpectAccepted(wire::kMasterKey);
  EXPECT_EQ(UpdateMKey(3, Lower(wire::kNewMasterKeyHex), wire::kOldMasterKeyHex), 0) << "either case";
  ExpectAccepted(wire::kWorkingKey);
  EXPECT_EQ(DownLoadWKey(3, 10, wire::kWorkingKeyHex), 0);
  ExpectAccepted(wire::kActivate);
  EXPECT_EQ(GWQ_ActiveWKey(0, 9600, 3, 10), 0);
  ExpectAccepted(wire::kResetKeys);
  EXPECT_EQ(GWQ_ResetKey(0, 9600), 0);
  EXPECT_EQ(usb_.Count("in"), 5 * (kDrainReads + 1)) << "every one is drained first";
}

TEST_F(CounterKeys, KeysGoToTheLogAsGivenAlsoWhenRefused) {
  const LogCapture log;
  EXPECT_EQ(UpdateMKey(16, "CDEF", "1A2B"), -1);
  EXPECT_THAT(log.Messages(), ElementsAre("[GWQ_UpdateMKey] MKeyIndex=16 NewMKey=CDEF OldMKey=1A2B"));
  ExpectAccepted("\x1BM031:2;<=>?\r\n");
  EXPECT_EQ(UpdateMKey(3, "cdef", "1A2B"), 0);
  EXPECT_EQ(log.Messages().at(1), "[GWQ_UpdateMKey] MKeyIndex=3 NewMKey=cdef OldMKey=1A2B");
}

TEST_F(CounterKeys, OtherKeyCommandsLogNothingOfTheirOwn) {
  const LogCapture log;
  ExpectAccepted(wire::kWorkingKey);
  DownLoadWKey(3, 10, wire::kWorkingKeyHex);
  ExpectAccepted(wire::kActivate);
  GWQ_ActiveWKey(0, 9600, 3, 10);
  ExpectAccepted(wire::kResetKeys);
  GWQ_ResetKey(0, 9600);
  EXPECT_THAT(OwnMessages(log), IsEmpty());
}

TEST_F(CounterKeys, ArgumentsOutOfRangeAreRefusedBeforeAnythingIsSent) {
  char key[] = "11";
  for (const int index : {-1, 16, INT_MIN, INT_MAX}) {
    EXPECT_EQ(UpdateMKey(index, "11", "22"), -1) << index;
    EXPECT_EQ(DownLoadWKey(index, 0, "11"), -1) << index;
    EXPECT_EQ(DownLoadWKey(0, index, "11"), -1) << index;
    EXPECT_EQ(GWQ_ActiveWKey(0, 9600, index, 0), -1) << index;
    EXPECT_EQ(GWQ_ActiveWKey(0, 9600, 0, index), -1) << index;
  }
  EXPECT_EQ(GWQ_UpdateMKey(0, 9600, 0, nullptr, key), -1);
  EXPECT_EQ(GWQ_UpdateMKey(0, 9600, 0, key, nullptr), -1);
  EXPECT_EQ(GWQ_DownLoadWKey(0, 9600, 0, 0, nullptr), -1);
  EXPECT_THAT(usb_.Calls(), IsEmpty());
}

TEST_F(CounterKeys, NullKeysDoNotHurtTheLog) {
  const LogCapture log;
  EXPECT_EQ(GWQ_UpdateMKey(0, 9600, 0, nullptr, nullptr), -1);
  EXPECT_EQ(log.Messages().size(), 1U);
}

TEST_F(CounterKeys, IndexesAtTheirBoundsAreSent) {
  ExpectAccepted("\x1BM0011\r\n");
  EXPECT_EQ(UpdateMKey(0, "11", ""), 0);
  ExpectAccepted("\x1BM0?11\r\n");
  EXPECT_EQ(UpdateMKey(15, "", "11"), 0);
  ExpectAccepted("\x1BS000?22\r\n");
  EXPECT_EQ(DownLoadWKey(0, 15, "22"), 0);
  ExpectAccepted("\x1BS0?0022\r\n");
  EXPECT_EQ(DownLoadWKey(15, 0, "22"), 0);
  ExpectAccepted(
      "\x1B"
      "A000?\r\n");
  EXPECT_EQ(GWQ_ActiveWKey(0, 9600, 0, 15), 0);
}

TEST_F(CounterKeys, KeyEndsBeforeItsFirstZeroByte) {
  ExpectAccepted("\x1BM03<=>?\r\n");
  EXPECT_EQ(UpdateMKey(3, "CDEF", "001A2B"), 0);
  ExpectAccepted("\x1BM031:<=\r\n");
  EXPECT_EQ(UpdateMKey(3, "CD00EF", "1A002B"), 0);
  ExpectAccepted("\x1BS0102\r\n");
  EXPECT_EQ(DownLoadWKey(1, 2, "0011"), 0);
  ExpectAccepted("\x1BS0102\r\n");
  EXPECT_EQ(DownLoadWKey(1, 2, ""), 0);
}

// The record behind one index byte.
std::string Repeated(std::size_t bytes) {
  std::string hex;
  for (std::size_t i = 0; i < bytes; ++i) hex += "5A";
  return hex;
}

std::string RepeatedSplit(std::size_t bytes) {
  std::string split;
  for (std::size_t i = 0; i < bytes; ++i) split += "5:";
  return split;
}

TEST_F(CounterKeys, LongestRecordOf512BytesIsSentWhole) {
  ExpectAccepted("\x1BM01" + RepeatedSplit(511) + "\r\n");
  EXPECT_EQ(UpdateMKey(1, Repeated(500), Repeated(11)), 0);
}

TEST_F(CounterKeys, RecordBeyond512BytesIsSentEmpty) {
  ExpectAccepted("\x1BM\r\n");
  EXPECT_EQ(UpdateMKey(1, Repeated(500), Repeated(12)), 0);
  ExpectAccepted("\x1BM\r\n");
  EXPECT_EQ(UpdateMKey(1, Repeated(5000), Repeated(5000)), 0);
  ExpectAccepted("\x1BS\r\n");
  EXPECT_EQ(DownLoadWKey(1, 2, Repeated(511)), 0);
}

struct Acknowledgement {
  const char* name;
  Bytes answer;
  int status;
};

class CounterAcknowledgement : public TerminalRig, public testing::WithParamInterface<Acknowledgement> {};

TEST_P(CounterAcknowledgement, DecidesEveryKeyCommand) {
  const auto answer = [this](std::string_view command) {
    usb_.ExpectCommand(command).Answer(GetParam().answer);
  };
  answer(wire::kMasterKey);
  EXPECT_EQ(UpdateMKey(3, wire::kNewMasterKeyHex, wire::kOldMasterKeyHex), GetParam().status);
  answer(wire::kWorkingKey);
  EXPECT_EQ(DownLoadWKey(3, 10, wire::kWorkingKeyHex), GetParam().status);
  answer(wire::kActivate);
  EXPECT_EQ(GWQ_ActiveWKey(0, 9600, 3, 10), GetParam().status);
  answer(wire::kResetKeys);
  EXPECT_EQ(GWQ_ResetKey(0, 9600), GetParam().status);
}

INSTANTIATE_TEST_SUITE_P(Answers, CounterAcknowledgement,
                         testing::Values(Acknowledgement{"OneByte", {0xAA}, 0},
                                         Acknowledgement{"InAReport", PaddedToReports({0xAA}), 0},
                                         Acknowledgement{"ZeroAndMoreBehind", {0xAA, 0x00, 0x55}, 0},
                                         Acknowledgement{"WithCrLf", {0xAA, 0x0D, 0x0A}, -14},
                                         Acknowledgement{"Twice", {0xAA, 0xAA}, -14},
                                         Acknowledgement{"Other", {0x55}, -14},
                                         Acknowledgement{"Unknown", {0x02, 0x55, 0x03}, -14},
                                         Acknowledgement{"Zero", {0x00}, -14},
                                         Acknowledgement{"ZeroReport", Bytes(1024, 0), -14},
                                         Acknowledgement{"ZeroFirst", {0x00, 0xAA}, -14},
                                         Acknowledgement{"FullReport", Bytes(1024, 0xAA), -14}),
                         kByName);

TEST_F(CounterKeys, SilenceGivesMinus11After3Seconds) {
  usb_.ExpectCommand(wire::kResetKeys);
  EXPECT_EQ(GWQ_ResetKey(0, 9600), -11);
  EXPECT_EQ(Elapsed(), kDrainSeconds + 4) << "more than 3 whole seconds";
}

TEST_F(CounterKeys, ExchangeFailuresPassThrough) {
  usb_.ExpectCommand(wire::kResetKeys);
  FailSending(0);
  EXPECT_EQ(GWQ_ResetKey(0, 9600), -10);
  usb_.ExpectCommand(wire::kResetKeys).OnTransfer([this](const Transfer& transfer) {
    if (transfer.in && usb_.Finished()) CancelRead();
  });
  EXPECT_EQ(GWQ_ResetKey(0, 9600), -23);
  usb_.Unplug();
  EXPECT_EQ(GWQ_ResetKey(0, 9600), -3);
  EXPECT_EQ(SetPinLen(4), -3);
  EXPECT_EQ(UpdateMKey(1, "11", "22"), -3);
}

}  // namespace
}  // namespace gwq::test
