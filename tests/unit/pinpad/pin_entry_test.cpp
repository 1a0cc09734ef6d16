// SPDX-License-Identifier: MIT
// The customer's PIN as a PIN block, without the settings in front of it, and a number in clear.
#include <climits>
#include <functional>

#include <gwq/pinpad/entry.h>
#include "support/fake_tty.h"
#include "support/iconv_text.h"
#include "unit/pinpad/pinpad_rig.h"

namespace gwq::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kBaud = 9600;
const Bytes kBlock = {0x12, 0x34, 0x00, 0x78, 0x9A, 0xBC, 0xDE, 0xF0};

class PinEntry : public PinPadRig {
 protected:
  int GetPin(int timeout = 30) { return PN_GetPin(0, nullptr, kBaud, timeout, &length_, block_.text()); }
  int GetPinShowing(char* text, int timeout = 30) {
    return GetPinblockShowString(0, nullptr, kBaud, block_.data(), &length_, timeout, text);
  }

  GuardedBuffer block_{1021, kFill};
  int length_ = kUntouched;
};

TEST_F(PinEntry, BlockIsCopiedWithATerminatorAndItsLength) {
  Accepted(wire::kEnterPin30, kBlock);
  EXPECT_EQ(GetPin(), 0);
  ExpectBytes(block_, kBlock);
  EXPECT_EQ(length_, 8);
}

TEST_F(PinEntry, BlockKeyedUnderAShownTextIsCopiedLikewise) {
  Accepted(wire::kEnterPinShowing, kBlock);
  EXPECT_EQ(GetPinShowing(In("Key your PIN")), 0);
  ExpectBytes(block_, kBlock);
  EXPECT_EQ(length_, 8);
}

TEST_F(PinEntry, EmptyBlockIsABlockOfLength0) {
  Accepted(wire::kEnterPin30);
  EXPECT_EQ(GetPin(), 0);
  ExpectText(block_, "");
  EXPECT_EQ(length_, 0);
}

TEST_F(PinEntry, LongestBlockStaysInItsRoom) {
  Accepted(wire::kEnterPin30, Bytes(1017, 0xB1));
  EXPECT_EQ(GetPin(), 0);
  ExpectBytes(block_, Bytes(1017, 0xB1));
  EXPECT_EQ(length_, 1017);
}

TEST_F(PinEntry, DeclaredLengthBeyondTheAnswerGivesWhatArrived) {
  // Declares 65535 bytes and brings "AB" and the check.
  Exchange(wire::kEnterPin30, BytesOf("\x02"
                                      "????"
                                      "0000"
                                      "4142"
                                      "03"
                                      "\x03"));
  EXPECT_EQ(GetPin(), 0);
  ExpectText(block_, "AB\x03");
  EXPECT_EQ(length_, 3);
}

TEST_F(PinEntry, DeclaredLengthBelowTheStatusGivesNothing) {
  Exchange(wire::kEnterPin30, BytesOf("\x02"
                                      "0001"
                                      "0000"
                                      "4142"
                                      "03"
                                      "\x03"));
  EXPECT_EQ(GetPin(), 0);
  ExpectText(block_, "");
  EXPECT_EQ(length_, 0);
}

struct Time {
  int seconds;
  std::string body;
  std::string body_showing;
  int waited_s;
};

std::string NameOf(const Time& each) {
  return std::to_string(each.seconds);
}

class PinEntryTime : public PinEntry, public testing::WithParamInterface<Time> {};

INSTANTIATE_TEST_SUITE_P(Seconds, PinEntryTime,
                         testing::Values(Time{1, "\x30\x05\x01", "\x40\x30\x01T", 3},
                                         Time{255, "\x30\x05\xFF", "\x40\x30\xFFT", 257},
                                         Time{0, "\x30\x05", "\x40\x30", 2},
                                         Time{256, "\x30\x05", "\x40\x30", 258},
                                         Time{257, "\x30\x05\x01", "\x40\x30\x01T", 259}),
                         kByName);

TEST_P(PinEntryTime, IsSentAsItsLowByteAndWaitedForWith2SecondsMore) {
  Fails(GetParam().body, Failure::kSilent);
  EXPECT_EQ(GetPin(GetParam().seconds), -11);
  EXPECT_EQ(Elapsed(), 1 + GetParam().waited_s + 1) << "the drain, and more than so many seconds";
}

