// What a bank buys the PIN pad for: a working key is prepared for this very pad, the customer keys a PIN, and the
// bank recovers it from the PIN block. Once with RSA and triple DES, once with SM2 and SM4; at the end the terminal
// enciphers a text, and the customer keys a number.
//
//   pin_session [ACCOUNT]
//
// Exit status 0 when every step went as it should and the same PIN came out of both blocks.
#include <gwq.h>

#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <string>

#include "bank_pad.h"

namespace {

using example::Algorithm;

constexpr int kBaud = 115200;
constexpr int kPinDigits = 6;
constexpr int kEntrySeconds = 30;
constexpr int kBoundToAccount = 1;
constexpr int kRsa = 1;
constexpr int kSm2 = 2;

void Check(int status, const char* step) {
  if (status == GWQ_OK) return;
  throw std::runtime_error(std::string(step) + " failed with status " + std::to_string(status));
}

void Say(const char* asked, const std::string& came_back) {
  std::printf("  %-34s %s\n", asked, came_back.c_str());
}

std::string Short(const std::string& text) {
  constexpr std::size_t kShown = 32;
  return text.size() <= kShown ? text
                               : text.substr(0, kShown) + "... (" + std::to_string(text.size()) + " digits)";
}

std::string PublicKey(int kind, int bits) {
  std::string key(4096, '\0');
  Check(PN_ObtainPublicKey(0, nullptr, kBaud, kind, bits, key.data()), "reading the public key");
  key.resize(std::strlen(key.c_str()));
  Say(kind == kRsa ? "the pad's RSA modulus" : "the pad's SM2 point", Short(key));
  return key;
}

std::string NewFactor() {
  std::string factor(1024, '\0');
  Check(PN_ObtainFactor(0, nullptr, kBaud, "1", factor.data()), "having a factor made");
  factor.resize(std::strlen(factor.c_str()));
  Say("the pad's new factor", factor);
  return factor;
}

void LoadKey(const example::Key& key, Algorithm algorithm, const std::string& enciphered) {
  const std::string verify = VerifyKey(key, algorithm);
  Check(PN_DownloadPinPadWK(0, nullptr, kBaud, NewFactor().c_str(), "1", enciphered.c_str(), verify.c_str()),
        "loading the working key");
  Say("working key for this pad", Short(enciphered));
  Say("verify key, accepted", verify);
}

example::Key LoadWorkingKey(Algorithm algorithm) {
  Check(PN_SetPinPadParameter(0, nullptr, kBaud, static_cast<int>(algorithm), kPinDigits, 0, "F"),
        "setting the entry's parameters");
  const example::Key key = example::NewKey();
  LoadKey(key, algorithm,
          algorithm == Algorithm::kSm4 ? example::EncipherForSm2(key, PublicKey(kSm2, 256))
                                       : example::EncipherForRsa(key, PublicKey(kRsa, 2048)));
  return key;
}

std::string EnterPin(const std::string& account, const example::Key& key, Algorithm algorithm) {
  char factor[1024] = "";
  unsigned char block[1024] = {};
  int length = kPinDigits;
  Check(PN_GetPinBlockShowString(0, nullptr, kBaud, kEntrySeconds, static_cast<int>(algorithm), 0,
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

std::string Enter(const std::string& account, Algorithm algorithm) {
  std::printf("%s\n", algorithm == Algorithm::kSm4 ? "SM2 and SM4" : "RSA and triple DES");
  return EnterPin(account, LoadWorkingKey(algorithm), algorithm);
}

void EncipherText() {
  const std::string text = "amount 1,250.00 to account 6225880123456789";
  std::string file(1 << 16, '\0');
  std::string answer(4097, '\0');
  int length = static_cast<int>(text.size());
  Check(PN_GetStringBlock(0, nullptr, kBaud, kEntrySeconds, static_cast<int>(Algorithm::kSm4), text.c_str(),
                          file.data(), &length, answer.data()),
        "enciphering a text");
  Say("a text, enciphered by the terminal", Short(answer.c_str()));
}

void AskNumber() {
  std::string number(1025, '\0');
  Check(PN_GetInNo(0, nullptr, kBaud, kEntrySeconds, 11, 0, "请输入手机号码", number.data()),
        "asking for a number");
  Say("the number that was asked for", number.c_str());
}

void Run(const std::string& account) {
  std::printf("PIN pad session, account %s\n", account.c_str());
  char id[1024] = "";
  Check(PN_ReadDeviceId(0, nullptr, kBaud, id), "reading the serial number");
  Say("the terminal's serial number", id);
  const std::string pin = Enter(account, Algorithm::kTripleDes);
  if (Enter(account, Algorithm::kSm4) != pin) throw std::runtime_error("the two blocks hold different PINs");
  EncipherText();
  AskNumber();
  std::printf("Session complete.\n");
}

}  // namespace

int main(int argc, char** argv) {
  try {
    Run(argc > 1 ? argv[1] : "6225880123456789");
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "pin_session: %s\n", error.what());
    return 1;
  }
}
