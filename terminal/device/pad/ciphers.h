// SPDX-License-Identifier: MIT
// The block ciphers of the PIN pad's keys, each in the modes it is used in.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "base/secret.h"

namespace gwq::terminal::device {

// DES and triple DES in electronic-code-book mode, the only mode in which the keys and PIN blocks of
// the counter command set travel. A key of 8 bytes is DES, one of 16 (K1 K2 K1) or 24 bytes is triple DES.
[[nodiscard]] bool IsDesKeyLength(std::size_t size);

// `data` is a whole number of 8-byte blocks. Nothing when a length is wrong or
// the cipher is not to be had.
[[nodiscard]] std::optional<SecretBytes> EncipherDes(std::span<const std::uint8_t> key,
                                                     std::span<const std::uint8_t> data);
[[nodiscard]] std::optional<SecretBytes> DecipherDes(std::span<const std::uint8_t> key,
                                                     std::span<const std::uint8_t> data);

// The ciphers of the PIN pad's frames, as the host numbers them.
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

}  // namespace gwq::terminal::device
