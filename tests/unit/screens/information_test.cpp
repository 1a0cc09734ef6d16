// SPDX-License-Identifier: MIT
// Messages with answer keys, and numbers keyed by the customer.
#include <gwq/screens/information.h>

#include <climits>

#include "support/fake_tty.h"
#include "unit/screens/screens_rig.h"

namespace gwq::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr unsigned kUntouched = 77;

// ------------------------------------------------------------------ GWQ_StartInfo

class Information : public FilesRig {
 protected:
  int Show(const char* message = "hi", int timeout = 30, int port = 0) {
    return GWQ_StartInfo(port, 9600, timeout, message, &key_);
  }

  void ExpectSetUp(std::string_view timeout = wire::kInformationTime30) {
    usb_.ExpectCommand(wire::kCloseInformation).ExpectCommand(timeout);
  }
  void ExpectMessage() {
    ExpectSetUp();
    usb_.ExpectCommand(wire::kShowMessage);
  }
  void ExpectClose() { usb_.ExpectCommand(wire::kCloseInformation); }

  unsigned key_ = kUntouched;
};

struct Key {
  std::string_view answer;
  unsigned value;
};

std::string NameOf(const Key& each) {
  return Readable(BytesOf(each.answer));
}

class InformationKeys : public Information, public testing::WithParamInterface<Key> {};

