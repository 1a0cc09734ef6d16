// SPDX-License-Identifier: MIT
// Lets the customer on USB key a PIN and prints its block for the bank.
//
//   enter_pin KEY VERIFY ACCOUNT
//
//   KEY     the working key as the bank prepared it for this pad, in hexadecimal
//   VERIFY  what the pad checks it by
//
// Exit status 0 when there is a block.
#include <cstdio>
#include <gwq/gwq.hpp>

namespace {

using gwq::client::Error;
using gwq::client::PinRequest;
using gwq::client::Terminal;

constexpr int kTripleDes = 0;
constexpr int kDigits = 6;

std::vector<unsigned char> EnterPin(const char* key, const char* verify, const char* account) {
  const Terminal terminal;
  terminal.SetPinEntry(kTripleDes, kDigits);
  terminal.LoadWorkingKey(key, terminal.NewFactor(), verify);
  PinRequest request;
  request.account = account;
  request.algorithm = kTripleDes;
  request.digits = kDigits;
  request.prompt = "Please key your PIN";
  return terminal.PinBlock(request);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fprintf(stderr, "usage: enter_pin KEY VERIFY ACCOUNT\n");
    return 2;
  }
  try {
    const std::vector<unsigned char> block = EnterPin(argv[1], argv[2], argv[3]);
    std::printf("PIN block: ");
    for (const unsigned byte : block) std::printf("%02X", byte);
    std::printf("\n");
    return 0;
  } catch (const Error& error) {
    std::fprintf(stderr, "%s\n%s\n", error.what(), error.remedy());
    return 1;
  }
}
