// SPDX-License-Identifier: MIT
// What a person does at the terminal while it waits, instead of a script.
#include <gtest/gtest.h>

#include "customer/live.h"
#include "unit/terminal/device/screens/screen_rig.h"

namespace gwq::terminal::test {

using namespace device;
using namespace customer;
namespace {

using Kind = ScreenAction::Kind;
using Key = PadKey::Kind;

class LiveRig {
 public:
  explicit LiveRig(Settings settings = {})
      : device_(
            Line::kUsb, customer_, std::move(settings),
            [this](const TraceEvent& event) { trace += TextOf(event) + "\n"; }, {&store, {}}, &painter_) {}

  void Send(std::string_view command) {
    const std::string reports = PaddedReports(command);
    device_.Receive(ToBytes(reports), now);
  }
  void Wait(Time time) { device_.Advance(now += time); }
  void Act(Kind kind, std::string text = {}) { device_.Act(Does(kind, std::move(text)), now); }
  void Type(std::string_view digits) {
    for (const char digit : digits) device_.Press({Key::kDigit, digit}, now);
  }
  void Press(Key kind) { device_.Press({kind}, now); }
  std::string Answer() {
    const auto answer = device_.TakeAnswer();
    return answer ? ToText(*answer) : "(none)";
  }
  Device& device() { return device_; }

  MemoryFiles store;
  std::string trace;
  Time now{0};

