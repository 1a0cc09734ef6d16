// SPDX-License-Identifier: MIT
#include "bank_keys.h"

#include <openssl/evp.h>
#include <openssl/rand.h>

#include <algorithm>
#include <memory>
#include <stdexcept>

namespace example {
namespace {

using Cipher = std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)>;

template <std::size_t N>
std::array<std::uint8_t, N> TripleDes(const std::array<std::uint8_t, N>& in, const Key& key, bool encipher) {
  const Cipher cipher(EVP_CIPHER_CTX_new(), &EVP_CIPHER_CTX_free);
  std::array<std::uint8_t, N> out{};
  int length = 0;
  const bool done = cipher &&
                    EVP_CipherInit_ex(cipher.get(), EVP_des_ede_ecb(), nullptr, key.data(), nullptr,
                                      encipher ? 1 : 0) == 1 &&
                    EVP_CIPHER_CTX_set_padding(cipher.get(), 0) == 1 &&
                    EVP_CipherUpdate(cipher.get(), out.data(), &length, in.data(), static_cast<int>(N)) == 1;
  if (!done) throw std::runtime_error("triple DES is not available");
  return out;
}

// The command set ends a key at its first zero byte, so a key with one in it could not be sent whole.
bool HasZero(const Key& key) {
  return std::find(key.begin(), key.end(), 0) != key.end();
}

// 0000 and the twelve digits before the account's check digit, one digit a nibble.
Block AccountField(const std::string& account) {
  const std::string digits = std::string(13, '0') + account;
  const std::string field = "0000" + digits.substr(digits.size() - 13, 12);
  Block block{};
  for (std::size_t i = 0; i < block.size(); ++i) {
    block.at(i) = static_cast<std::uint8_t>((field[2 * i] - '0') * 16 + (field[2 * i + 1] - '0'));
  }
  return block;
}

unsigned Nibble(const Block& block, std::size_t i) {
  return i % 2 == 0 ? block.at(i / 2) >> 4U : block.at(i / 2) & 0x0FU;
}

}  // namespace

Key NewKey() {
  Key key{};
  do {
    if (RAND_bytes(key.data(), static_cast<int>(key.size())) != 1)
      throw std::runtime_error("no random numbers");
  } while (HasZero(key));
  return key;
}

Key NewWorkingKey(const Key& master) {
  Key key = NewKey();
  while (HasZero(Encipher(key, master))) key = NewKey();
  return key;
}

Key Encipher(const Key& key, const Key& master) {
  return TripleDes(key, master, true);
}

std::string Hex(std::span<const std::uint8_t> bytes) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (const std::uint8_t byte : bytes) {
    text += kDigits[byte >> 4U];
    text += kDigits[byte & 0x0FU];
  }
  return text;
}

std::optional<Block> Decipher(const std::string& block_hex, const Key& key) {
  Block block{};
  if (block_hex.size() != 2 * block.size()) return std::nullopt;
  for (std::size_t i = 0; i < block.size(); ++i) {
    block.at(i) = static_cast<std::uint8_t>(std::stoul(block_hex.substr(2 * i, 2), nullptr, 16));
  }
  return TripleDes(block, key, false);
}

std::optional<std::string> PinIn(const Block& block, const std::string& account) {
  Block clear = block;
  if (!account.empty()) {
    const Block field = AccountField(account);
    std::transform(clear.begin(), clear.end(), field.begin(), clear.begin(), std::bit_xor<>());
  }
  const unsigned format = account.empty() ? 1 : 0;
  const unsigned length = Nibble(clear, 1);
  if (Nibble(clear, 0) != format || length < 1 || length > 14) return std::nullopt;
  std::string pin;
  for (std::size_t i = 2; i < 2 + length; ++i) {
    if (Nibble(clear, i) > 9) return std::nullopt;
    pin += static_cast<char>('0' + Nibble(clear, i));
  }
  return pin;
}

}  // namespace example
