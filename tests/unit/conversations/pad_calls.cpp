// SPDX-License-Identifier: MIT
#include <gwq/pinpad/entry.h>
#include <gwq/pinpad/keys.h>
#include <gwq/pinpad/settings.h>
#include "unit/conversations/calls.h"

namespace gwq::test {
namespace {

constexpr int kBaud = 9600;

int LoadKey(const char* type) {
  return PN_DownloadPinPadWK(0, nullptr, kBaud, std::string(wire::kFactor).c_str(), type,
                             std::string(wire::kPadKeyHex).c_str(), std::string(wire::kVerifyKey).c_str());
}

void ReadFactor() {
  Output factor(2041);
  EXPECT_EQ(PN_GetPinPadFactor(0, nullptr, kBaud, factor.text()), 0);
  factor.ExpectText(wire::kFactor);
}

void CreateFactor(int type) {
  Output factor(2041);
  EXPECT_EQ(PN_CreateAndGetPinPadFactor(0, nullptr, kBaud, type, factor.text()), 0);
  factor.ExpectText(wire::kFactor);
}

void ReadFactorAndLoadKey() {
  ReadFactor();
  EXPECT_EQ(LoadKey("1"), 0);
}

int EncipherText(Output& file, Output& answer, int& length) {
  *file.text() = '\0';
  return PN_GetStringBlock(0, nullptr, kBaud, 30, 0, "abc", file.text(), &length, answer.text());
}

Calls SettingCalls() {
  return {
      {"EncryptionType",
       [](Host&) {
         int type = -1;
         EXPECT_EQ(PN_SetEnType(0, nullptr, kBaud, 1), 0);
         EXPECT_EQ(PN_GetEnType(0, nullptr, kBaud, &type), 0);
         EXPECT_EQ(type, 1);
       }},
      {"PadPinLength",
       [](Host&) {
         int length = -1;
         EXPECT_EQ(PN_SetPinLen(0, nullptr, kBaud, 6), 0);
         EXPECT_EQ(PN_GetPinLen(0, nullptr, kBaud, &length), 0);
         EXPECT_EQ(length, 6);
       }},
      {"EndRule", [](Host&) { EXPECT_EQ(PN_SetEndRule(0, nullptr, kBaud, 0), 0); }},
      {"EndRuleThatThePadDoesNotHave", [](Host&) { EXPECT_EQ(PN_SetEndRule(0, nullptr, kBaud, 2), -14); }},
      {"FillType", [](Host&) { EXPECT_EQ(PN_SetFillType(0, nullptr, kBaud, "F"), 0); }},
      {"PinMode", [](Host&) { EXPECT_EQ(PN_SetPinMoe(0, nullptr, kBaud, 1), 0); }},
      {"SoundType", [](Host&) { EXPECT_EQ(PN_SetSoundType(0, nullptr, kBaud, 1), 0); }},
      {"Account",
       [](Host&) {
         const Bytes account = BytesOf("1234567890123456789");
         EXPECT_EQ(PN_SetAccount(0, nullptr, kBaud, account.data(), 19), 0);
       }},
      {"DeviceId",
       [](Host&) {
         Output id(2041);
         EXPECT_EQ(PN_WriteDeviceId(0, nullptr, kBaud, "SN-20231114"), 0);
         EXPECT_EQ(PN_ReadDeviceId(0, nullptr, kBaud, id.text()), 0);
         id.ExpectText("SN-20231114");
       }},
  };
}

Calls KeyCalls() {
  return {
      {"FactorOfType1", [](Host&) { CreateFactor(1); }},
      {"FactorOfType2", [](Host&) { CreateFactor(2); }},
      {"PublicKey",
       [](Host&) {
         Output key(4081);
         EXPECT_EQ(PN_ObtainPublicKey(0, nullptr, kBaud, 2, 256, key.text()), 0);
         key.ExpectText(
             "32C4AE2C1F1981195F9904466A39C9948FE30BBFF2660BE1715A4589334C74C7"
             "BC3736A2F4F6779C59BDCEE36B692153D0A9877CC62A474002DF32E52139F0A0");
       }},
      {"Digest",
       [](Host&) {
         Output digest(2041);
         EXPECT_EQ(PN_ObtainDigest(0, nullptr, kBaud, 3, "abc", digest.text()), 0);
         digest.ExpectText(wire::kSm3DigestOfAbc);
       }},
      {"PadKeyOfType1", [](Host&) { ReadFactorAndLoadKey(); }},
      {"PadKeyOfType2",
       [](Host&) {
         CreateFactor(2);
         EXPECT_EQ(LoadKey("2"), 0);
       }},
      {"PadKeyWithoutAFactor", [](Host&) { EXPECT_EQ(LoadKey("1"), -1); }},
  };
}

Calls EntryCalls() {
  return {
      {"PadPin",
       [](Host&) {
         ReadFactorAndLoadKey();
         Output block(2041);
         int length = -1;
         EXPECT_EQ(PN_GetPin(0, nullptr, kBaud, 30, &length, block.text()), 0);
         EXPECT_EQ(length, 8);
         block.ExpectText(wire::kPadPinBlock);
       }},
      {"PadPinShowingAText",
       [](Host&) {
         ReadFactorAndLoadKey();
         Output block(2041);
         int length = -1;
         EXPECT_EQ(GetPinblockShowString(0, nullptr, kBaud, block.data(), &length, 30, "Key your PIN"), 0);
         EXPECT_EQ(length, 8);
         block.ExpectText(wire::kPadPinBlock);
       }},
      {"EncipheredText",
       [](Host&) {
         ReadFactorAndLoadKey();
         Output file(4096);
         Output answer(4096);
         int length = 3;
         EXPECT_EQ(EncipherText(file, answer, length), 0);
         EXPECT_EQ(length, static_cast<int>(wire::kEncipheredHex.size()));
         file.ExpectText(wire::kEncipheredHex);
         answer.ExpectText(wire::kEncipheredHex);
       }},
      {"EncipheredTextWithoutAKey",
       [](Host&) {
         Output file(4096);
         Output answer(4096);
         int length = 3;
         EXPECT_EQ(EncipherText(file, answer, length), -406);
       }},
      {"KeyedNumber",
       [](Host&) {
         Output number(1024);
         EXPECT_EQ(PN_GetInNo(0, nullptr, kBaud, 30, 20, 2, std::string(wire::kAskNumberPrompt).c_str(),
                              number.text()),
                   0);
         number.ExpectText("12345");
       }},
  };
}

}  // namespace

Calls PadCalls() {
  Calls all = SettingCalls();
  all.merge(KeyCalls());
  all.merge(EntryCalls());
  return all;
}

}  // namespace gwq::test
