// SPDX-License-Identifier: MIT
// What scripts say about screens, and the agreeable customer's way with them.
#include <gtest/gtest.h>

#include "customer/agreeable.h"
#include "customer/screen_script.h"
#include "customer/scripted.h"
#include "unit/terminal/device/rig.h"

namespace gwq::terminal::test {

using namespace device;
using namespace customer;
namespace {

using Kind = ScreenAction::Kind;

ScreenScript Script(const char* steps) {
  return ScreenScript(Json::parse(steps));
}

std::string ErrorOf(const char* steps) {
  try {
    (void)Script(steps);
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "(no error)";
}

Kind NextKind(ScreenScript& script, ScreenKind screen) {
  const auto action = script.Next(screen);
  EXPECT_TRUE(action);
  return action.value_or(ScreenAction{}).kind;
}

TEST(ScreenScript, HoldsEveryAction) {
  ScreenScript script = Script(R"([{"confirm": true}, {"cancel": true, "after_ms": 5}, {"key": 3},
      {"digits": "42"}, {"sign": true}, {"answer": "\u0002\u00aa\u0003~"}, {"walk_away": true}])");
  const auto next = [&script] { return script.Next(ScreenKind::kHtml).value_or(ScreenAction{}); };
  const ScreenAction confirm = next();
  EXPECT_EQ(confirm.kind, Kind::kConfirm);
  EXPECT_EQ(confirm.after, 200ms);
  const ScreenAction cancel = next();
  EXPECT_EQ(cancel.kind, Kind::kCancel);
  EXPECT_EQ(cancel.after, 5ms);
  const ScreenAction key = next();
  EXPECT_EQ(key.kind, Kind::kKey);
  EXPECT_EQ(key.text, "3");
  const ScreenAction digits = next();
  EXPECT_EQ(digits.kind, Kind::kDigits);
  EXPECT_EQ(digits.text, "42");
  const ScreenAction sign = next();
  EXPECT_EQ(sign.kind, Kind::kSign);
  EXPECT_EQ(StrokeText(sign.strokes), StrokeText(DefaultSignature()));
  const ScreenAction answer = next();
  EXPECT_EQ(answer.kind, Kind::kAnswer);
  EXPECT_EQ(answer.text, "\x02\xAA\x03~");
  EXPECT_EQ(next().kind, Kind::kWalkAway);
}

TEST(ScreenScript, AnswersMayHoldEveryByte) {
  std::string text;
  std::string bytes;
  for (int byte = 0; byte < 256; ++byte) {
    char escape[8];
    std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(byte));
    text += escape;
    bytes += static_cast<char>(byte);
  }
  ScreenScript script = Script(("[{\"answer\": \"" + text + "\"}]").c_str());
  EXPECT_EQ(script.Next(ScreenKind::kHtml).value_or(ScreenAction{}).text, bytes);
}

TEST(ScreenScript, StrokesEndWithThePenUp) {
  ScreenScript script = Script(R"([{"sign": [[[10, 20], [30, 40]], [[479, 159]]]}])");
  const auto action = script.Next(ScreenKind::kSigning).value_or(ScreenAction{});
  EXPECT_EQ(StrokeText(action.strokes), "10,20,500,0\n30,40,0,8\n479,159,0,16\n");
}

TEST(ScreenScript, StepsWaitForTheirKindOfScreen) {
  ScreenScript script = Script(R"([{"key": 1, "on": "evaluation"}, {"cancel": true},
      {"confirm": true, "on": "signing"}])");
  EXPECT_EQ(NextKind(script, ScreenKind::kSigning), Kind::kCancel);
  EXPECT_EQ(NextKind(script, ScreenKind::kEvaluation), Kind::kKey);
  EXPECT_EQ(NextKind(script, ScreenKind::kSigning), Kind::kConfirm);
  EXPECT_EQ(NextKind(script, ScreenKind::kSigning), Kind::kConfirm);
  EXPECT_EQ(NextKind(script, ScreenKind::kEvaluation), Kind::kCancel);
}

TEST(ScreenScript, HasNothingToSayAboutOtherScreens) {
  ScreenScript script = Script(R"([{"key": 1, "on": "evaluation"}])");
  EXPECT_FALSE(script.Next(ScreenKind::kHtml));
  EXPECT_FALSE(ScreenScript().Next(ScreenKind::kHtml));
}

