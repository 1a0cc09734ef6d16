// SPDX-License-Identifier: MIT
// Loading, activating and resetting keys, byte for byte.
#include <gtest/gtest.h>

#include "device/pad/ciphers.h"
#include "device/pad/key_store.h"
#include "unit/terminal/device/rig.h"

namespace gwq::terminal::test {

using namespace device;
namespace {

constexpr std::string_view kSingle = "133457799BBCDFF1";
constexpr std::string_view kDouble = "A1B2C3D4E5F60718293A4B5C6D7E8F90";
constexpr std::string_view kTriple = "A1B2C3D4E5F60718293A4B5C6D7E8F900F1E2D3C4B5A6978";

TEST(Des, GivesThePublishedBlock) {
  const auto block = EncipherDes(FromHex(kSingle), FromHex("0123456789ABCDEF"));
  ASSERT_TRUE(block);
  EXPECT_EQ(ToHex(*block), "85E813540F0AB405");
}

TEST(Des, AgreesWithTheSingleBlockCallsForEveryKeyLength) {
  const auto data = FromHex("0123456789ABCDEF00112233445566778899AABBCCDDEEFF");
  for (const std::string_view key : {kSingle, kDouble, kTriple}) {
    const auto block = EncipherDes(FromHex(key), data);
    ASSERT_TRUE(block);
    EXPECT_EQ(ToHex(*block), ToHex(PlainDes(FromHex(key), data, true)));
    const auto back = DecipherDes(FromHex(key), *block);
    ASSERT_TRUE(back);
    EXPECT_EQ(ToHex(*back), ToHex(data));
  }
}

TEST(Des, RefusesOtherLengths) {
  const auto data = FromHex("0123456789ABCDEF");
  for (const std::size_t size : {0U, 1U, 7U, 9U, 15U, 17U, 23U, 25U, 32U}) {
    EXPECT_FALSE(EncipherDes(std::vector<std::uint8_t>(size, 1), data)) << size;
  }
  EXPECT_FALSE(EncipherDes(FromHex(kSingle), FromHex("01234567")));
}

TEST(MasterKey, IsTakenWithTheFactoryKeyAsTheOldOne) {
  Rig rig;
  const std::string command = MasterKeyCommand(0, kFactoryHex, kSingle);
  EXPECT_EQ(command, "\033M0031313131313131313131313131313131133457799;;<=??1\r\n");
  EXPECT_EQ(rig.Ask(command), wire::kKeyAccepted);
}

TEST(MasterKey, OfEveryLengthCanFollowOneOfEveryLength) {
  Rig rig;
  std::string_view old_key = kFactoryHex;
  for (const std::string_view key :
       {kSingle, kSingle, kDouble, kDouble, kTriple, kTriple, kSingle, kTriple, kDouble, kSingle}) {
    EXPECT_EQ(rig.Ask(MasterKeyCommand(15, old_key, key)), wire::kKeyAccepted);
    old_key = key;
  }
}

TEST(MasterKey, WithAWrongOldKeyIsNotTaken) {
  Rig rig;
  ASSERT_EQ(rig.Ask(MasterKeyCommand(2, kFactoryHex, kMasterHex)), wire::kKeyAccepted);
  EXPECT_EQ(rig.Ask(MasterKeyCommand(2, kFactoryHex, kDouble)), wire::kKeyNotAccepted);
  EXPECT_EQ(rig.Ask(MasterKeyCommand(2, kMasterHex, kDouble)), wire::kKeyAccepted);
}

TEST(MasterKey, SlotsAreApart) {
  Rig rig;
  for (int slot = 0; slot < 16; ++slot) {
    EXPECT_EQ(rig.Ask(MasterKeyCommand(slot, kFactoryHex, kMasterHex)), wire::kKeyAccepted) << slot;
  }
}

TEST(MasterKey, WithABadSlotLengthOrRecordIsNotTaken) {
  Rig rig;
  EXPECT_EQ(rig.Ask(MasterKeyCommand(16, kFactoryHex, kMasterHex)), wire::kKeyNotAccepted);
  EXPECT_EQ(rig.Ask(MasterKeyCommand(255, kFactoryHex, kMasterHex)), wire::kKeyNotAccepted);
  EXPECT_EQ(rig.Ask(MasterKeyCommand(1, kFactoryHex, "0123456789ABCD")), wire::kKeyNotAccepted);
  EXPECT_EQ(rig.Ask(MasterKeyCommand(1, kFactoryHex, "")), wire::kKeyNotAccepted);
  EXPECT_EQ(rig.Ask(MasterKeyCommand(1, "", "3131")), wire::kKeyNotAccepted);
  EXPECT_EQ(rig.Ask("\033M\r\n"), wire::kKeyNotAccepted);
  EXPECT_EQ(rig.Ask("\033M0\r\n"), wire::kKeyNotAccepted);
  EXPECT_EQ(rig.Ask("\033M0A\r\n"), wire::kKeyNotAccepted);
  EXPECT_EQ(rig.Ask(MasterKeyCommand(1, kFactoryHex, kMasterHex)), wire::kKeyAccepted);
}

TEST(MasterKey, TakesItsWorkingKeysWithIt) {
  Rig rig;
  LoadKeys(rig, kDouble);
  ASSERT_EQ(rig.Ask(MasterKeyCommand(3, kMasterHex, kSingle)), wire::kKeyAccepted);
  EXPECT_EQ(rig.Ask(ActivateCommand(3, 7)), wire::kKeyNotAccepted);
  EXPECT_EQ(rig.Ask("\033F00\r\n"), wire::kRefused);
}

TEST(WorkingKey, IsDecipheredUnderItsMasterKey) {
  for (const std::string_view working : {kSingle, kDouble, kTriple}) {
    for (const std::string_view master : {kSingle, kMasterHex, kTriple}) {
      KeyStore keys;
      auto record = FromHex(kFactoryHex);
      for (const std::uint8_t byte : FromHex(master)) record.push_back(byte);
      ASSERT_TRUE(keys.ReplaceMaster(4, record));
      ASSERT_TRUE(keys.LoadWorking(4, 9, PlainDes(FromHex(master), FromHex(working), true)));
      EXPECT_EQ(keys.Active(), nullptr);
      ASSERT_TRUE(keys.Activate(4, 9));
      ASSERT_NE(keys.Active(), nullptr);
      EXPECT_EQ(ToHex(*keys.Active()), working);
    }
  }
}

TEST(WorkingKey, WithABadSlotLengthOrRecordIsNotTaken) {
  Rig rig;
  EXPECT_EQ(rig.Ask(WorkingKeyCommand(16, 0, kDouble)), wire::kKeyNotAccepted);
  EXPECT_EQ(rig.Ask(WorkingKeyCommand(0, 16, kDouble)), wire::kKeyNotAccepted);
  EXPECT_EQ(rig.Ask(WorkingKeyCommand(0, 0, "0123456789ABCD")), wire::kKeyNotAccepted);
  EXPECT_EQ(rig.Ask(WorkingKeyCommand(0, 0, "")), wire::kKeyNotAccepted);
  EXPECT_EQ(rig.Ask("\033S0\r\n"), wire::kKeyNotAccepted);
  EXPECT_EQ(rig.Ask("\033S00\r\n"), wire::kKeyNotAccepted);
  EXPECT_EQ(rig.Ask("\033S0000hello world\r\n"), wire::kKeyNotAccepted);
  EXPECT_EQ(rig.Ask(ActivateCommand(0, 0)), wire::kKeyNotAccepted);
}

TEST(Activate, SendsWhatTheHostSends) {
  EXPECT_EQ(ActivateCommand(1, 10), "\033A010:\r\n");
}

TEST(Activate, NeedsALoadedKeyAndARecordOfTwoBytes) {
  Rig rig;
  LoadKeys(rig, kDouble);
  EXPECT_EQ(rig.Ask(ActivateCommand(7, 3)), wire::kKeyNotAccepted);
  EXPECT_EQ(rig.Ask(ActivateCommand(16, 16)), wire::kKeyNotAccepted);
  EXPECT_EQ(rig.Ask("\033A03\r\n"), wire::kKeyNotAccepted);
  EXPECT_EQ(rig.Ask("\033A030700\r\n"), wire::kKeyNotAccepted);
  EXPECT_EQ(rig.Ask("\033A\r\n"), wire::kKeyNotAccepted);
  EXPECT_EQ(rig.Ask(ActivateCommand(3, 7)), wire::kKeyAccepted);
}

TEST(Reset, BringsTheFactoryKeysBackAndForgetsWorkingKeys) {
  Rig rig;
  LoadKeys(rig, kDouble);
  EXPECT_EQ(rig.Ask(wire::kResetKeys), wire::kKeyAccepted);
  EXPECT_EQ(rig.Ask("\033F00\r\n"), wire::kRefused);
  EXPECT_EQ(rig.Ask(ActivateCommand(3, 7)), wire::kKeyNotAccepted);
  EXPECT_EQ(rig.Ask(MasterKeyCommand(3, kMasterHex, kDouble)), wire::kKeyNotAccepted);
  EXPECT_EQ(rig.Ask(MasterKeyCommand(3, kFactoryHex, kDouble)), wire::kKeyAccepted);
}

TEST(KeyCommands, WorkOverSerialWithoutWaitingForSilence) {
  Rig rig(Line::kSerial);
  for (const std::string& command :
       {MasterKeyCommand(0, kFactoryHex, kSingle), WorkingKeyCommand(0, 0, kDouble), ActivateCommand(0, 0),
        std::string(wire::kResetKeys)}) {
    rig.Feed(command);
    EXPECT_EQ(rig.Answer(), wire::kKeyAccepted);
  }
}

TEST(KeyCommands, AreTracedWithoutTheKeys) {
  Rig rig;
  LoadKeys(rig, kDouble);
  rig.Send(MasterKeyCommand(3, kDouble, kSingle));
  rig.Send("\033M0A\r\n");
  rig.Send(wire::kResetKeys);
  rig.Send("\033M" + Split(FromHex(kMasterHex)));
  EXPECT_EQ(rig.Trace(),
            "host: load master key 3 (16 bytes, masked)\n"
            "terminal: answer: accepted\n"
            "host: load working key 3/7 (16 bytes, masked)\n"
            "terminal: answer: accepted\n"
            "host: activate working key 3/7\n"
            "terminal: answer: accepted\n"
            "host: load master key 3 (8 bytes, masked)\n"
            "terminal: answer: not accepted\n"
            "host: load master key, damaged record\n"
            "terminal: answer: not accepted\n"
            "host: reset keys\n"
            "terminal: answer: accepted\n"
            "host: unknown command \"\\eM\" (34 bytes)\n"
            "terminal: answer: refusal\n");
}

}  // namespace
}  // namespace gwq::terminal::test
