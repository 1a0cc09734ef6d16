// SPDX-License-Identifier: MIT
// Reading scenarios: every member, and what is said of those that are no good. schema_test.py
// spoils all the others.
#include "scenarios/scenario.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>

#include "customer/agreeable.h"
#include "protocol/commands.h"
#include "scenarios/masking.h"
#include "support/temp_dir.h"

namespace gwq::terminal::test {

using namespace protocol;
using namespace device;
using namespace customer;
using namespace faults;
using namespace scenarios;
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;

// The least there can be, with more members, for a scenario in this directory.
std::string With(const std::string& members) {
  return R"({"name": "n", "description": "d", "expect": [{"exit_status": 0}])" +
         (members.empty() ? std::string() : ", " + members) + "}";
}

Scenario Parse(const std::string& members, const std::string& directory = "/nowhere") {
  return ParseScenario(With(members), directory);
}

std::string ProblemWithLine(const std::string& text) {
  try {
    static_cast<void>(ParseScenario(text, "/nowhere"));
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "(none)";
}

std::string ProblemOfText(const std::string& text) {
  static const std::regex line("^line [0-9]+: ");
  return std::regex_replace(ProblemWithLine(text), line, "");
}

std::string Problem(const std::string& members) {
  return ProblemOfText(With(members));
}

TEST(Scenario, NeedsANameADescriptionAndAnExpectation) {
  EXPECT_EQ(ProblemOfText(R"({"description": "d", "expect": [{"exit_status": 0}]})"), R"(needs "name")");
  EXPECT_EQ(ProblemOfText(R"({"name": "n", "expect": [{"exit_status": 0}]})"), R"(needs "description")");
  EXPECT_EQ(ProblemOfText(R"({"name": "n", "description": "d"})"), R"(needs "expect")");
  EXPECT_THAT(ProblemOfText(R"({"name": "n", "description": "d", "expect": []})"), HasSubstr("not empty"));
  EXPECT_THAT(ProblemOfText("[]"), HasSubstr("must hold an object"));
  EXPECT_THAT(ProblemOfText("{"), HasSubstr("parse error"));
}

TEST(Scenario, IsRefusedWithTheLineOfWhatIsWrong) {
  const auto problem = [](const std::string& members) {
    return ProblemWithLine("{\n\"name\": \"n\", \"description\": \"d\",\n" + members +
                           ",\n\"expect\": [{\"exit_status\": 0}]}");
  };
  EXPECT_EQ(problem("\"terminal\": {\n  \"serial\": 1,\n  \"tgz\": true}"),
            "line 5: terminal: unknown member \"tgz\" (known: usb, serial, tzg, version, build_date, keys, "
            "storage_limit, files)");
  EXPECT_EQ(problem("\"timeout_s\": 1,\n\n\"timeout_s\": 2"), "line 5: duplicate member \"timeout_s\"");
  EXPECT_EQ(problem("\"timeout_s\":\n0"), "line 3: \"timeout_s\" must be a whole number from 1 to 3600");
  EXPECT_EQ(problem("\"customer\": {\"pin_entries\": [\n{\"pin\": \"1234\"},\n{\"pin\": 1}\n]}"),
            "line 5: customer: step 2: \"pin\" must be a text of digits");
  EXPECT_EQ(
      problem("\"faults\": {\n\"refuse\": [\n\"start\",\n\"begin\"]}"),
      "line 6: faults: \"refuse\" knows no step \"begin\" (known: HIDCHANGE, start, data, end, PULLFILE, "
      "GETFILELIST, DELETE, DOWNLOAD, SPECQUERYFILE, QRCODEDELETE, UPDATE)");
  EXPECT_EQ(problem("\"faults\": {\"pull\": {\"empty_packets_first\": [1,\n2,\n300\n]}}"),
            "line 5: faults: pull: \"empty_packets_first\" must be a list of whole numbers from 0 to 255");
  EXPECT_EQ(problem("\"events\": [\n{\"when\": \"screen htm\",\n\"unplug\": true}]"),
            "line 4: events 1: \"htm\" is no kind of screen (known: idle, teller_card, evaluation, "
            "information, html, "
            "keypad, document, confirm, signing, hand_sign, checkout)");
}

TEST(Scenario, IsWithoutMoreAnOrdinaryTerminalWithTheAgreeableCustomer) {
  const Scenario scenario = Parse("");
  EXPECT_EQ(scenario.name, "n");
  EXPECT_EQ(scenario.description, "d");
  EXPECT_FALSE(scenario.time_limit);
  EXPECT_TRUE(scenario.terminal.has_usb);
  EXPECT_FALSE(scenario.terminal.usb_identity);
  EXPECT_FALSE(scenario.terminal.serial_port);
  EXPECT_TRUE(scenario.terminal.settings.tzg);
  EXPECT_EQ(scenario.terminal.settings.version, Settings{}.version);
  EXPECT_TRUE(scenario.customer.is_null());
  EXPECT_FALSE(scenario.hostile);
  EXPECT_THAT(scenario.events, SizeIs(0));
  EXPECT_THAT(scenario.expectations, SizeIs(1));
}

TEST(Scenario, MayHaveComments) {
  EXPECT_EQ(ProblemOfText("// one\n/* two */" + With("\"timeout_s\": 1 // three\n")), "(none)");
}

TEST(Scenario, NamesNoMemberTwice) {
  EXPECT_EQ(Problem(R"("timeout_s": 1, "timeout_s": 2)"), R"(duplicate member "timeout_s")");
  EXPECT_EQ(Problem(R"("events": [{"unplug": true, "after_ms": 1, "after_ms": 2}])"),
            R"(duplicate member "after_ms")");
  EXPECT_EQ(Problem(R"("events": [{"unplug": true, "after_ms": 1}, {"plug": true, "after_ms": 2}])"),
            "(none)");
}

TEST(Scenario, DescribesTheTerminal) {
  const ScriptedTerminal terminal =
      Parse(R"("timeout_s": 7, "terminal": {"usb": "1209:2", "serial": 78, "tzg": false, "version": "V9",
               "build_date": "20300101", "keys": "keys", "storage_limit": 9, "files": [
                 {"path": "/tmp/a", "text": "abc"}, {"path": "/tmp/b", "size": 2}]})")
          .terminal;
  EXPECT_EQ(terminal.usb_identity, "1209:2");
  EXPECT_EQ(terminal.serial_port, 78);
  EXPECT_FALSE(terminal.settings.tzg);
  EXPECT_EQ(terminal.settings.version + terminal.settings.build_date, "V920300101");
  EXPECT_EQ(terminal.keys_dir, "/nowhere/keys");
  ASSERT_THAT(terminal.files, SizeIs(2));
  EXPECT_EQ(terminal.files[0].path + terminal.files[0].content, "/tmp/aabc");
  EXPECT_EQ(terminal.files[1].content, "xx");
  EXPECT_FALSE(Parse(R"("terminal": {"usb": false, "serial": 1})").terminal.has_usb);
}

TEST(Scenario, TakesTheTerminalsFilesFromItsOwnDirectory) {
  const gwq::test::TempDir directory;
  std::ofstream(directory / "picture.png") << "content";
  const std::string members = R"("terminal": {"files": [{"path": "/tmp/a", "from": "picture.png"}]})";
  std::ofstream(directory / "s.json") << With(members);
  const Scenario scenario = LoadScenario((directory / "s.json").string());
  EXPECT_EQ(scenario.terminal.files.at(0).content, "content");
  EXPECT_THAT(Problem(members), HasSubstr("terminal: files 1: /nowhere/picture.png: cannot be read"));
}

TEST(Scenario, TellsWhatIsWrongWithTheTerminal) {
  EXPECT_EQ(Problem(R"("terminal": {"usb": false})"), R"(terminal: has neither "usb" nor "serial")");
  EXPECT_EQ(Problem(R"("terminal": {"usb": "1209"})"),
            R"(terminal: "usb" must be true, false or VENDOR:PRODUCT in hexadecimal)");
  EXPECT_EQ(Problem(R"("terminal": {"tzg": 1})"), R"(terminal: "tzg" must be true or false)");
  EXPECT_EQ(Problem(R"("terminal": {"serial": 0})"),
            R"(terminal: "serial" must be a whole number from 1 to 256)");
  EXPECT_THAT(Problem(R"("terminal": {"version": "a|b"})"), HasSubstr(R"(terminal: "version" must be)"));
  EXPECT_EQ(Problem(R"("terminal": {"files": [{"path": "tmp/a", "size": 1}]})"),
            R"(terminal: files 1: "tmp/a" is no path on the terminal, such as "/tmp/a.pdf")");
  EXPECT_EQ(Problem(R"("terminal": {"files": [{"path": "/tmp/a", "size": 1, "text": "x"}]})"),
            R"(terminal: files 1: needs exactly one of "text", "size", "from")");
  EXPECT_EQ(Problem(R"("terminal": {"colour": 1})"),
            "terminal: unknown member \"colour\" (known: usb, serial, tzg, version, build_date, keys, "
            "storage_limit, "
            "files)");
}

TEST(Scenario, HasTheStorageLimitInOnePlace) {
  EXPECT_EQ(Parse(R"("terminal": {"storage_limit": 5})").faults.storage_limit, 5U);
  EXPECT_EQ(Parse(R"("faults": {"storage_limit": 6, "fail": ["end"]})").faults.storage_limit, 6U);
  EXPECT_EQ(Problem(R"("terminal": {"storage_limit": 5}, "faults": {"storage_limit": 5})"),
            R"("storage_limit" stands in "terminal" and in "faults")");
}

TEST(Scenario, HasCustomerAndFaultsAsInFilesOfTheirOwn) {
  const Scenario scenario =
      Parse(R"("customer": {"pin_entries": [{"pin": "2468"}]}, "faults": {"fail": ["data:2"]})");
  EXPECT_EQ(scenario.customer.at("pin_entries").at(0).at("pin"), "2468");
  EXPECT_THAT(scenario.faults.faults.fail, ElementsAre("data:2"));
  EXPECT_THAT(scenario.secrets, ElementsAre("123456", "2468"));
  EXPECT_THAT(Problem(R"("customer": {"pin_entries": [{"pin": 2468}]})"),
              HasSubstr("customer: step 1: \"pin\""));
  EXPECT_EQ(Problem(R"("customer": [{"pin": "2468"}])"), R"(customer: "customer" must be an object)");
  EXPECT_THAT(Problem(R"("faults": {"fail": ["dat"]})"), HasSubstr(R"(faults: "fail" knows no step "dat")"));
}

TEST(Scenario, HasHostileRatesWithASeed) {
  const Scenario scenario = Parse(R"("hostile": "seed=7,drop=3")");
  EXPECT_EQ(scenario.hostile.value().seed, 7U);
  EXPECT_EQ(scenario.hostile.value().PercentOf(Fault::kDrop), 3);
  EXPECT_THAT(Problem(R"("hostile": "drop=3")"), HasSubstr("needs a seed"));
  EXPECT_NE(Problem(R"("hostile": "seed=7,dorp=3")"), "(none)");
}

TEST(Scenario, HasEvents) {
  const auto events =
      Parse(R"("events": [{"unplug": true}, {"when": "screen html", "time": 2, "after_ms": 5, "plug": true},
      {"when": "command load working key", "walk_away": true}, {"when": "PIN asked", "slow_ms": 40},
      {"when": "unplugged", "plug": true}, {"when": "plugged", "unplug": true}])")
          .events;
  using Action = ScriptedEvent::Action;
  ASSERT_THAT(events, SizeIs(6));
  EXPECT_FALSE(events[0].when.kind);
  EXPECT_EQ(events[0].action, Action::kUnplug);
  EXPECT_EQ(events[1].when.kind, Event::Kind::kScreen);
  EXPECT_EQ(events[1].when.name, "html");
  EXPECT_EQ(events[1].when.occurrence, 2U);
  EXPECT_EQ(events[1].after, Time(5));
  EXPECT_EQ(events[1].action, Action::kPlug);
  EXPECT_EQ(events[2].when.name, "load working key");
  EXPECT_EQ(events[2].action, Action::kWalkAway);
  EXPECT_EQ(events[3].when.kind, Event::Kind::kPinAsked);
  EXPECT_EQ(events[3].slowness, Time(40));
  EXPECT_EQ(events[4].when.kind, Event::Kind::kUnplugged);
  EXPECT_EQ(events[5].when.kind, Event::Kind::kPlugged);
}

