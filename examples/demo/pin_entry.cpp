// SPDX-License-Identifier: MIT
#include "pin_entry.h"

#include <cstring>

#include "steps.h"

namespace example {
namespace {

constexpr int kEntrySeconds = 30;
constexpr int kBoundToAccount = 1;
constexpr int kRsa = 1;
constexpr int kSm2 = 2;

std::string PublicKey(int baud, int kind, int bits) {
  std::string key(4096, '\0');
  Check("PN_ObtainPublicKey", PN_ObtainPublicKey(0, nullptr, baud, kind, bits, key.data()),
        "reading the public key");
  key.resize(std::strlen(key.c_str()));
  Say(kind == kRsa ? "the pad's RSA modulus" : "the pad's SM2 point", Short(key));
  return key;
}

std::string NewFactor(int baud) {
  std::string factor(1024, '\0');
  Check("PN_ObtainFactor", PN_ObtainFactor(0, nullptr, baud, "1", factor.data()), "having a factor made");
  factor.resize(std::strlen(factor.c_str()));
  Say("the pad's new factor", factor);
  return factor;
}

void Load(int baud, const std::string& enciphered, const std::string& verify_key) {
  const std::string factor = NewFactor(baud);
  Check("PN_DownloadPinPadWK",
        PN_DownloadPinPadWK(0, nullptr, baud, factor.c_str(), "1", enciphered.c_str(), verify_key.c_str()),
        "loading the working key");
  Say("working key for this pad", Short(enciphered));
  Say("verify key, accepted", verify_key);
}

}  // namespace

Key LoadWorkingKey(int baud, Algorithm algorithm) {
  Check("PN_SetPinPadParameter",
        PN_SetPinPadParameter(0, nullptr, baud, static_cast<int>(algorithm), kPinDigits, 0, "F"),
        "setting the entry's parameters");
  const Key key = NewKey();
  const std::string enciphered = algorithm == Algorithm::kSm4
                                     ? EncipherForSm2(key, PublicKey(baud, kSm2, 256))
                                     : EncipherForRsa(key, PublicKey(baud, kRsa, 2048));
  Load(baud, enciphered, VerifyKey(key, algorithm));
  return key;
}

std::string EnterPin(int baud, const std::string& account, const Key& key, Algorithm algorithm) {
  char factor[1024] = "";
  unsigned char block[1024] = {};
  int length = kPinDigits;
  Check("PN_GetPinBlockShowString",
        PN_GetPinBlockShowString(0, nullptr, baud, kEntrySeconds, static_cast<int>(algorithm), 0,
                                 kBoundToAccount, account.c_str(), factor, block, &length,
                                 "Please key your PIN"),
        "reading a PIN block");
  std::string hex(2 * sizeof block + 1, '\0');
  hex.resize(static_cast<std::size_t>(HexToAscii(block, length, hex.data())));
  const auto pin = PinInPadBlock({block, static_cast<std::size_t>(length)}, key, algorithm, account);
  Say("PIN block", hex);
  Say("recovered from it by the bank", pin.value_or("(unreadable)"));
  if (!pin) throw std::runtime_error("the PIN block does not hold a PIN");
  return *pin;
}

}  // namespace example
