// SPDX-License-Identifier: MIT
// What a bank buys the PIN pad for: a working key is prepared for this very pad, the customer keys
// a PIN, and the bank recovers it from the PIN block. Once with RSA and triple DES, once with SM2
// and SM4; at the end the terminal enciphers a text, and the customer keys a number.
//
//   pin_session [ACCOUNT]
//
// Exit status 0 when every step went as it should and the same PIN came out of both blocks.
#include <vector>

#include "pin_entry.h"
#include "steps.h"

namespace {

using example::Algorithm;
using example::Check;
using example::Say;

constexpr int kBaud = 115200;
constexpr int kSeconds = 30;

std::string Enter(const std::string& account, Algorithm algorithm) {
  std::printf("%s\n", algorithm == Algorithm::kSm4 ? "SM2 and SM4" : "RSA and triple DES");
  const example::Key key = example::LoadWorkingKey(kBaud, algorithm);
  return example::EnterPin(kBaud, account, key, algorithm);
}

void EncipherText() {
  const std::string text = "amount 1,250.00 to account 6225880123456789";
  std::vector<char> file(1 << 16);
  std::vector<char> answer(4097);
  int length = static_cast<int>(text.size());
  Check("PN_GetStringBlock",
        PN_GetStringBlock(0, nullptr, kBaud, kSeconds, static_cast<int>(Algorithm::kSm4), text.c_str(),
                          file.data(), &length, answer.data()),
        "enciphering a text");
  Say("a text, enciphered by the terminal", example::Short(answer.data()));
}

void AskNumber() {
  std::vector<char> number(1025);
  Check("PN_GetInNo", PN_GetInNo(0, nullptr, kBaud, kSeconds, 11, 0, "请输入手机号码", number.data()),
        "asking for a number");
  Say("the number that was asked for", number.data());
}

void Session(const std::string& account) {
  std::printf("PIN pad session, account %s\n", account.c_str());
  char id[1024] = "";
  Check("PN_ReadDeviceId", PN_ReadDeviceId(0, nullptr, kBaud, id), "reading the serial number");
  Say("the terminal's serial number", id);
  const std::string pin = Enter(account, Algorithm::kTripleDes);
  if (Enter(account, Algorithm::kSm4) != pin) throw std::runtime_error("the two blocks hold different PINs");
  EncipherText();
  AskNumber();
}

}  // namespace

int main(int argc, char** argv) {
  return example::Run("pin_session", [&] { Session(argc > 1 ? argv[1] : "6225880123456789"); });
}