TEST(Scenario, TellsWhatIsWrongWithAnEvent) {
  EXPECT_THAT(Problem(R"("events": [{"unplug": true}, {"after_ms": 5}])"),
              HasSubstr("events 2: needs exactly one of"));
  EXPECT_THAT(Problem(R"("events": [{"unplug": true, "plug": true}])"),
              HasSubstr("events 1: needs exactly one of"));
  EXPECT_EQ(Problem(R"("events": [{"unplug": false}])"), R"(events 1: "unplug" can only be true)");
  EXPECT_EQ(
      Problem(R"("events": [{"when": "screen htlm", "unplug": true}])"),
      R"(events 1: "htlm" is no kind of screen (known: idle, teller_card, evaluation, information, html, keypad, document, confirm, signing, hand_sign, checkout))");
  EXPECT_THAT(Problem(R"("events": [{"when": "command SIGN", "unplug": true}])"),
              HasSubstr(R"("SIGN" is no command)"));
  EXPECT_THAT(Problem(R"("events": [{"when": "PIN asked twice", "unplug": true}])"),
              HasSubstr(R"("when" must be)"));
  EXPECT_THAT(Problem(R"("events": [{"when": "lunch", "unplug": true}])"), HasSubstr(R"("when" must be)"));
  EXPECT_EQ(Problem(R"("events": [{"time": 2, "unplug": true}])"),
            R"(events 1: "time" has no meaning without "when")");
  EXPECT_EQ(Problem(R"("events": [1])"), "events 1: is not an object");
}