TEST_P(PinEntryTime, OfZeroEndsTheBodyBeforeTheShownText) {
  Fails(GetParam().body_showing, Failure::kSilent);
  EXPECT_EQ(GetPinShowing(In("T"), GetParam().seconds), -11);
  EXPECT_EQ(Elapsed(), 1 + GetParam().waited_s + 1);
}

TEST_F(PinEntry, ExtremeTimesDoNotOverflow) {
  for (const int seconds : {INT_MAX, -1}) {
    Accepted("\x30\x05\xFF", kBlock);
    EXPECT_EQ(GetPin(seconds), 0);
  }
  Accepted("\x30\x05", kBlock);
  EXPECT_EQ(GetPin(INT_MIN), 0);
}

TEST_F(PinEntry, NoTextIsShownForNullOrAnEmptyOne) {
  Accepted(wire::kEnterPinShowingNothing, kBlock);
  EXPECT_EQ(GetPinShowing(nullptr), 0);
  Accepted(wire::kEnterPinShowingNothing, kBlock);
  EXPECT_EQ(GetPinShowing(In("")), 0);
}

TEST_F(PinEntry, ShownTextIsSentAsItIs) {
  const std::string text = InGbk("请输入密码\x03%s");
  Accepted(std::string(wire::kEnterPinShowingNothing) + text, kBlock);
  EXPECT_EQ(GetPinShowing(In(text)), 0);
}

