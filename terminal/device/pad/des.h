// SPDX-License-Identifier: MIT
// DES and triple DES in electronic-code-book mode, the only mode in which keys
// and PIN blocks travel.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "base/secret.h"

namespace gwq::terminal {

// A key of 8 bytes is DES, one of 16 (K1 K2 K1) or 24 bytes is triple DES.
[[nodiscard]] bool IsKeyLength(std::size_t size);

// The same key as triple DES wants it. Single DES is triple DES with three equal
// keys; written so, it needs none of the ciphers that libcrypto keeps in its
// legacy provider. `key` has one of the lengths above.
inline constexpr std::size_t kTripleKeySize = 24;
[[nodiscard]] SecretBytes AsTripleKey(std::span<const std::uint8_t> key);

// `data` is a whole number of 8-byte blocks. Nothing when a length is wrong or
// the cipher is not to be had.
[[nodiscard]] std::optional<SecretBytes> Encipher(std::span<const std::uint8_t> key,
                                                  std::span<const std::uint8_t> data);
[[nodiscard]] std::optional<SecretBytes> Decipher(std::span<const std::uint8_t> key,
                                                  std::span<const std::uint8_t> data);

}  // namespace gwq::terminal
