// SPDX-License-Identifier: MIT
// The page has Chinese for all that the unit itself says.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <map>
#include <nlohmann/json.hpp>
#include <set>

#include "protocol/commands.h"
#include "unit/terminal/device/screens/screen_rig.h"
#include "web/messages.h"

namespace gwq::terminal::test {

using namespace protocol;
using namespace device;
using namespace web;
namespace {

using Json = nlohmann::json;

// The object in chinese.js is JSON.
Json Dictionary() {
  std::ifstream file(GWQ_SOURCE_DIR "/terminal/web/page/chinese.js");
  const std::string script{std::istreambuf_iterator<char>(file), {}};
  const std::size_t begin = script.find('{');
  const std::size_t end = script.rfind('}');
  return Json::parse(script.substr(begin, end + 1 - begin));
}

bool IsChinese(const Json& dictionary, const std::string& text) {
  const std::string chinese = dictionary.value(text, "");
  return !chinese.empty() && static_cast<unsigned char>(chinese[0]) >= 0xE4;
}

// The text arguments with which each command of the screens shows what it can.
const std::string& ArgumentOf(std::string_view command) {
  static const std::map<std::string_view, std::string> arguments{
      {"OPINFODPUTF8", "Li Lei|0123|5|0123.jpg"},
      {"SETEVALINFOUTF8", "Li Lei|0123|5|0123.jpg"},
      {"teller card", "Li Lei|0123|5|0123.jpg"},
      {"information", SplitText("x")},
      {"HTML", SplitText("x")},
      {"SHOWHTMLUTF8", SplitText("x")},
      {"STARTSCREENSHOTUTF8", SplitText("x")},
      {"YCSTARTINFOHTMLEXUTF8", SplitText("x") + "#"},
      {"YCNEWSHOWFILE", "/tmp/a.pdf"},
      {"YCNEWSTARTFILE", "/tmp/a.pdf"},
      {"YCNEWSTARTSIGN", "here|/tmp/a.pdf"},
      {"YCNEWSTARTZGTSIGN", "here|/tmp/a.pdf"},
      {"YCSETVOICECONTENT", "x"},
      {"YCCHECKOUTALLUTF8", SplitText("x") + "#" + SplitText("x")},
  };
  return arguments.at(command);
}

const std::set<std::string_view> kShowNothing{
    "SETEVALINFOUTF8",      "teller card",       "evaluation time-out", "close evaluation",
    "information time-out", "close information", "SETHTMLBTNTIME",      "keypad time-out",
    "close keypad",         "YCISSUPPORTTZG",    "YCSETVOICECONTENT",   "CLOSECURPROGRAM"};

std::string Filled(const CommandRow& row) {
  std::string command(row.pattern);
  for (std::size_t at = command.find('%'); at != std::string::npos; at = command.find('%', at + 1))
    command.replace(at, 2, command[at + 1] == 'd' ? "1" : ArgumentOf(row.name));
  return command;
}

// The screens of all commands of the group, and the idle one.
std::vector<Screen> AllScreens() {
  std::vector<Screen> screens{ScreenRig().Now()};
  for (const CommandRow& row : kCommands) {
    if (row.group != kScreenGroup.name || kShowNothing.contains(row.name)) continue;
    ScreenRig rig;
    for (const char* file : {"/tmp/a.pdf", "/tmp/infoviewer.html", "/tmp/infoviewerex.html"}) rig.Put(file);
    screens.push_back(rig.Shown(Filled(row)));
    EXPECT_NE(screens.back().kind, ScreenKind::kIdle) << row.name;
  }
  return screens;
}

TEST(PageTexts, TheUnitsTitlesAndKeysAreInChineseToo) {
  const Json dictionary = Dictionary();
  std::set<ScreenKind> kinds;
  for (const Screen& screen : AllScreens()) {
    kinds.insert(screen.kind);
    EXPECT_TRUE(IsChinese(dictionary, screen.title)) << screen.title;
    for (const ScreenKey& key : screen.keys) EXPECT_TRUE(IsChinese(dictionary, key.label)) << key.label;
  }
  EXPECT_EQ(kinds.size(), static_cast<std::size_t>(ScreenKind::kCheckout) + 1) << "every kind";
}

TEST(PageTexts, ThoseWhoSpeakInTheTraceAreInChineseToo) {
  const Json dictionary = Dictionary();
  const std::vector<TraceEvent::What> whats{CommandReceived{kCommands.data(), ""}, Answered{"x"},
                                            CustomerActed{CustomerActed::Kind::kAtScreen, ""}, Noted{"x"}};
  ASSERT_EQ(whats.size(), std::variant_size_v<TraceEvent::What>);
  for (const TraceEvent::What& what : whats) {
    const Json message = Json::parse(TraceMessage({{what, 0ms}}));
    const std::string speaker = message.at("lines").at(0).at("from");
    EXPECT_TRUE(IsChinese(dictionary, speaker)) << speaker;
  }
}

}  // namespace
}  // namespace gwq::terminal::test
