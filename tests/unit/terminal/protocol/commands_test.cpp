// SPDX-License-Identifier: MIT
// The table of commands, and what is written down elsewhere for people and editors.
#include "protocol/commands.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>

#include "unit/terminal/device/rig.h"

namespace gwq::terminal::test {

using namespace protocol;
using namespace device;
namespace {

using testing::ElementsAre;

std::string ReadAll(const std::string& path) {
  std::ifstream file(path);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

TEST(Commands, HaveRowsThatDiffer) {
  std::set<std::pair<std::string_view, std::string_view>> names;
  std::set<std::string_view> patterns;
  std::set<unsigned> codes;
  for (const CommandRow& row : kCommands) {
    EXPECT_TRUE(names.emplace(row.name, row.variant).second) << row.name;
    EXPECT_TRUE(row.pattern.empty() || patterns.insert(row.pattern).second) << row.name;
    EXPECT_TRUE(row.code == 0 || codes.insert(row.code).second) << row.name;
  }
}

TEST(Commands, StandInTheDocumentationByTheirGroups) {
  std::map<std::string, std::string> lists;
  std::set<std::string_view> named;
  for (const CommandRow& row : kCommands) {
    if (named.insert(row.name).second) lists[std::string(row.group)] += " `" + std::string(row.name) + "`";
  }
  const std::string guide = ReadAll(GWQ_SOURCE_DIR "/docs/scenarios.md");
  for (const auto& [group, list] : lists)
    EXPECT_NE(guide.find("| " + group + " |" + list + " |\n"), std::string::npos) << group << ":" << list;
}

TEST(Commands, InAFrameAreFoundByTheirCode) {
  ASSERT_NE(FrameRow(0x3016), nullptr);
  EXPECT_EQ(FrameRow(0x3016)->name, "set account");
  EXPECT_EQ(FrameRow(0x3017), nullptr);
  EXPECT_EQ(FrameRow(0), nullptr);
}

TEST(Commands, OfALetterAreFoundByIt) {
  ASSERT_EQ(LetterRows('M').size(), 1U);
  EXPECT_EQ(LetterRows('F').size(), 2U);
  EXPECT_TRUE(LetterRows('Q').empty());
  EXPECT_TRUE(LetterRows('[').empty());
}

TEST(Commands, OfAWordAreFoundWhileItComes) {
  const std::string word = "1GETENCDATA";
  for (std::size_t size = 1; size < word.size(); ++size)
    EXPECT_TRUE(FitWord(word.substr(0, size)).known) << size;
  EXPECT_EQ(FitWord(word).with_data, &Row("GETENCDATA"));
  EXPECT_FALSE(FitWord(word).whole);
  EXPECT_FALSE(FitWord(word + "X").known);
  EXPECT_FALSE(FitWord("9").known);
  EXPECT_TRUE(FitWord("1;12").known);
  EXPECT_TRUE(FitWord("1;12T").whole);
  EXPECT_FALSE(FitWord("1;T").known);
  EXPECT_TRUE(FitWord("0GETVERSION").whole);
  EXPECT_EQ(FitWord("0GETVERSION").with_data, &Row("GETVERSION", "of an item"));
}

TEST(Commands, OnlyAResponseLetsAPullGoOn) {
  EXPECT_TRUE(KeepsPull(wire::kAccepted));
  EXPECT_TRUE(KeepsPull("\033[0RESPONSE"));
  EXPECT_FALSE(KeepsPull("\033[0RESPONS"));
  EXPECT_FALSE(KeepsPull(""));
}

TEST(Commands, AreAnnouncedByTheDispatcherOnce) {
  std::vector<std::string> names;
  ListedCustomer customer;
  Device device(Line::kUsb, customer, {}, [&](const TraceEvent& event) {
    if (const auto* received = std::get_if<CommandReceived>(&event.what))
      names.emplace_back(received->command->name);
  });
  for (const std::string_view command :
       {wire::kGetVersion, std::string_view("\033[1;6L"), wire::kCloseEvaluation, wire::kNoCommand})
    device.Receive(ToBytes(PaddedReports(command)), 0ms);
  EXPECT_THAT(names, ElementsAre("GETVERSION", "PIN length", "close evaluation", "unknown command"));
}

}  // namespace
}  // namespace gwq::terminal::test
