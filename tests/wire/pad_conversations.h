// SPDX-License-Identifier: MIT
// Conversations with the PIN pad.
#pragma once

#include "wire/conversation.h"
#include "wire/frames.h"

namespace gwq::wire {

inline Exchange Framed(std::string_view body, const test::Bytes& data = {}, unsigned status = 0) {
  return {PinPadFrame(body), PinPadAnswer(status, data)};
}
inline Exchange Framed(std::string_view body, std::string_view data) {
  return Framed(body, test::BytesOf(data));
}

inline Exchanges LoadPadKey() {
  return {Framed(kReadFactor, kFactor), Framed(kLoadKeyType1, {0}, kKeyType1Confirmed)};
}

// As the terminal sends a file: its content, then the end.
inline Exchanges Pulled(std::string_view request, std::string_view content) {
  return {Exchange(request, TransferPacket(2, test::BytesOf(content))),
          Exchange(kAccepted, TransferPacket(3, {})), Exchange(kAccepted)};
}

inline std::vector<Conversation> PadConversations() {
  return {
      {"EncryptionType", {Framed(kSetEnType1), Framed(kGetEnType, test::Bytes{1})}},
      {"PadPinLength", {Framed(kSetPinLen6), Framed(kGetPinLen, test::Bytes{6})}},
      {"EndRule", {Framed(kSetEndRule0)}},
      {"EndRuleThatThePadDoesNotHave", {Framed(kSetEndRule2, {}, kBadPadArgument)}},
      {"FillType", {Framed(kFillWithOnes)}},
      {"PinMode", {Framed(kSetPinMode1)}},
      {"SoundType", {Framed(kSetSound1)}},
      {"Account", {Framed(kAccount19)}},
      {"DeviceId", {Exchange(kWriteDeviceId, kDone), Framed(kReadDeviceId, "SN-20231114")}},
      {"FactorOfType1", {Framed(kMakeFactor1), Framed(kReadFactor, kFactor)}},
      {"FactorOfType2", {Framed(kMakeFactor2, kFactor)}},
      {"PublicKey", {Framed(kPublicKey256, kSm2Generator)}},
      {"Digest", {Framed(kSm3OfAbc, kSm3DigestOfAbc)}},
      {"PadKeyOfType1", LoadPadKey()},
      {"PadKeyOfType2", {Framed(kMakeFactor2, kFactor), Framed(kLoadKeyType2, {0}, kKeyType2Confirmed)}},
      {"PadKeyWithoutAFactor", {Framed(kLoadKeyType1, {1}, kKeyType1Confirmed)}},
      {"PadPin", LoadPadKey() + Exchanges{Framed(kEnterPin30, kPadPinBlock)}},
      {"PadPinShowingAText", LoadPadKey() + Exchanges{Framed(kEnterPinShowing, kPadPinBlock)}},
      {"EncipheredText",
       LoadPadKey() +
           Exchanges{Exchange(kGetFirmwareVersion, kFirmwareVersion), Exchange(kEncipher, kEnciphered)} +
           Pulled(kPullEnciphered, kEncipheredHex)},
      {"EncipheredTextWithoutAKey",
       {Exchange(kGetFirmwareVersion, kFirmwareVersion), Exchange(kEncipher, kRefused)}},
      {"KeyedNumber", {Exchange(kAskNumber, kNumberKeyed)}},
  };
}

}  // namespace gwq::wire
