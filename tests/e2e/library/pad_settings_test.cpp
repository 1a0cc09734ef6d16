// SPDX-License-Identifier: MIT
// The PIN pad's settings: read back, or seen in what the pad does.
#include <gtest/gtest.h>

#include <string>

#include "e2e/library/pad_rig.h"

namespace gwq::test {
namespace {

using PadSettings = Pad;

class PadOnSerial : public Pad {
 protected:
  PadOnSerial() { port = kSerialPort; }

  // The last byte of a clear block is filler when no account stands in it.
  std::string LastByteOfBlock() { return ToHex(Deciphered(EVP_des_ede_ecb(), key, Block())).substr(14); }
};

TEST_F(PadSettings, TheFourParametersReachThePadInOneCall) {
  ASSERT_EQ(0, SetParameters(kSm4, 14, 1, "F"));
  int type = -1;
  EXPECT_EQ(0, GetType(type));
  EXPECT_EQ(kSm4, type);
  int length = -1;
  EXPECT_EQ(0, GetLength(length));
  EXPECT_EQ(14, length);
}

TEST_F(PadSettings, ARefusedTypeGivesThePadsStatusAndLeavesTheLengthAsItWas) {
  ASSERT_EQ(0, Frame("\x30\x12\x09").status);
  EXPECT_EQ(kBadArgumentStatus, SetParameters(2, 4, 1, "0"));
  EXPECT_EQ("\x09", Frame("\x30\x35").data);
}

TEST_F(PadSettings, ASerialNumberIsReadAsItWasWritten) {
  std::string id;
  ASSERT_EQ(0, WriteDeviceId("st_20240615-ABCDEFGH"));
  EXPECT_EQ(0, ReadDeviceId(id));
  EXPECT_EQ("st_20240615-ABCDEFGH", id);
}

TEST_F(PadSettings, ASerialNumberThatTheTerminalOrTheLibraryRefusesIsNotTaken) {
  const std::string before = Frame("\x30\x18").data;
  EXPECT_EQ(GWQ_REFUSED, WriteDeviceId("a b"));
  EXPECT_EQ(GWQ_BAD_ARGUMENT, WriteDeviceId("123456789012345678901"));
  EXPECT_EQ(before, Frame("\x30\x18").data);
}

TEST_F(PadOnSerial, TypeAndLengthAreReadAsTheyWereSet) {
  for (const int set : {kSm4, kTripleDes}) {
    int type = -1;
    ASSERT_EQ(0, SetType(set));
    EXPECT_EQ(0, GetType(type));
    EXPECT_EQ(set, type);
  }
  for (const int set : {4, 14, 6}) {
    int length = -1;
    ASSERT_EQ(0, SetLength(set));
    EXPECT_EQ(0, GetLength(length));
    EXPECT_EQ(set, length);
  }
}

TEST_F(PadOnSerial, ARefusedSettingGivesItsStatusForTheTypeAndRefusedForAllOthers) {
  EXPECT_EQ(kBadArgumentStatus, SetType(2));
  EXPECT_EQ(GWQ_REFUSED, SetLength(16));
  EXPECT_EQ(GWQ_REFUSED, SetEndRule(2));
  EXPECT_EQ(GWQ_REFUSED, SetMode(2));
  EXPECT_EQ(GWQ_REFUSED, SetSound(4));
  EXPECT_EQ(GWQ_REFUSED, SetAccount("62258801234A"));
}

TEST_F(PadOnSerial, EndRuleAndSoundAreTaken) {
  for (const int rule : {0, 1}) EXPECT_EQ(0, SetEndRule(rule));
  for (const int sound : {0, 3}) EXPECT_EQ(0, SetSound(sound));
}

TEST_F(PadOnSerial, TheFillTypeIsWhatStandsBehindThePin) {
  Prepare(Algorithm::kTripleDes, 4);
  ASSERT_EQ(0, SetMode(5));
  ASSERT_EQ(0, SetFill("0"));
  EXPECT_EQ("00", LastByteOfBlock());
  ASSERT_EQ(0, SetFill("F"));
  EXPECT_EQ("FF", LastByteOfBlock());
}

TEST_F(PadOnSerial, ThePinIsRecoveredFromABlockBoundToTheAccount) {
  Prepare(Algorithm::kSm4, 6);
  ASSERT_EQ(0, SetMode(1));
  ASSERT_EQ(0, SetAccount("6225880123456789"));
  const Entry entry = GetPin();
  ASSERT_EQ(0, entry.status);
  EXPECT_EQ("123456", PinIn(entry.block, Algorithm::kSm4, "6225880123456789"));
  EXPECT_NE("123456", PinIn(entry.block, Algorithm::kSm4, "6226880123456789"));
}

TEST_F(PadOnSerial, AFactorIsReadAsItWasMade) {
  std::string made;
  std::string made_in_one_step;
  std::string read;
  ASSERT_EQ(0, CreateFactor(1, made));
  EXPECT_EQ(16U, made.size());
  EXPECT_EQ(0, ReadFactor(read));
  EXPECT_EQ(made, read);
  ASSERT_EQ(0, CreateFactor(2, made_in_one_step));
  EXPECT_NE(made, made_in_one_step);
  EXPECT_EQ(0, ReadFactor(read));
  EXPECT_EQ(made_in_one_step, read);
}

// Whatever the port: these use USB, where there is no terminal.
TEST_F(PadOnSerial, FunctionsThatUseUsbGiveNotOpened) {
  std::string text;
  std::string file;
  EXPECT_EQ(GWQ_NOT_OPENED, ReadDeviceId(text));
  EXPECT_EQ(GWQ_NOT_OPENED, WriteDeviceId("st_00000002"));
  EXPECT_EQ(GWQ_NOT_OPENED, SetParameters(0, 6, 0, "F"));
  EXPECT_EQ(GWQ_NOT_OPENED, ObtainFactor("1", text));
  EXPECT_EQ(GWQ_NOT_OPENED, PublicKey(1, 1024, text));
  EXPECT_EQ(GWQ_NOT_OPENED, CallFor<PN_ObtainDigest>(text, 1, "abc"));
  EXPECT_EQ(GWQ_NOT_OPENED, LoadKey("", "1", std::string(32, '1'), "000000"));
  EXPECT_EQ(GWQ_NOT_OPENED, StringBlock(kSm4, "text", file, text));
  EXPECT_EQ(GWQ_NOT_OPENED, AskNumber(6, text));
  EXPECT_EQ(GWQ_NOT_OPENED, GetPinShowing("Please key your PIN").status);
  EXPECT_EQ(GWQ_NOT_OPENED, GetPinBlock({Algorithm::kSm4, 6, 5}).status);
  // It has no drain of its own, and reading the type fails.
  EXPECT_EQ(GWQ_REFUSED, GetPinBlockShowing({Algorithm::kSm4, 6, 5}).status);
  EXPECT_EQ("", text + file);
}

TEST_F(PadOnSerial, APortOfZeroGivesNotOpened) {
  port = 0;
  int value = -1;
  std::string factor;
  EXPECT_EQ(GWQ_NOT_OPENED, GetType(value));
  EXPECT_EQ(GWQ_NOT_OPENED, GetLength(value));
  EXPECT_EQ(GWQ_NOT_OPENED, ReadFactor(factor));
  EXPECT_EQ(GWQ_NOT_OPENED, CreateFactor(1, factor));
  EXPECT_EQ(GWQ_NOT_OPENED, GetPin().status);
  EXPECT_EQ(-1, value);
  EXPECT_EQ("", factor);
}

}  // namespace
}  // namespace gwq::test
