// SPDX-License-Identifier: MIT
// What a host sets in the PIN pad, and the refusals of values out of range.
#include <gtest/gtest.h>

#include "unit/terminal/device/pad/pad_rig.h"

namespace gwq::terminal::test {
namespace {

constexpr int kBadArgument = 0x6A80;

TEST(PadSetting, TakesEveryValueInRangeAndRefusesTheOthers) {
  struct Case {
    int code;
    std::string_view allowed;
  };
  const std::array<Case, 6> cases{{{0x10, {"\0\1", 2}},
                                   {0x12, "\4\5\6\7\10\11\12\13\14\15\16"},
                                   {0x13, {"\0\1", 2}},
                                   {0x11, {"\0\xFF", 2}},
                                   {0x32, "\1\5\6"},
                                   {0x14, {"\0\1\2\3", 4}}}};
  Rig rig;
  for (const Case& setting : cases) {
    for (int value = 0; value < 256; ++value) {
      const bool allowed = setting.allowed.find(static_cast<char>(value)) != std::string_view::npos;
      const PadAnswer answer = AskPad(rig, Body({0x30, setting.code, value}));
      EXPECT_EQ(answer.status, allowed ? 0 : kBadArgument) << setting.code << " " << value;
      EXPECT_TRUE(answer.data.empty());
    }
  }
}

TEST(PadSetting, OfMoreThanOneByteIsRefused) {
  Rig rig;
  EXPECT_EQ(AskPad(rig, {0x30, 0x12, 8, 8}).status, kBadArgument);
}

TEST(PadSetting, IsKeptUntilTheNextGoodOne) {
  Rig rig;
  EXPECT_EQ(AskPad(rig, {0x30, 0x33}).data, ByteList{0});
  EXPECT_EQ(AskPad(rig, {0x30, 0x35}).data, ByteList{6});
  EXPECT_EQ(AskPad(rig, {0x30, 0x10, 1}).status, 0);
  EXPECT_EQ(AskPad(rig, {0x30, 0x12, 9}).status, 0);
  EXPECT_EQ(AskPad(rig, {0x30, 0x10, 2}).status, kBadArgument);
  EXPECT_EQ(AskPad(rig, {0x30, 0x12, 15}).status, kBadArgument);
  EXPECT_EQ(AskPad(rig, {0x30, 0x33}).data, ByteList{1});
  EXPECT_EQ(AskPad(rig, {0x30, 0x35}).data, ByteList{9});
}

TEST(PadSetting, OfZeroArrivesWithoutItsByte) {
  Rig rig;
  EXPECT_EQ(AskPad(rig, {0x30, 0x10, 1}).status, 0);
  EXPECT_EQ(rig.Ask("\0020002301020\x03"), "\0020002000000\x03");
  EXPECT_EQ(AskPad(rig, {0x30, 0x33}).data, ByteList{0});
}

TEST(PadAccount, HasAsManyDigitsAsItsLengthTellsOrNone) {
  Rig rig;
  EXPECT_EQ(AskPad(rig, Body({0x30, 0x16, 12}, "789012345678")).status, 0);
  EXPECT_EQ(AskPad(rig, Body({0x30, 0x16, 19}, "1234567890123456789")).status, 0);
  EXPECT_EQ(AskPad(rig, Body({0x30, 0x16, 12})).status, 0);
  EXPECT_EQ(AskPad(rig, Body({0x30, 0x16})).status, 0);
  EXPECT_EQ(AskPad(rig, Body({0x30, 0x16, 12}, "78901234567")).status, kBadArgument);
  EXPECT_EQ(AskPad(rig, Body({0x30, 0x16, 12}, "7890123456789")).status, kBadArgument);
  EXPECT_EQ(AskPad(rig, Body({0x30, 0x16, 12}, "78901234567x")).status, kBadArgument);
  EXPECT_EQ(AskPad(rig, Body({0x30, 0x16, 20}, "12345678901234567890")).status, kBadArgument);
}

TEST(PadDeviceId, IsReadAsItWasWritten) {
  Rig rig;
  EXPECT_EQ(ToText(AskPad(rig, {0x30, 0x18}).data), "st_00000001");
  EXPECT_EQ(rig.Ask("\033[0BJPOSTSETSN\x02st_12345678\x03"), wire::kDone);
  EXPECT_EQ(ToText(AskPad(rig, {0x30, 0x18}).data), "st_12345678");
  EXPECT_EQ(rig.Ask("\033[0BJPOSTSETSN\x02X\x03"), wire::kDone);
  EXPECT_EQ(rig.Ask("\033[0BJPOSTSETSN\00212345678901234567890\x03"), wire::kDone);
}

TEST(PadDeviceId, ThatIsBadIsNotTaken) {
  Rig rig;
  for (const std::string id : {"", "123456789012345678901", "a b", "caf\xC3\xA9", "a\tb"}) {
    EXPECT_EQ(rig.Ask(std::string("\033[0BJPOSTSETSN\x02").append(id).append("\x03")), wire::kRefused) << id;
  }
  EXPECT_EQ(ToText(AskPad(rig, {0x30, 0x18}).data), "st_00000001");
}

TEST(FirmwareVersion, HasACommonAndAPrivatePart) {
  for (const Line line : {Line::kUsb, Line::kSerial}) {
    Rig rig(line);
    EXPECT_EQ(rig.Ask(wire::kGetFirmwareVersion), "\x02V1.0.0|P20240615\x03");
  }
}

TEST(PadSetting, IsTracedWithoutTheAccount) {
  Rig rig;
  AskPad(rig, {0x30, 0x12, 8});
  AskPad(rig, Body({0x30, 0x16, 12}, "789012345678"));
  EXPECT_EQ(rig.Trace(),
            "host: PIN-pad frame (14 bytes)\n"
            "host: set PIN length 8\n"
            "terminal: answer: PIN-pad status 0000\n"
            "host: PIN-pad frame (38 bytes)\n"
            "host: set account (12 digits, masked)\n"
            "terminal: answer: PIN-pad status 0000\n");
}

}  // namespace
}  // namespace gwq::terminal::test
