// SPDX-License-Identifier: MIT
// PIN-pad frames: damaged ones, unknown ones, and a table with a command in it.
#include "device/framed_commands.h"

#include <gtest/gtest.h>

#include "protocol/pinpad_frame.h"
#include "unit/terminal/device/pad/pad_rig.h"

namespace gwq::terminal::test {

using namespace protocol;
using namespace device;
namespace {

constexpr std::string_view kUnknown = "\00200026=006=\x03";  // status 6D00
constexpr std::string_view kDamaged = "\00200026?016>\x03";  // status 6F01

TEST(Frame, OfAnUnknownCommandIsAnsweredByAStatusWord) {
  for (const Line line : {Line::kUsb, Line::kSerial}) {
    Rig rig(line);
    EXPECT_EQ(rig.Ask("\0020002301727\x03"), kUnknown);
  }
}

TEST(Frame, WithoutACommandIsUnknownToo) {
  Rig rig;
  EXPECT_EQ(rig.Ask(PadFrame({})), kUnknown);
  EXPECT_EQ(rig.Ask(PadFrame({0x30})), kUnknown);
}

TEST(Frame, ThatIsDamagedIsAnsweredByAStatusWord) {
  Rig rig;
  for (const std::string frame :
       {"\0020002301829\x03", "\0020003301828\x03", "\0020001301828\x03", "\002000230182\x03",
        "\0020002301A28\x03", "\x02\x03", "\0020000\x03", "\0020002301828", "\002????301828\x03"}) {
    EXPECT_EQ(rig.Ask(frame), kDamaged) << frame;
  }
}

TEST(Frame, OfEverySizeIsRead) {
  for (const std::size_t size : {0U, 1U, 2U, 255U, 256U, 300U, 508U, 65535U}) {
    const std::vector<std::uint8_t> body(size, 0x5A);
    const auto read = ReadFrame(ToBytes(PadFrame(body)));
    ASSERT_TRUE(read) << size;
    EXPECT_EQ(std::vector<std::uint8_t>(read->begin(), read->end()), body);
  }
}

TEST(Frame, OverManyReportsIsReadByTheTerminal) {
  Rig rig;
  EXPECT_EQ(rig.Ask(PadFrame(std::vector<std::uint8_t>(65535, 0x5A))), kUnknown);
}

TEST(Frame, WithOneNibbleChangedAnywhereIsNotRead) {
  const std::string good = PadFrame({0x30, 0x18, 0x00, 0xFF, 0x7E});
  ASSERT_TRUE(ReadFrame(ToBytes(good)));
  for (std::size_t i = 0; i < good.size(); ++i) {
    std::string bad = good;
    bad[i] = static_cast<char>(bad[i] ^ 1);
    EXPECT_FALSE(ReadFrame(ToBytes(bad))) << i;
  }
}

TEST(Frame, OfAnAnswerCountsTheStatusWord) {
  EXPECT_EQ(ToText(MakeAnswerFrame(0, {})), "\0020002000000\x03");
  EXPECT_EQ(ToText(MakeAnswerFrame(0, FromHex("1234"))), wire::kAnswer1234Frame);
  EXPECT_EQ(ToText(MakeAnswerFrame(0x6A82, {})), "\00200026:82>8\x03");
}

TEST(FramedTable, HandsTheArgumentsToTheRow) {
  FramedCommands table;
  std::string seen;
  table.Add(Row("get device id"), [&](std::span<const std::uint8_t> arguments) {
    seen += ToText(arguments);
    return FramedAnswer{0x1234, {1, 2}};
  });
  const auto on_command = [&](const CommandRow& row) { seen += std::string(row.name) + ": "; };
  const auto answer = table.CarryOut(ToBytes(PadFrame({0x30, 0x18, 'a', 'b', 'c'})), on_command);
  EXPECT_EQ(seen, "get device id: abc");
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->status, 0x1234);
  EXPECT_EQ(answer->data, (Bytes{1, 2}));
  EXPECT_EQ(table.CarryOut(ToBytes(PadFrame({0x30, 0x19})), on_command)->status, kStatusUnknownCommand);
  EXPECT_EQ(table.CarryOut(ToBytes("\x02\x03"), on_command)->status, kStatusDamagedFrame);
}

TEST(FramedTable, LetsARowAnswerByItself) {
  FramedCommands table;
  table.Add(Row("PIN entry", "framed"), [](Arguments) { return std::nullopt; });
  EXPECT_FALSE(table.CarryOut(ToBytes(PadFrame({0x30, 0x05, 9})), [](const CommandRow&) {}));
}

TEST(Frame, IsTracedWithItsStatus) {
  Rig rig;
  rig.Send(PadFrame({0x30, 0x17}));
  EXPECT_EQ(rig.Trace(),
            "host: PIN-pad frame (12 bytes)\n"
            "terminal: answer: PIN-pad status 6D00\n");
}

}  // namespace
}  // namespace gwq::terminal::test
