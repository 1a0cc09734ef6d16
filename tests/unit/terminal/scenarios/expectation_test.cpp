// SPDX-License-Identifier: MIT
// What runs are expected to be: each expectation fulfilled, and failed.
#include "scenarios/expectation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "scenarios/report.h"

namespace gwq::terminal::test {

using namespace device;
using namespace scenarios;
namespace {

using Kind = Event::Kind;
using namespace std::chrono_literals;

Run UsualRun() {
  Run run;
  run.exit_status = 0;
  run.took = 2500ms;
  run.output = "signed: a.png\n";
  run.history = {{Kind::kScreen, "html", "Welcome\nTerms\n", 0, {}},
                 {Kind::kCommand, "YCNEWSTARTSIGN", {}, 0, {}},
                 {Kind::kScreen, "signing", "Please sign\n/tmp/a.pdf\n", 0, {}},
                 {Kind::kStored, "/tmp/hw.png", {}, 42, {}},
                 {Kind::kScreen, "idle", "Welcome\n", 0, {}},
                 {Kind::kCommand, "UPDATE", {}, 0, {}},
                 {Kind::kScreen, "signing", "Please sign\n/tmp/b.pdf\n", 0, {}},
                 {Kind::kPinAsked, {}, {}, 0, {}},
                 {Kind::kPinAsked, {}, {}, 0, {}},
                 {Kind::kPinKeyed, {}, {}, 0, {}},
                 {Kind::kUnplugged, {}, {}, 0, {}}};
  return run;
}

// "expected / seen", or "" when all is well.
std::string Verdict(const std::string& expectation, const Run& run = UsualRun()) {
  const auto failure = Judge(ReadExpectation(Json::parse(expectation)), run);
  return failure ? failure->expected + " / " + failure->seen : "";
}

std::string Problem(const std::string& expectation) {
  try {
    static_cast<void>(ReadExpectation(Json::parse(expectation)));
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "(none)";
}

const std::string kKnownScreens =
    " (known: idle, teller_card, evaluation, information, html, keypad, document, confirm, signing, "
    "hand_sign, checkout)";

TEST(Expectation, OfTheExitStatus) {
  EXPECT_EQ(Verdict(R"({"exit_status": 0})"), "");
  EXPECT_EQ(Verdict(R"({"exit_status": 3})"), "exit status 3 / exit status 0");
}

TEST(Expectation, OfAFailureInGoodOrder) {
  scenarios::Run run;
  for (const int good : {1, 2, 125}) {
    run.exit_status = good;
    EXPECT_EQ(Verdict(R"({"exit_status": "failure"})", run), "") << good;
  }
  for (const int bad : {0, 126, 127, 139}) {
    run.exit_status = bad;
    EXPECT_EQ(Verdict(R"({"exit_status": "failure"})", run),
              "exit status 1 to 125, a failure that the command tells / exit status " + std::to_string(bad));
  }
}

TEST(Expectation, OfWhatIsPrinted) {
  EXPECT_EQ(Verdict(R"({"output_contains": "signed"})"), "");
  EXPECT_EQ(Verdict(R"({"output_contains": "paid"})"), "standard output with \"paid\" / signed: a.png\n");
  EXPECT_EQ(Verdict(R"({"output_lacks": "paid"})"), "");
  EXPECT_EQ(Verdict(R"({"output_lacks": "a.png"})"), "standard output without \"a.png\" / signed: a.png\n");
  EXPECT_EQ(Verdict(R"({"output_contains": "x"})", {}),
            "standard output with \"x\" / nothing on standard output");
}

TEST(Expectation, OfTheTimeItTakes) {
  EXPECT_EQ(Verdict(R"({"at_most_s": 3})"), "");
  EXPECT_EQ(Verdict(R"({"at_most_s": 2})"), "an end within 2 s / it took 2.5 s");
}

TEST(Expectation, OfScreensInOrder) {
  EXPECT_EQ(Verdict(R"({"screens": ["html", "signing", "signing"]})"), "");
  EXPECT_EQ(
      Verdict(
          R"({"screens": [{"kind": "html", "contains": "Terms"}, {"kind": "signing", "contains": "b.pdf"}]})"),
      "");
  EXPECT_EQ(Verdict(R"({"screens": ["signing", "html"]})"),
            "screen signing, then screen html / no screen html behind those before it; screens: html, "
            "signing, signing");
  EXPECT_EQ(Verdict(R"({"screens": ["keypad"]})"),
            "screen keypad / no screen keypad; screens: html, signing, signing");
  EXPECT_EQ(Verdict(R"({"screens": [{"kind": "html", "contains": "Prices"}]})"),
            "screen html with \"Prices\" / no screen html with \"Prices\"; screens: html, signing, signing");
}

TEST(Expectation, OfCommandsInOrder) {
  EXPECT_EQ(Verdict(R"({"commands": ["YCNEWSTARTSIGN", "UPDATE"]})"), "");
  EXPECT_EQ(Verdict(R"({"commands": ["UPDATE", "YCNEWSTARTSIGN"]})"),
            "command UPDATE, then command YCNEWSTARTSIGN / no command YCNEWSTARTSIGN behind those before it; "
            "commands: "
            "YCNEWSTARTSIGN, UPDATE");
}

TEST(Expectation, OfHowOftenAScreenIsShown) {
  for (const char* good : {R"("times": 2)", R"("at_least": 1)", R"("at_least": 2)", R"("at_most": 2)",
                           R"("at_least": 1, "at_most": 3)", R"("contains": "b.pdf", "times": 1)"})
    EXPECT_EQ(Verdict(std::string(R"({"screen": "signing", )") + good + "}"), "") << good;
  EXPECT_EQ(Verdict(R"({"screen": "signing"})"), "");
  EXPECT_EQ(Verdict(R"({"screen": "keypad", "never": true})"), "");
  const std::string seen = " / 2 times; screens: html, signing, signing";
  EXPECT_EQ(Verdict(R"({"screen": "signing", "times": 1})"), "screen signing once" + seen);
  EXPECT_EQ(Verdict(R"({"screen": "signing", "at_least": 3})"), "screen signing at least 3 times" + seen);
  EXPECT_EQ(Verdict(R"({"screen": "signing", "at_most": 1})"), "screen signing at most once" + seen);
  EXPECT_EQ(Verdict(R"({"screen": "signing", "at_least": 3, "at_most": 4})"),
            "screen signing 3 to 4 times" + seen);
  EXPECT_EQ(Verdict(R"({"screen": "signing", "never": true})"), "screen signing never" + seen);
  EXPECT_EQ(Verdict(R"({"screen": "keypad"})", {}), "screen keypad at least once / never; screens: none");
}

TEST(Expectation, OfCommandsAndOtherHappenings) {
  EXPECT_EQ(Verdict(R"({"command": "UPDATE", "times": 1})"), "");
  EXPECT_EQ(Verdict(R"({"command": "UPDATE", "never": true})"),
            "command UPDATE never / once; commands: YCNEWSTARTSIGN, UPDATE");
  EXPECT_EQ(Verdict(R"({"pin_asked": true, "times": 2})"), "");
  EXPECT_EQ(Verdict(R"({"pin_asked": true, "times": 1})"), "a PIN asked for once / 2 times");
  EXPECT_EQ(Verdict(R"({"pin_keyed": true})"), "");
  EXPECT_EQ(Verdict(R"({"pin_keyed": true})", {}), "a PIN keyed at least once / never");
  EXPECT_EQ(Verdict(R"({"unplugged": true})"), "");
  EXPECT_EQ(Verdict(R"({"unplugged": true})", {}), "the terminal unplugged at least once / never");
}

TEST(Expectation, OfStoredFiles) {
  EXPECT_EQ(Verdict(R"({"stored": "/tmp/hw.png", "size": 42})"), "");
  EXPECT_EQ(Verdict(R"({"stored": "hw.png"})"), "");
  EXPECT_EQ(Verdict(R"({"stored": "w.png"})"),
            "file w.png stored at least once / never; stored files: /tmp/hw.png (42 bytes)");
  EXPECT_EQ(Verdict(R"({"stored": "hw.png", "size": 43})"),
            "file hw.png of 43 bytes stored at least once / never; stored files: /tmp/hw.png (42 bytes)");
}

TEST(Expectation, OfTheLastScreen) {
  EXPECT_EQ(Verdict(R"({"last_screen": "signing"})"), "");
  EXPECT_EQ(Verdict(R"({"last_screen": "idle"})"), "screen idle at the end / screen signing");
  EXPECT_EQ(Verdict(R"({"last_screen": "idle"})", {}), "");
}

TEST(Expectation, ThatIsNoGoodSaysWhy) {
  EXPECT_EQ(Problem(R"({"scren": "html"})").substr(0, 27), R"(unknown expectation "scren")");
  EXPECT_EQ(Problem("{}").substr(0, 12), "says nothing");
  EXPECT_EQ(Problem("7"), "is not an object");
  EXPECT_EQ(Problem(R"({"screen": "html", "command": "UPDATE"})"),
            R"("screen" and "command" are two expectations)");
  EXPECT_EQ(Problem(R"({"screen": "htlm"})"), R"("htlm" is no kind of screen)" + kKnownScreens);
  EXPECT_EQ(Problem(R"({"last_screen": 3})"), R"("3" is no kind of screen)" + kKnownScreens);
  EXPECT_EQ(Problem(R"({"commands": ["UPDTAE"]})"),
            R"("UPDTAE" is no command (docs/scenarios.md lists them))");
  EXPECT_EQ(Problem(R"({"screen": "html", "never": false})"), R"("never" can only be true)");
  EXPECT_EQ(Problem(R"({"screen": "html", "at_least": 3, "at_most": 2})"),
            R"("at_least" is more than "at_most")");
  EXPECT_EQ(Problem(R"({"screen": "html", "times": 3, "never": true})"),
            R"("never", "times" and "at_least" or "at_most" exclude each other)");
  EXPECT_EQ(Problem(R"({"exit_status": "bad"})"), R"("exit_status" must be 0 to 255 or "failure")");
  EXPECT_EQ(Problem(R"({"pin_keyed": 2})"), R"("pin_keyed" can only be true)");
}

TEST(History, ComesBackAsItWasWritten) {
  const Event event{Kind::kScreen, "html", "two\nlines \"quoted\"", 7, Time(12)};
  const std::string line = HistoryLine(event);
  EXPECT_EQ(line.find('\n'), line.size() - 1);
  EXPECT_EQ(HistoryLine({Kind::kCommand, "\xff", {}, 0, {}}).find('\xff'), std::string::npos);
}

TEST(Report, CountsAndEscapes) {
  const std::vector<ScenarioResult> results = {
      {"good", 1200ms, {}, "not shown"}, {"bad", 300ms, {{"a <b>", "c & \"d\"\nmore"}}, "said\nthis\n"}};
  EXPECT_EQ(ResultText(results[0]), "good                             ok     (1.2 s)\n");
  EXPECT_EQ(ResultText(results[1]),
            "bad                              FAILED (0.3 s)\n    expected: a <b>\n    seen:     c & \"d\"\n"
            "              more\n    the command said:\n    | said\n    | this\n");
  EXPECT_EQ(SummaryText(results), "1 passed, 1 failed\n");
  const std::string xml = JunitText(results);
  EXPECT_NE(xml.find("<testsuites tests=\"2\" failures=\"1\" errors=\"0\" skipped=\"0\" time=\"1.500\">"),
            std::string::npos);
  EXPECT_NE(xml.find("message=\"expected: a &lt;b&gt;; seen: c &amp; &quot;d&quot;&#10;more\""),
            std::string::npos);
  EXPECT_EQ(xml.find("said"), std::string::npos);
}

}  // namespace
}  // namespace gwq::terminal::test