TEST_P(InformationKeys, ReachTheCaller) {
  ExpectMessage();
  usb_.Answer(GetParam().answer, 3);
  ExpectClose();
  EXPECT_EQ(Show(), 0);
  EXPECT_EQ(key_, GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(All, InformationKeys,
                         testing::Values(Key{"B0F", 0}, Key{"B1F", 1}, Key{"B3F", 3}, Key{"B2F", 4},
                                         Key{"B4F", 4}, Key{"F", 4}, Key{"0F", 4}, Key{"B0xF", 4},
                                         Key{"AB0F", 4}, Key{"B1F1F", 1}));

TEST_F(Information, WritesItsNameToTheLogAndNoMore) {
  ExpectMessage();
  usb_.Answer(wire::kKey1);
  ExpectClose();
  const LogCapture log;
  EXPECT_EQ(Show(), 0);
  EXPECT_THAT(OwnMessages(log), ElementsAre("[GWQ_StartInfo]"));
}

TEST_F(Information, UsbIsDrainedFirst) {
  usb_.Answer("B0F");
  ExpectMessage();
  usb_.Answer(wire::kKey3);
  ExpectClose();
  EXPECT_EQ(Show(), 0);
  EXPECT_EQ(key_, 3U);
}

TEST_F(Information, NoMessageOrABadTimeIsRefusedBeforeAnythingIsSent) {
  const LogCapture log;
  EXPECT_EQ(Show(nullptr), -1);
  EXPECT_EQ(Show(""), -1);
  for (const int timeout : {0, 1000, -1, INT_MIN, INT_MAX}) EXPECT_EQ(Show("hi", timeout), -1);
  EXPECT_THAT(usb_.Calls(), IsEmpty());
  EXPECT_EQ(log.Messages(), std::vector<std::string>(7, "[GWQ_StartInfo]"));
  EXPECT_EQ(key_, kUntouched);
}

TEST_F(Information, TimesAtTheirBoundsAreSent) {
  for (const auto& [timeout, command] : {std::pair{1, "\x1B[2;1T"}, {999, "\x1B[2;999T"}}) {
    ExpectSetUp(command);
    usb_.ExpectCommand(wire::kShowMessage).Answer(wire::kKey0);
    ExpectClose();
    EXPECT_EQ(Show("hi", timeout), 0);
  }
}

class MessageOfSize : public Information, public testing::WithParamInterface<std::size_t> {};

TEST_P(MessageOfSize, IsSentWholeOrNotAtAll) {
  const std::string message = LongText(GetParam());
  const std::string split = message.size() <= 30720 ? Split(message) : "";
  ExpectSetUp();
  usb_.ExpectCommand(std::string("\x1B[2A\x02").append(split).append("\x03"));
  usb_.Answer(wire::kKey1);
  ExpectClose();
  EXPECT_EQ(Show(message.c_str()), 0);
  EXPECT_EQ(key_, 1U);
}

INSTANTIATE_TEST_SUITE_P(Sizes, MessageOfSize,
                         testing::Values(1, 509, 1024, 30719, 30720, 30721, 61440, 1U << 20U));

TEST_F(Information, SilenceIsMinus11AfterTheTimeAnd3SecondsAndTheScreenIsClosed) {
  ExpectSetUp("\x1B[2;2T");
  usb_.ExpectCommand(wire::kShowMessage);
  ExpectClose();
  EXPECT_EQ(Show("hi", 2), -11);
  EXPECT_EQ(Elapsed(), kDrainSeconds + 6);
  EXPECT_EQ(key_, kUntouched);
}

TEST_F(Information, CancelledMessageIsMinus23AndTheScreenIsClosed) {
  ExpectMessage();
  ExpectClose();
  CancelReading(3);
  EXPECT_EQ(Show(), -23);
  EXPECT_EQ(key_, kUntouched);
}

TEST_F(Information, FirstCloseThatFailsDoesNotMatter) {
  ExpectMessage();
  usb_.Answer(wire::kKey1);
  ExpectClose();
  FailSending(0);
  EXPECT_EQ(Show(), 0);
}

TEST_F(Information, TimeThatCannotBeSentIsReturnedAsItIs) {
  ExpectSetUp();
  FailSending(1);
  EXPECT_EQ(Show(), -10);
  EXPECT_EQ(key_, kUntouched);
}

TEST_F(Information, MessageThatCannotBeSentIsStillFollowedByClosing) {
  ExpectMessage();
  ExpectClose();
  FailSending(2);
  EXPECT_EQ(Show(), -10);
}

TEST_F(Information, LastCloseThatFailsDoesNotMatter) {
  ExpectMessage();
  usb_.Answer(wire::kKey1);
  ExpectClose();
  FailSending(3);
  EXPECT_EQ(Show(), 0);
  EXPECT_EQ(key_, 1U);
}

TEST_F(Information, AbsentTerminalIsMinus3FromTheTime) {
  usb_.Unplug();
  EXPECT_EQ(Show(), -3);
  EXPECT_EQ(usb_.Count("list"), 6) << "drain, close and time-out, each with two identities";
}

TEST_F(Information, OutputMayBeNull) {
  ExpectMessage();
  usb_.Answer(wire::kKey1);
  ExpectClose();
  EXPECT_EQ(GWQ_StartInfo(0, 9600, 30, "hi", nullptr), 0);
}

TEST_F(Information, SerialPortIsNotDrained) {
  FakeTty tty("/dev/ttyS41");
  tty.Respond([](const Bytes& written) -> std::string {
    return written == BytesOf(wire::kShowMessage) ? "B1F" : "";
  });
  EXPECT_EQ(Show("hi", 30, 42), 0);
  EXPECT_EQ(Elapsed(), 0) << "a drain would take a second";
  EXPECT_EQ(key_, 1U);
  const std::string all = std::string(wire::kCloseInformation)
                              .append(wire::kInformationTime30)
                              .append(wire::kShowMessage)
                              .append(wire::kCloseInformation);
  EXPECT_EQ(Readable(tty.Received()), Readable(BytesOf(all)));
  EXPECT_THAT(usb_.Calls(), IsEmpty());
}

// ------------------------------------------------------------------ GWQ_StartKeyboard

class Keyboard : public FilesRig {
 protected:
  int Run(int mode = 0, int timeout = 30, int port = 0) {
    return GWQ_StartKeyboard(port, 9600, timeout, mode, output_.text());
  }

  void ExpectKeypad(std::string_view word = wire::kKeypadMode0,
                    std::string_view timeout = wire::kKeypadTime30) {
    usb_.ExpectCommand(timeout).ExpectCommand(word);
  }
  void ExpectClose() { usb_.ExpectCommand(wire::kCloseKeypad); }
  void ExpectOutput(std::string_view text) {
    EXPECT_EQ(output_.Content(), Concat(BytesOf(text), Bytes(kRoom - text.size(), 0x55)));
  }

  static constexpr std::size_t kRoom = 2046;
  GuardedBuffer output_{kRoom, 0x55};
};

TEST_F(Keyboard, CopiesWhatWasKeyedWithoutATerminator) {
  ExpectKeypad();
  usb_.Answer(wire::kKeyed1234, 3);
  ExpectClose();
  const LogCapture log;
  EXPECT_EQ(Run(), 0);
  ExpectOutput("1234");
  EXPECT_THAT(OwnMessages(log), IsEmpty());
}

TEST_F(Keyboard, Mode1HasItsOwnCommand) {
  ExpectKeypad(wire::kKeypadMode1);
  usb_.Answer(wire::kKeyed1234);
  ExpectClose();
  EXPECT_EQ(Run(1), 0);
  ExpectOutput("1234");
}

TEST_F(Keyboard, UsbIsDrainedFirst) {
  usb_.Answer("A99F");
  ExpectKeypad();
  usb_.Answer(wire::kKeyed1234);
  ExpectClose();
  EXPECT_EQ(Run(), 0);
  ExpectOutput("1234");
}

TEST_F(Keyboard, AnswersTooShortForAnythingKeyedAreAnEmptyNumber) {
  for (const char* answer : {"F", "AF"}) {
    ExpectKeypad();
    usb_.Answer(answer);
    ExpectClose();
    EXPECT_EQ(Run(), 0);
    ExpectOutput("");
  }
  ExpectKeypad();
  usb_.Answer(Bytes(1024, 0));
  ExpectClose();
  EXPECT_EQ(Run(), 0) << "a whole report of zeros reaches the maximum and is an empty text";
  ExpectOutput("");
}

TEST_F(Keyboard, LongestAnswerIsCopiedWhole) {
  ExpectKeypad();
  usb_.Answer(Bytes(1023, '1')).Answer(Bytes(1024, '2'));
  ExpectClose();
  EXPECT_EQ(Run(), 0);
  ExpectOutput(std::string(1022, '1').append(std::string(1023, '2')));
}

TEST_F(Keyboard, BadArgumentsAreRefusedBeforeAnythingIsSent) {
  for (const int mode : {-1, 2, INT_MAX}) EXPECT_EQ(Run(mode), -1);
  for (const int timeout : {0, 1000, -1, INT_MIN, INT_MAX}) EXPECT_EQ(Run(0, timeout), -1);
  EXPECT_EQ(GWQ_StartKeyboard(0, 9600, 30, 0, nullptr), -1);
  EXPECT_THAT(usb_.Calls(), IsEmpty());
}

TEST_F(Keyboard, TimesAtTheirBoundsAreSent) {
  for (const auto& [timeout, command] : {std::pair{1, "\x1B[5;1T"}, {999, "\x1B[5;999T"}}) {
    ExpectKeypad(wire::kKeypadMode0, command);
    usb_.Answer(wire::kKeyed1234);
    ExpectClose();
    EXPECT_EQ(Run(0, timeout), 0);
  }
}

TEST_F(Keyboard, SilenceIsMinus11AfterTheTimeWithoutAMarginAndEntryIsClosed) {
  ExpectKeypad(wire::kKeypadMode0, "\x1B[5;2T");
  ExpectClose();
  EXPECT_EQ(Run(0, 2), -11);
  EXPECT_EQ(Elapsed(), kDrainSeconds + 3) << "more than 2 whole seconds";
  ExpectOutput("");
}

TEST_F(Keyboard, CancelledEntryIsMinus23AndClosed) {
  ExpectKeypad();
  ExpectClose();
  CancelReading(2);
  EXPECT_EQ(Run(), -23);
  ExpectOutput("");
}

TEST_F(Keyboard, TimeThatCannotBeSentIsReturnedAsItIs) {
  usb_.ExpectCommand(wire::kKeypadTime30);
  FailSending(0);
  EXPECT_EQ(Run(), -10);
}

TEST_F(Keyboard, CommandThatCannotBeSentIsStillFollowedByClosing) {
  ExpectKeypad();
  ExpectClose();
  FailSending(1);
  EXPECT_EQ(Run(), -10);
}

TEST_F(Keyboard, AbsentTerminalIsMinus3) {
  usb_.Unplug();
  EXPECT_EQ(Run(), -3);
}

TEST_F(Keyboard, SerialPortIsNotDrained) {
  FakeTty tty("/dev/ttyS41");
  tty.Respond([](const Bytes& written) -> std::string {
    return written == BytesOf(wire::kKeypadMode1) ? "A1234F" : "";
  });
  EXPECT_EQ(Run(1, 30, 42), 0);
  EXPECT_EQ(Elapsed(), 0) << "a drain would take a second";
  ExpectOutput("1234");
  const std::string all =
      std::string(wire::kKeypadTime30).append(wire::kKeypadMode1).append(wire::kCloseKeypad);
  EXPECT_EQ(Readable(tty.Received()), Readable(BytesOf(all)));
}

}  // namespace
}  // namespace gwq::test