TEST(Scenario, TellsTheFileItIsIn) {
  const gwq::test::TempDir directory;
  const std::string path = (directory / "s.json").string();
  EXPECT_THROW(
      {
        try {
          static_cast<void>(LoadScenario(path));
        } catch (const std::runtime_error& error) {
          EXPECT_EQ(std::string(error.what()),
                    "scenario " + path + ": cannot be read: No such file or directory");
          throw;
        }
      },
      std::runtime_error);
}

TEST(CommandNames, StandInTheSchema) {
  std::ifstream file(GWQ_SOURCE_DIR "/terminal/scenarios/shipped/scenario.schema.json");
  const Json schema = Json::parse(file);
  EXPECT_EQ(schema.at("definitions").at("command_name").at("enum").get<std::vector<std::string>>(),
            std::vector<std::string>(CommandNames().begin(), CommandNames().end()));
}

TEST(Masking, CoversPinsAndKeysAndWhatCannotBePrinted) {
  EXPECT_EQ(Masked("PIN 1234567, 12345678.", {"1234", "1234567"}), "PIN *******, *******8.");
  EXPECT_EQ(Masked("0123456789abcdef and 0123456789abcde", {}), "**************** and 0123456789abcde");
  EXPECT_EQ(Masked("a\tb\x01\n\xff"
                   "c",
                   {}),
            "a b \n\xEF\xBF\xBD"
            "c");
  EXPECT_THAT(SecretsOf(Json::parse(R"({"screens": [{"digits": "98765"}, {"digits": "42"}], "number_entries":
      [{"number": "310115"}]})")),
              ElementsAre("123456", "310115", "98765"));
}

TEST(Masking, CoversWhatTheAgreeableCustomerKeys) {
  PinRequest request;
  request.max_digits = 14;
  EXPECT_TRUE(SecretsOf(Json()).contains(AgreeableCustomer().KeyPin(request).digits));
}

}  // namespace
}  // namespace gwq::terminal::test
