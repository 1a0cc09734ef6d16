// SPDX-License-Identifier: MIT
// The small parts that every command goes through.
#include <gtest/gtest.h>

#include "base/secret.h"
#include "device/text_commands.h"
#include "protocol/pattern.h"
#include "protocol/split_form.h"
#include "unit/terminal/device/rig.h"

namespace gwq::terminal::test {

using namespace protocol;
using namespace device;
namespace {

TEST(Pattern, WithoutArgumentsFitsOnlyItself) {
  EXPECT_TRUE(MatchPattern("abc", "abc"));
  EXPECT_FALSE(MatchPattern("abc", "ab"));
  EXPECT_FALSE(MatchPattern("abc", "abcd"));
  EXPECT_FALSE(MatchPattern("abc", ""));
}

TEST(Pattern, ReadsNumbersUpToSixDigits) {
  EXPECT_EQ(MatchPattern("a%db%d", "a12b003").value().numbers, (std::vector<int>{12, 3}));
  EXPECT_EQ(MatchPattern("%d", "999999").value().numbers, std::vector<int>{999999});
  EXPECT_FALSE(MatchPattern("%d", "1000000"));
  EXPECT_FALSE(MatchPattern("%d", ""));
  EXPECT_FALSE(MatchPattern("%d", "-1"));
}

TEST(Pattern, ReadsSingleDigits) {
  EXPECT_EQ(MatchPattern("F%1%1", "F01").value().numbers, (std::vector<int>{0, 1}));
  EXPECT_FALSE(MatchPattern("F%1%1", "F0"));
  EXPECT_FALSE(MatchPattern("F%1%1", "F012"));
}

TEST(Pattern, GivesTheTextBeforeTheLiteralEnd) {
  EXPECT_EQ(MatchPattern("M%s\r\n", "M012\r\n").value().text, "012");
  EXPECT_EQ(MatchPattern("M%s\r\n", "M\r\n").value().text, "");
  EXPECT_EQ(MatchPattern("M%s", "Mx").value().text, "x");
  EXPECT_FALSE(MatchPattern("M%s\r\n", "M012"));
  EXPECT_FALSE(MatchPattern("M%s\r\n", "M\n"));
}

TEST(TextTable, CarriesOutTheFirstRowThatFits) {
  TextCommands table;
  std::string seen;
  static constexpr CommandRow kNumber = kOtherGroup.Text("number", "a%d");
  static constexpr CommandRow kText = kOtherGroup.Text("text", "a%s");
  table.Add(kNumber, [&](const Match& match) { seen += std::to_string(match.numbers[0]); });
  table.Add(kText, [&](const Match& match) { seen += match.text; });
  const auto on_command = [&](const CommandRow& row) { seen += " " + std::string(row.name) + " "; };
  EXPECT_TRUE(table.CarryOut("a7", on_command));
  EXPECT_TRUE(table.CarryOut("ab", on_command));
  EXPECT_FALSE(table.CarryOut("b", on_command));
  EXPECT_EQ(seen, " number 7 text b");
}

TEST(Name, OfACommandHasNothingOfWhatItCarries) {
  EXPECT_EQ(NameOf("\033[0X\x02secret\x03"), "\"\\e[0X\"");
  EXPECT_EQ(NameOf("\033Msecret\r\n"), "\"\\eM\"");
  EXPECT_EQ(NameOf("\033"), "\"\\e\"");
  EXPECT_EQ(NameOf("\033[" + std::string(500, 'A')), "\"\\e[" + std::string(39, 'A') + "\"");
}

TEST(SplitForm, GoesThereAndBackForEveryByte) {
  Bytes all;
  for (int i = 0; i < 256; ++i) all.push_back(static_cast<std::uint8_t>(i));
  Bytes split;
  AppendSplit(split, all);
  EXPECT_EQ(ToText(split), Split(all));
  const auto merged = MergeSplit(split);
  ASSERT_TRUE(merged);
  EXPECT_EQ(Bytes(merged->begin(), merged->end()), all);
}

TEST(SplitForm, OfOddCountOrOtherCharactersIsNotMerged) {
  EXPECT_TRUE(MergeSplit(ToBytes("0?")));
  for (const char* text : {"0", "0@", "/0", "A0"}) EXPECT_FALSE(MergeSplit(ToBytes(text))) << text;
}

TEST(Wipe, ClearsWhatAContainerHeld) {
  std::string pin = "123456";
  const char* memory = pin.data();
  Wipe(pin);
  EXPECT_TRUE(pin.empty());
  // The bytes behind a string's end are its own as long as it does not grow.
  for (int i = 1; i < 6; ++i) EXPECT_EQ(memory[i], '\0');
}

}  // namespace
}  // namespace gwq::terminal::test