 private:
  LiveCustomer customer_;
  TellingPainter painter_;
  Device device_;
};

TEST(LiveCustomer, AnswersAScreenWheneverTheyAct) {
  LiveRig rig;
  rig.Send(wire::kStartRating);
  rig.Wait(17s);
  EXPECT_EQ(rig.Answer(), "(none)");
  rig.Act(Kind::kKey, "2");
  EXPECT_EQ(rig.Answer(), "B2F");
  EXPECT_EQ(rig.device().CurrentScreen().kind, ScreenKind::kIdle);
}

TEST(LiveCustomer, IsTooLateOnceTheScreenIsGone) {
  LiveRig rig;
  rig.Send(wire::kStartRating);
  rig.now += 30s;
  rig.Act(Kind::kKey, "3");
  EXPECT_EQ(rig.Answer(), "B0F") << "the time-out comes first";
  rig.Act(Kind::kKey, "3");
  EXPECT_EQ(rig.Answer(), "(none)");
}

TEST(LiveCustomer, CannotAnswerWhatTheScreenDoesNotOffer) {
  LiveRig rig;
  rig.Send(wire::kStartRating);
  rig.Act(Kind::kKey, "7");
  rig.Act(Kind::kDigits, "42");
  rig.Act(Kind::kSign);
  EXPECT_EQ(rig.Answer(), "(none)");
  rig.Act(Kind::kConfirm);
  EXPECT_EQ(rig.Answer(), "B3F");
}

TEST(LiveCustomer, WhoWalksAwayLeavesTheScreenToItsTimeOut) {
  LiveRig rig;
  rig.Send(wire::kStartRating);
  rig.Act(Kind::kWalkAway);
  EXPECT_NE(rig.trace.find("walks away"), std::string::npos);
  EXPECT_EQ(rig.Answer(), "(none)");
  rig.Wait(30s);
  EXPECT_EQ(rig.Answer(), "B0F");
}

TEST(LiveCustomer, ActsBeforeAScriptDoes) {
  Rig rig;
  rig.Send(wire::kStartRating);
  rig.device().Act(Does(Kind::kKey, "1"), rig.now);
  EXPECT_EQ(rig.Answer(), "B1F");
  rig.Wait(30s);
  EXPECT_EQ(rig.Answer(), "(none)");
}

TEST(LiveCustomer, KeysAPinDigitByDigit) {
  LiveRig rig;
  EXPECT_FALSE(rig.device().CurrentEntry());
  rig.Send("\x82");
  rig.Wait(3s);
  rig.Type("12x9");
  rig.Press(Key::kBack);
  rig.Type("3");
  ASSERT_TRUE(rig.device().CurrentEntry());
  EXPECT_EQ(rig.device().CurrentEntry()->keyed, 3U);
  EXPECT_EQ(rig.device().CurrentEntry()->ends_at, 30s);
  EXPECT_EQ(rig.device().CurrentEntry()->shown, "") << "of a PIN only the length is told";
  rig.Press(Key::kEnter);
  EXPECT_EQ(rig.Answer(), "(none)") << "three digits are too few";
  rig.Type("4");
  rig.Press(Key::kEnter);
  EXPECT_EQ(rig.Answer(), "1234\r");
  EXPECT_FALSE(rig.device().CurrentEntry());
  EXPECT_EQ(rig.trace.find("1234"), std::string::npos);
}

TEST(LiveCustomer, CannotKeyMoreDigitsThanTheEntryTakes) {
  LiveRig rig;
  rig.Send("\033[1;5L");
  rig.Send("\x82");
  rig.Type("1234567");
  EXPECT_EQ(rig.device().CurrentEntry()->keyed, 5U);
  rig.Press(Key::kClear);
  EXPECT_EQ(rig.device().CurrentEntry()->keyed, 0U);
  rig.Type("98765");
  rig.Press(Key::kEnter);
  EXPECT_EQ(rig.Answer(), "98765\r");
}

TEST(LiveCustomer, SeesANumberInClearOnlyIfTheHostShowsIt) {
  for (const int display : {0, 1, 2}) {
    LiveRig rig;
    rig.Send(
        "\033[5GETINNO\x02"
        "30|6|" +
        std::to_string(display) + "|" + SplitText("Number") + "\x03");
    rig.Type("3101");
    ASSERT_TRUE(rig.device().CurrentEntry());
    EXPECT_EQ(rig.device().CurrentEntry()->shown, display == 0 ? "3101" : "") << display;
    rig.Press(Key::kEnter);
    EXPECT_EQ(rig.Answer(), "B3101F");
  }
}

TEST(LiveCustomer, CancelsANumber) {
  LiveRig rig;
  rig.Send(
      "\033[5GETINNO\x02"
      "30|6|0|" +
      SplitText("Number") + "\x03");
  rig.Type("31");
  rig.Press(Key::kCancel);
  EXPECT_EQ(rig.Answer(), "CF");
}

TEST(LiveCustomer, PressesBeforeAScriptDoes) {
  Rig rig;
  rig.customer.actions = {Keys("9999", 10s)};
  rig.Send("\x82");
  EXPECT_EQ(rig.device().CurrentEntry()->keyed, 0U);
  for (const char digit : std::string_view("4321")) rig.device().Press({Key::kDigit, digit}, rig.now);
  rig.Wait(11s);
  EXPECT_EQ(rig.Answer(), "(none)");
  rig.device().Press({Key::kEnter}, rig.now);
  EXPECT_EQ(rig.Answer(), "4321\r");
}

TEST(LiveCustomer, PressesInVainWhenNothingIsAsked) {
  LiveRig rig;
  rig.Type("1234");
  rig.Press(Key::kEnter);
  rig.Act(Kind::kConfirm);
  EXPECT_EQ(rig.Answer(), "(none)");
}

TEST(LiveCustomer, EveryEntryHasANumberOfItsOwn) {
  LiveRig rig;
  rig.Send("\x82");
  const auto first = rig.device().CurrentEntry()->number;
  rig.Type("12");
  rig.Send("\x81");
  EXPECT_NE(rig.device().CurrentEntry()->number, first);
  EXPECT_EQ(rig.device().CurrentEntry()->keyed, 0U);
}

TEST(LiveCustomer, TheLastDigitEndsAnEntryThatIsFull) {
  LiveRig rig;
  rig.Send(MasterKeyCommand(3, kFactoryHex, kMasterHex));
  rig.Send(WorkingKeyCommand(3, 7, ToHex(PlainDes(FromHex(kMasterHex), FromHex(kMasterHex), true))));
  rig.Send(ActivateCommand(3, 7));
  for (int i = 0; i < 3; ++i) ASSERT_EQ(rig.Answer(), wire::kKeyAccepted);
  rig.Send("\033[1;6L");
  rig.Send("\033F02\r\n");
  rig.Type("12345");
  EXPECT_EQ(rig.Answer(), "(none)");
  rig.Type("6");
  EXPECT_EQ(rig.Answer().substr(0, 1), "\x02");
  EXPECT_FALSE(rig.device().CurrentEntry());
}

}  // namespace
}  // namespace gwq::terminal::test
