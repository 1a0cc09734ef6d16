/* SPDX-License-Identifier: MIT */
// The bank's side of a counter session, as its security module would hold it: the keys that the terminal is
// given, and the way back from a PIN block to the PIN. An example only: real keys never stand in a program.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace example {

using Key = std::array<std::uint8_t, 16>;  // double-length triple DES
using Block = std::array<std::uint8_t, 8>;

// A new random key.
Key NewKey();

// A new random key whose enciphered form under `master` has no zero byte either: the terminal would
// end it there.
Key NewWorkingKey(const Key& master);

// `key` enciphered under `master`, block by block, as it travels to the terminal.
Key Encipher(const Key& key, const Key& master);

// Upper-case hexadecimal text.
std::string Hex(std::span<const std::uint8_t> bytes);

// Deciphers a PIN block given as 16 hexadecimal digits.
std::optional<Block> Decipher(const std::string& block_hex, const Key& key);

// The PIN in a clear block of ISO 9564 format 0 (`account` non-empty) or 1; nothing when it is no such block.
std::optional<std::string> PinIn(const Block& block, const std::string& account);

}  // namespace example