TEST_F(PinEntry, ShownTextIsCutWhereTheBodyEnds) {
  const std::string body = std::string(wire::kEnterPinShowingNothing) + std::string(40956, 't');
  Accepted(body, kBlock);
  EXPECT_EQ(GetPinShowing(In(std::string(40956, 't'))), 0);
  Accepted(body, kBlock);
  EXPECT_EQ(GetPinShowing(In(std::string(40957, 't'))), 0);
  Accepted(body, kBlock);
  EXPECT_EQ(GetPinShowing(In(std::string(100'000, 't'))), 0);
}

TEST_F(PinEntry, NullOutputsAreRefusedBeforeAnythingIsSent) {
  EXPECT_EQ(PN_GetPin(0, nullptr, kBaud, 30, nullptr, block_.text()), -1);
  EXPECT_EQ(PN_GetPin(0, nullptr, kBaud, 30, &length_, nullptr), -1);
  EXPECT_EQ(GetPinblockShowString(0, nullptr, kBaud, nullptr, &length_, 30, nullptr), -1);
  EXPECT_EQ(GetPinblockShowString(0, nullptr, kBaud, block_.data(), nullptr, 30, nullptr), -1);
  EXPECT_THAT(usb_.Calls(), IsEmpty());
}

struct FirstByte {
  const char* name;
  std::string answer;
  int result;
};

class PinEntryRefusal : public PinEntry, public testing::WithParamInterface<FirstByte> {};

TEST_P(PinEntryRefusal, IsToldByTheAnswersFirstByte) {
  Exchange(wire::kEnterPin30, BytesOf(GetParam().answer));
  EXPECT_EQ(GetPin(), GetParam().result);
  Exchange(wire::kEnterPinShowing, BytesOf(GetParam().answer));
  EXPECT_EQ(GetPinShowing(In("Key your PIN")), GetParam().result);
  EXPECT_TRUE(block_.AllAre(kFill));
  EXPECT_EQ(length_, kUntouched);
}

INSTANTIATE_TEST_SUITE_P(
    Answers, PinEntryRefusal,
    testing::Values(FirstByte{"One", "\x01\x03", -18}, FirstByte{"TwoAlone", "\x02\x03", -2},
                    FirstByte{"ThreeAlone", "\x03", -22}, FirstByte{"ThreeTwice", "\x03\x03", -22},
                    FirstByte{"Other", "\x04\x03", -14}, FirstByte{"Letter", "U\x03", -14},
                    FirstByte{"Above127", "\xFF\x03", -14},
                    FirstByte{"FrameWithStatus1", TextOf(wire::PinPadAnswer(1)), -2},
                    FirstByte{"OneBeforeAFrameWithStatus", "\x01" + TextOf(wire::PinPadAnswer(5)), -18},
                    FirstByte{"Nothing", std::string(1024, '\0'), -8}),
    kByName);

TEST_F(PinEntry, OneInFrontOfAGoodFrameIsNoRefusal) {
  Exchange(wire::kEnterPin30, Concat({0x01}, wire::PinPadAnswer(0, kBlock)));
  EXPECT_EQ(GetPin(), 0);
}

TEST_F(PinEntry, RefusalIsLoggedAsTheUnpackingsResult) {
  Exchange(wire::kEnterPin30, BytesOf("\x03"));
  const LogCapture log;
  EXPECT_EQ(GetPin(), -22);
  EXPECT_THAT(OwnMessages(log), ElementsAre("PN_GetPin", "TransProcByEnd iRet=0", "UnPackData iRet=-8"));
}

// ---------------------------------------------------------------- a number

class NumberEntry : public PinPadRig {
 protected:
  int Ask(char* prompt, int timeout = 30, int param1 = 20, int param2 = 2) {
    return PN_GetInNo(0, nullptr, kBaud, timeout, param1, param2, prompt, number_.text());
  }
  int Ask(std::string_view prompt = wire::kAskNumberPrompt) { return Ask(In(prompt)); }
  static std::string Command(std::string_view prompt) {
    return "\x1B[5GETINNO\x02\x33\x30|20|2|" + std::string(prompt) + "\x03";
  }

  GuardedBuffer number_{1024, kFill};
};

TEST_F(NumberEntry, IsAskedForAndCopiedWithoutItsMarks) {
  ExchangeText(wire::kAskNumber, BytesOf(wire::kNumberKeyed));
  const LogCapture log;
  EXPECT_EQ(Ask(), 0);
  ExpectText(number_, "12345");
  EXPECT_EQ(usb_.Count("in"), kDrainReads + 1) << "the F ends it";
  EXPECT_THAT(OwnMessages(log), ElementsAre("PN_GetInNo ", "TransProcOnlyRead iRet=-11", "iRet = 0"));
}

TEST_F(NumberEntry, GoesToUsbWhateverThePort) {
  const FakeTty tty("/dev/ttyS41");
  ExchangeText(wire::kAskNumber, BytesOf(wire::kNumberKeyed));
  EXPECT_EQ(PN_GetInNo(42, In("x"), 0, 30, 20, 2, In(wire::kAskNumberPrompt), number_.text()), 0);
  EXPECT_THAT(tty.Calls(), IsEmpty());
}

struct Bounds {
  int timeout;
  int param1;
  int param2;
};

TEST_F(NumberEntry, ArgumentsAtTheirBoundsAreSent) {
  struct Sent {
    Bounds bounds;
    std::string fields;
  };
  for (const Sent& sent : {Sent{{1, 0, 0}, "1|0|0|41"}, Sent{{999, 20, 2}, "999|20|2|41"}}) {
    ExchangeText("\x1B[5GETINNO\x02" + sent.fields + "\x03", BytesOf("B1F"));
    EXPECT_EQ(Ask(In("A"), sent.bounds.timeout, sent.bounds.param1, sent.bounds.param2), 0);
  }
}

TEST_F(NumberEntry, ArgumentsOutOfRangeAreRefusedBeforeTheDrain) {
  const LogCapture log;
  const Bounds refused[] = {{0, 0, 0},   {1000, 0, 0},     {-1, 0, 0},  {INT_MAX, 0, 0}, {30, -1, 0},
                            {30, 21, 0}, {30, INT_MIN, 0}, {30, 0, -1}, {30, 0, 3},      {30, 0, INT_MAX}};
  for (const Bounds& bounds : refused)
    EXPECT_EQ(Ask(In("A"), bounds.timeout, bounds.param1, bounds.param2), -1);
  EXPECT_EQ(Ask(nullptr), -1);
  EXPECT_EQ(Ask(std::string_view()), -1);
  EXPECT_EQ(PN_GetInNo(0, nullptr, kBaud, 30, 0, 0, In("A"), nullptr), -1);
  EXPECT_EQ(log.Messages(), Lines(std::size(refused) + 3, "PN_GetInNo "));
  EXPECT_THAT(usb_.Calls(), IsEmpty());
  EXPECT_TRUE(number_.AllAre(kFill));
}

TEST_F(NumberEntry, PromptThatIsNotUtf8IsRefusedBehindTheDrain) {
  for (const std::string prompt : {"\xFF", "A\xC3", "\xE8\xAF"}) {
    const LogCapture log;
    EXPECT_EQ(Ask(prompt), -1);
    EXPECT_THAT(OwnMessages(log), ElementsAre("PN_GetInNo ", "TransProcOnlyRead iRet=-11"));
  }
  EXPECT_EQ(usb_.Count("out"), 0);
  EXPECT_TRUE(number_.AllAre(kFill));
}

TEST_F(NumberEntry, PromptOf512BytesIsSentWholeAndALongerOneEmpty) {
  std::string split;
  for (int i = 0; i < 512; ++i) split += "41";
  ExchangeText(Command(split), BytesOf("B1F"));
  EXPECT_EQ(Ask(std::string(512, 'A')), 0);
  for (const std::size_t length : {std::size_t{513}, std::size_t{100'000}}) {
    ExchangeText(Command(""), BytesOf("B1F"));
    EXPECT_EQ(Ask(std::string(length, 'A')), 0);
  }
}

TEST_F(NumberEntry, PromptOf256IdeographsIsSentWhole) {
  std::string prompt;
  std::string split;
  for (int i = 0; i < 256; ++i) {
    prompt += "\u8bf7";
    split += "<7>;";
  }
  ExchangeText(Command(split), BytesOf("B1F"));
  EXPECT_EQ(Ask(prompt), 0);
  ExchangeText(Command(""), BytesOf("B1F"));
  EXPECT_EQ(Ask(prompt + "A"), 0);
}

struct Keyed {
  const char* name;
  std::string answer;
  std::string number;
};

class NumberAnswer : public NumberEntry, public testing::WithParamInterface<Keyed> {};

TEST_P(NumberAnswer, IsCopiedWithoutItsFirstAndLastByte) {
  ExchangeText(wire::kAskNumber, BytesOf(GetParam().answer));
  EXPECT_EQ(Ask(), 0);
  ExpectText(number_, GetParam().number);
}

INSTANTIATE_TEST_SUITE_P(
    Answers, NumberAnswer,
    testing::Values(Keyed{"OneDigit", "B7F", "7"}, Keyed{"None", "BF", ""}, Keyed{"FAlone", "F", ""},
                    Keyed{"Empty", std::string(1024, '\0'), ""}, Keyed{"FInside", "BAFFF", "AFF"},
                    Keyed{"Of1000Digits", "B" + std::string(1000, '7') + "F", std::string(1000, '7')}),
    kByName);

TEST_F(NumberEntry, LongestAnswerIsCopiedUpTo1024Bytes) {
  GuardedBuffer number(4096, kFill);
  ExchangeText(wire::kAskNumber, BytesOf("B" + std::string(2045, '7') + "F"));
  EXPECT_EQ(PN_GetInNo(0, nullptr, kBaud, 30, 20, 2, In(wire::kAskNumberPrompt), number.text()), 0);
  EXPECT_EQ(std::string_view(number.text()).substr(0, 1000), std::string(1000, '7'));
  const Bytes content = number.Content();
  EXPECT_EQ(Bytes(content.begin() + 1024, content.end()), Bytes(3072, kFill));
}

class NumberFailure : public NumberEntry, public testing::WithParamInterface<Failure> {};

INSTANTIATE_TEST_SUITE_P(All, NumberFailure, testing::ValuesIn(kFailures), kByName);

TEST_P(NumberFailure, PassesThrough) {
  FailsText(wire::kAskNumber, GetParam());
  const LogCapture log;
  EXPECT_EQ(Ask(), StatusOf(GetParam()));
  EXPECT_EQ(OwnMessages(log), (Lines{"PN_GetInNo ", "TransProcOnlyRead iRet=-11",
                                     "iRet = " + std::to_string(StatusOf(GetParam()))}));
  EXPECT_EQ(Elapsed(), GetParam() == Failure::kSilent ? 1 + 33 : 1) << "30 and 2 seconds, and more";
  EXPECT_TRUE(number_.AllAre(kFill));
}

TEST_F(NumberEntry, LinkThatCannotBeOpenedEndsItAtTheDrain) {
  usb_.Unplug();
  const LogCapture log;
  EXPECT_EQ(Ask(), -3);
  EXPECT_THAT(OwnMessages(log), ElementsAre("PN_GetInNo ", "TransProcOnlyRead iRet=-3"));
}

}  // namespace
}  // namespace gwq::test
