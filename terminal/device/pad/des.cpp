// SPDX-License-Identifier: MIT
#include "device/pad/des.h"

#include <openssl/evp.h>

#include "device/pad/ciphers.h"

namespace gwq::terminal {
namespace {

constexpr std::size_t kBlock = 8;

std::optional<SecretBytes> Run(std::span<const std::uint8_t> key, std::span<const std::uint8_t> data,
                               bool encipher) {
  if (!IsKeyLength(key.size()) || data.size() % kBlock != 0) return std::nullopt;
  const SecretBytes triple = AsTripleKey(key);
  return RunCipher({EVP_des_ede3_ecb(), triple, nullptr, encipher, false}, data);
}

}  // namespace

bool IsKeyLength(std::size_t size) {
  return size == kBlock || size == 2 * kBlock || size == kTripleKeySize;
}

SecretBytes AsTripleKey(std::span<const std::uint8_t> key) {
  SecretBytes triple = CopySecret(key);
  triple.reserve(kTripleKeySize);
  for (std::size_t i = 0; triple.size() < kTripleKeySize; ++i) triple.push_back(key[i % key.size()]);
  return triple;
}

std::optional<SecretBytes> Encipher(std::span<const std::uint8_t> key, std::span<const std::uint8_t> data) {
  return Run(key, data, true);
}

std::optional<SecretBytes> Decipher(std::span<const std::uint8_t> key, std::span<const std::uint8_t> data) {
  return Run(key, data, false);
}

}  // namespace gwq::terminal
