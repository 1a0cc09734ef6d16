// SPDX-License-Identifier: MIT
// The block ciphers of the PIN pad's working keys, each in the modes it is used in.
#pragma once

#include <openssl/types.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "base/secret.h"

namespace gwq::terminal {

// As the host numbers them.
enum class Algorithm : std::uint8_t { kTripleDes = 0, kSm4 = 1 };
inline constexpr std::size_t kAlgorithms = 2;

// Triple DES has keys of 16 (K1 K2 K1) and 24 bytes, SM4 of 16.
[[nodiscard]] bool IsWorkingKeyLength(Algorithm algorithm, std::size_t size);
[[nodiscard]] std::size_t BlockSize(Algorithm algorithm);

// Whole blocks, in electronic-code-book mode. Nothing when a length is wrong.
[[nodiscard]] std::optional<SecretBytes> EncipherBlocks(Algorithm algorithm,
                                                        std::span<const std::uint8_t> key,
                                                        std::span<const std::uint8_t> data);
[[nodiscard]] std::optional<SecretBytes> DecipherBlocks(Algorithm algorithm,
                                                        std::span<const std::uint8_t> key,
                                                        std::span<const std::uint8_t> data);

// Data of any length in cipher-block-chaining mode, padded as PKCS#7 tells. The
// vector is random and stands before the result.
[[nodiscard]] std::optional<SecretBytes> EncipherData(Algorithm algorithm, std::span<const std::uint8_t> key,
                                                      std::span<const std::uint8_t> data);

// One run of a cipher of libcrypto, whose key must have the length it wants.
struct CipherRun {
  const EVP_CIPHER* cipher = nullptr;
  std::span<const std::uint8_t> key;
  const std::uint8_t* vector = nullptr;
  bool encipher = true;
  bool padded = false;
};
[[nodiscard]] std::optional<SecretBytes> RunCipher(const CipherRun& run, std::span<const std::uint8_t> data);

}  // namespace gwq::terminal