TEST(ScreenScript, KnowsEveryKindByItsName) {
  for (int i = 0; i <= static_cast<int>(ScreenKind::kCheckout); ++i) {
    const auto kind = static_cast<ScreenKind>(i);
    EXPECT_EQ(ScreenKindNamed(NameOf(kind)), kind);
  }
  EXPECT_EQ(NameOf(ScreenKind::kTellerCard), "teller_card");
  EXPECT_EQ(NameOf(ScreenKind::kHandSign), "hand_sign");
  EXPECT_FALSE(ScreenKindNamed("cellar"));
}

TEST(ScreenScript, TellsWhatIsWrong) {
  EXPECT_EQ(ErrorOf("{}"), "\"screens\" must be a list");
  EXPECT_EQ(ErrorOf("[]"), "there must be at least one step");
  EXPECT_EQ(ErrorOf("[7]"), "screen step 1: is not an object");
  EXPECT_EQ(ErrorOf("[{}]"), "screen step 1: says nothing to do");
  EXPECT_EQ(ErrorOf(R"([{"confirm": true}, {"confirm": true, "key": 1}])"),
            "screen step 2: \"confirm\" and \"key\" are two steps");
  EXPECT_EQ(ErrorOf(R"([{"confirm": false}])"), "screen step 1: \"confirm\" can only be true");
  EXPECT_EQ(ErrorOf(R"([{"cancel": 1}])"), "screen step 1: \"cancel\" can only be true");
  EXPECT_EQ(ErrorOf(R"([{"walk_away": true, "after_ms": 5}])"),
            "screen step 1: \"after_ms\" has no meaning beside \"walk_away\"");
  EXPECT_EQ(ErrorOf(R"([{"confirm": true, "on": "cellar"}])"),
            "screen step 1: \"on\" names no kind of screen (known: idle, teller_card, evaluation, "
            "information, html, keypad, document, confirm, signing, hand_sign, checkout)");
  EXPECT_EQ(ErrorOf(R"([{"press": 1}])"),
            "screen step 1: unknown member \"press\" (known: confirm, cancel, key, digits, sign, answer, "
            "walk_away, on, after_ms)");
}

TEST(ScreenScript, ValuesMustBeInRange) {
  for (const char* key : {"4", "-1", "\"1\"", "1.5", "true"})
    EXPECT_EQ(ErrorOf(("[{\"key\": " + std::string(key) + "}]").c_str()),
              "screen step 1: \"key\" must be 0, 1, 2 or 3");
  for (const char* digits : {"4", "\"4a\"", "\"123456789012345678901234567890123\""})
    EXPECT_EQ(ErrorOf(("[{\"digits\": " + std::string(digits) + "}]").c_str()),
              "screen step 1: \"digits\" must be a text of at most 32 digits");
  for (const char* strokes : {"false", "1", "[]", "[[]]", "[7]"})
    EXPECT_EQ(ErrorOf(("[{\"sign\": " + std::string(strokes) + "}]").c_str()),
              "screen step 1: \"sign\" must be true or a list of strokes");
  for (const char* point : {"7", "[1]", "[1, 2, 3]", "[480, 0]", "[0, 160]", "[-1, 0]", "[\"1\", 0]"})
    EXPECT_EQ(ErrorOf(("[{\"sign\": [[" + std::string(point) + "]]}]").c_str()),
              "screen step 1: a point of \"sign\" must be [x, y] inside 480 by 160");
  EXPECT_EQ(ErrorOf(R"([{"answer": 7}])"), "screen step 1: \"answer\" must be a text");
  EXPECT_EQ(ErrorOf(R"([{"answer": "\u0100"}])"),
            "screen step 1: \"answer\" can only hold characters up to \\u00ff");
  EXPECT_EQ(ErrorOf(("[{\"answer\": \"" + std::string(4097, 'a') + "\"}]").c_str()),
            "screen step 1: \"answer\" is too long");
}

TEST(Scripted, ScreensWithoutAStepAreAgreedTo) {
  ScriptedCustomer customer({}, {}, Script(R"([{"key": 1, "on": "evaluation"}])"));
  Screen screen;
  screen.kind = ScreenKind::kEvaluation;
  EXPECT_EQ(customer.Respond(screen).kind, Kind::kKey);
  screen.kind = ScreenKind::kHtml;
  EXPECT_EQ(customer.Respond(screen).kind, Kind::kConfirm);
  EXPECT_EQ(customer.KeyPin({4, 12, 30s}).digits, "123456");
}

TEST(Agreeable, AnswersAScreenAsSoonAsAPin) {
  AgreeableCustomer customer("1", 70ms);
  EXPECT_EQ(customer.Respond(Screen{}).after, 70ms);
}

}  // namespace
}  // namespace gwq::terminal::test
