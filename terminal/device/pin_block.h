// Clear PIN blocks of ISO 9564: 16 nibbles in 8 bytes.
//
//   format 1 (no account)   1 L P P P P r r ...   r: random filler
//   format 0 (account)      0 L P P P P F F ...
//                       xor 0 0 0 0 A A A A ...   A: twelve digits of the account
//
// L is the number of digits P, 1 to 14.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

#include "device/secret.h"

namespace gwq::terminal {

inline constexpr std::size_t kMostPinDigits = 14;

// Nothing when `digits` (characters "0".."9") cannot stand in a block or no
// random numbers are to be had.
[[nodiscard]] std::optional<SecretBytes> PinBlockWithoutAccount(std::span<const std::uint8_t> digits);

// Takes the rightmost twelve digits before the account's last one, the check
// digit; a shorter account is filled with zeros on the left. Nothing when a
// character of either is no digit.
[[nodiscard]] std::optional<SecretBytes> PinBlockWithAccount(std::span<const std::uint8_t> digits,
                                                             std::string_view account);

}  // namespace gwq::terminal
