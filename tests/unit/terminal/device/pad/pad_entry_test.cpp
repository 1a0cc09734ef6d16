// SPDX-License-Identifier: MIT
// Entries that the PIN pad answers later: PINs under its working key, and numbers.
#include <gtest/gtest.h>

#include "unit/terminal/device/pad/pad_rig.h"

namespace gwq::terminal::test {

using namespace device;
namespace {

constexpr std::string_view kCancelled = "\x01\x03";
constexpr std::string_view kTimedOut = "\x02\x03";
constexpr std::string_view kRefused = "\x03";

// The clear PIN block under the triple-DES key, as hex.
std::string AskBlock(Rig& rig, std::string pin, const ByteList& body = {0x30, 0x05, 30}) {
  rig.customer.actions.push_back(Keys(std::move(pin)));
  rig.Send(PadFrame(body));
  EXPECT_EQ(rig.Answer(), "(none)") << "an answer before the customer did anything";
  rig.Wait(100ms);
  const PadAnswer answer = ReadPadAnswer(rig.Answer());
  EXPECT_EQ(answer.status, 0);
  return ToHex(PlainDes(FromHex(kDesHex), answer.data, false));
}

void Set(Rig& rig, int code, int value) {
  ASSERT_EQ(AskPad(rig, Body({0x30, code, value})).status, 0);
}

std::string NumberCommand(std::string_view fields, std::string_view gbk) {
  return std::string("\033[5GETINNO\x02")
      .append(fields)
      .append("|")
      .append(Split(ToBytes(gbk)))
      .append("\x03");
}

TEST(PadEntry, GivesThePinUnderTripleDesAndSm4) {
  Rig rig;
  LoadPadKey(rig, kTripleDesType, kDesHex);
  EXPECT_EQ(AskBlock(rig, "1234"), "041234FFFFFFFFFF");
  LoadPadKey(rig, kSm4Type, kSm4Hex);
  rig.customer.actions = {Keys("987654")};
  rig.Send(PadFrame({0x30, 0x05, 30}));
  rig.Wait(100ms);
  const PadAnswer answer = ReadPadAnswer(rig.Answer());
  ASSERT_EQ(answer.data.size(), 16U);
  EXPECT_EQ(ToHex(Sm4(kSm4Hex, answer.data, false)), "06987654FFFFFFFF0808080808080808");
}

TEST(PadEntry, PutsTheAccountIntoTheBlockInMode1Only) {
  Rig rig;
  LoadPadKey(rig, kTripleDesType, kDesHex);
  Set(rig, 0x32, 1);
  EXPECT_EQ(AskBlock(rig, "1234"), "041234FFFFFFFFFF") << "no account yet";
  ASSERT_EQ(AskPad(rig, Body({0x30, 0x16, 12}, "432198765432")).status, 0);
  EXPECT_EQ(AskBlock(rig, "1234"), "041277DE6789ABCD");
  ASSERT_EQ(AskPad(rig, Body({0x30, 0x16, 16}, "4321987654321098")).status, 0);
  EXPECT_EQ(AskBlock(rig, "1234"), "04122D789ABCDEF6") << "with its check digit";
  Set(rig, 0x32, 5);
  EXPECT_EQ(AskBlock(rig, "1234"), "041234FFFFFFFFFF");
  Set(rig, 0x32, 1);
  ASSERT_EQ(AskPad(rig, Body({0x30, 0x16, 12})).status, 0);
  EXPECT_EQ(AskBlock(rig, "1234"), "041234FFFFFFFFFF") << "an account that was cut away";
}

TEST(PadEntry, FillsTheBlockAsSet) {
  Rig rig;
  LoadPadKey(rig, kTripleDesType, kDesHex);
  Set(rig, 0x11, 0);
  EXPECT_EQ(AskBlock(rig, "1234"), "0412340000000000");
}

TEST(PadEntry, AsksTheCustomerAsSet) {
  Rig rig;
  LoadPadKey(rig, kTripleDesType, kDesHex);
  AskBlock(rig, "1234");
  Set(rig, 0x12, 8);
  Set(rig, 0x13, 1);
  AskBlock(rig, "123456789", {0x30, 0x05, 60});
  Set(rig, 0x32, 6);
  Set(rig, 0x12, 6);
  AskBlock(rig, "123456");
  ASSERT_EQ(rig.customer.requests.size(), 3U);
  EXPECT_EQ(rig.customer.requests[0].min_digits, 4);
  EXPECT_EQ(rig.customer.requests[0].max_digits, 6);
  EXPECT_FALSE(rig.customer.requests[0].ends_when_full);
  EXPECT_EQ(rig.customer.requests[1].max_digits, 8);
  EXPECT_EQ(rig.customer.requests[1].time_left, 60s);
  EXPECT_TRUE(rig.customer.requests[1].ends_when_full);
  EXPECT_EQ(rig.customer.requests[2].min_digits, 6);
}

TEST(PadEntry, ShowsTheTextOfTheHost) {
  Rig rig;
  LoadPadKey(rig, kTripleDesType, kDesHex);
  AskBlock(rig, "1234", Body({0x40, 0x30, 30}, "\xC7\xEB\xCA\xE4\xC8\xEB"));
  AskBlock(rig, "1234", Body({0x40, 0x30, 30}, "\xE8\xAF\xB7\xE8\xBE\x93\xE5\x85\xA5"));
  AskBlock(rig, "1234", Body({0x40, 0x30, 30}));
  AskBlock(rig, "1234", Body({0x40, 0x30, 30}, "\xFF\xFF"));
  ASSERT_EQ(rig.customer.requests.size(), 4U);
  EXPECT_EQ(rig.customer.requests[0].shown, "请输入") << "from GBK";
  EXPECT_EQ(rig.customer.requests[1].shown, "请输入") << "from UTF-8";
  EXPECT_EQ(rig.customer.requests[2].shown, "");
  EXPECT_EQ(rig.customer.requests[3].shown, "") << "no text at all";
}

TEST(PadEntry, EndsWithoutABlockInACodeOfItsOwn) {
  for (const ByteList& body : {Body({0x30, 0x05, 7}), Body({0x40, 0x30, 7}, "text")}) {
    Rig rig;
    EXPECT_EQ(rig.Ask(PadFrame(body)), kRefused) << "no working key";
    EXPECT_TRUE(rig.customer.requests.empty());
    LoadPadKey(rig, kTripleDesType, kDesHex);
    rig.customer.actions = {Cancels(), WalksAway(), Keys("123")};
    rig.Send(PadFrame(body));
    rig.Wait(100ms);
    EXPECT_EQ(rig.Answer(), kCancelled);
    for (int i = 0; i < 2; ++i) {
      rig.Send(PadFrame(body));
      rig.Wait(6999ms);
      EXPECT_EQ(rig.Answer(), "(none)");
      rig.Wait(1ms);
      EXPECT_EQ(rig.Answer(), kTimedOut);
      EXPECT_EQ(rig.device().NextDeadline(), std::nullopt);
    }
    Set(rig, 0x10, kSm4Type);
    EXPECT_EQ(rig.Ask(PadFrame(body)), kRefused) << "no working key of that type";
  }
}

TEST(PadEntry, WithoutSecondsIsOverAtOnce) {
  Rig rig;
  LoadPadKey(rig, kTripleDesType, kDesHex);
  rig.customer.actions = {Keys("1234", 0ms)};
  EXPECT_EQ(rig.Ask(PadFrame({0x30, 0x05})), kTimedOut);
}

TEST(PadEntry, IsEndedByTheNextFrameOrEntryWithoutAnAnswer) {
  Rig rig;
  LoadPadKey(rig, kTripleDesType, kDesHex);
  rig.customer.actions = {Keys("1234"), Keys("1234"), Keys("4321"), Keys("1234")};
  rig.Send(PadFrame({0x30, 0x05, 30}));
  EXPECT_EQ(AskPad(rig, {0x30, 0x35}).data, ByteList{6});
  EXPECT_EQ(rig.device().NextDeadline(), std::nullopt);
  rig.Send(PadFrame({0x30, 0x05, 30}));
  rig.Send("\x82");
  rig.Wait(60s);
  EXPECT_EQ(rig.Answer(), "4321\r");
  EXPECT_EQ(rig.Answer(), "(none)");
  rig.Send(PadFrame({0x30, 0x05, 30}));
  EXPECT_EQ(rig.Ask("\x83"), "(none)");
  rig.Wait(60s);
  EXPECT_EQ(rig.Answer(), "(none)");
}

TEST(PadEntry, GoesOnWhileTextCommandsAreAnswered) {
  Rig rig;
  LoadPadKey(rig, kTripleDesType, kDesHex);
  rig.customer.actions = {Keys("1234")};
  rig.Send(PadFrame({0x30, 0x05, 30}));
  EXPECT_EQ(rig.Ask(wire::kGetVersion), "\x02V1.0.0|20240615\x03");
  rig.Wait(100ms);
  EXPECT_EQ(ReadPadAnswer(rig.Answer()).status, 0);
}

TEST(PadEntry, IsTracedWithoutThePin) {
  Rig rig;
  LoadPadKey(rig, kTripleDesType, kDesHex);
  const std::size_t before = rig.Trace().size();
  AskBlock(rig, "123456", Body({0x40, 0x30, 30}, "hello"));
  EXPECT_EQ(rig.Trace().substr(before),
            "host: PIN-pad frame (24 bytes)\n"
            "host: PIN entry, mode 5, 30 s, with a text of 5 bytes\n"
            "customer: keys a PIN (6 digits, masked)\n"
            "terminal: answer: PIN-pad status 0000\n");
}

TEST(NumberEntry, AnswersTheDigitsBetweenTheirMarks) {
  for (const Line line : {Line::kUsb, Line::kSerial}) {
    Rig rig(line);
    rig.customer.actions = {Keys("310115", 500ms)};
    rig.Send(NumberCommand("30|18|1", "\xC7\xEB\xCA\xE4\xC8\xEB"));
    rig.Wait(499ms);
    rig.Wait(1ms);
    EXPECT_EQ(rig.Answer(), "B310115F");
    ASSERT_EQ(rig.customer.numbers.size(), 1U);
    EXPECT_EQ(rig.customer.numbers[0].prompt, "请输入");
    EXPECT_EQ(rig.customer.numbers[0].max_digits, 18);
    EXPECT_EQ(rig.customer.numbers[0].display, NumberRequest::Display::kStars);
    EXPECT_EQ(rig.customer.numbers[0].time_left, 30s);
  }
}

TEST(NumberEntry, TakesNoMoreDigitsThanAsked) {
  Rig rig;
  rig.customer.actions = {Keys("123456789"), Keys("1234567890123456789012345")};
  rig.Send(NumberCommand("30|4|0", "?"));
  rig.Wait(100ms);
  EXPECT_EQ(rig.Answer(), "B1234F");
  rig.Send(NumberCommand("30|0|0", "?"));
  rig.Wait(100ms);
  EXPECT_EQ(rig.Answer(), "B12345678901234567890F");
}

TEST(NumberEntry, TellsHowItEndedOtherwise) {
  Rig rig;
  rig.customer.actions = {Cancels(), WalksAway(), Keys("")};
  rig.Send(NumberCommand("9|0|0", "?"));
  rig.Wait(100ms);
  EXPECT_EQ(rig.Answer(), "CF");
  for (int i = 0; i < 2; ++i) {
    rig.Send(NumberCommand("9|0|0", "?"));
    rig.Wait(9s);
    EXPECT_EQ(rig.Answer(), "TF");
  }
}

TEST(NumberEntry, OutOfRangeIsRefused) {
  Rig rig;
  for (const char* fields : {"0|0|0", "1000|0|0", "30|21|0", "30|0|3"}) {
    EXPECT_EQ(rig.Ask(NumberCommand(fields, "?")), "RF") << fields;
  }
  EXPECT_EQ(rig.Ask(NumberCommand("30|0|0", "\xFF\xFF")), "RF") << "no text";
  EXPECT_EQ(rig.Ask("\033[5GETINNO\00230|0|0|123\x03"), "RF") << "half a byte";
  EXPECT_EQ(rig.Ask("\033[5GETINNO\00230|0\x03"), wire::kRefused);
  EXPECT_TRUE(rig.customer.numbers.empty());
}

TEST(NumberEntry, IsTracedWithoutTheNumber) {
  Rig rig;
  rig.customer.actions = {Keys("310115"), WalksAway()};
  rig.Send(NumberCommand("30|0|0", "?"));
  rig.Wait(100ms);
  rig.Send(NumberCommand("30|0|0", "?"));
  rig.Send("\x83");
  EXPECT_EQ(rig.Trace(),
            "host: GETINNO, 30 s\n"
            "customer: keys a number (6 digits, masked)\n"
            "terminal: answer: number (6 digits, masked)\n"
            "host: GETINNO, 30 s\n"
            "host: end of PIN entry\n"
            "note: number entry ended by the host\n");
}

}  // namespace
}  // namespace gwq::terminal::test
