// SPDX-License-Identifier: MIT
// Clear PIN blocks of ISO 9564: 16 nibbles in 8 bytes.
//
//   format 1 (no account)   1 L P P P P r r ...   r: random filler
//   format 0 (account)      0 L P P P P F F ...
//                       xor 0 0 0 0 A A A A ...   A: twelve digits of the account
//
// L is the number of digits P, 1 to 14.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "base/secret.h"

namespace gwq::terminal::device {

inline constexpr std::size_t kMaxPinDigits = 14;

// Nothing when `digits` (characters "0".."9") cannot stand in a block or no
// random numbers are to be had.
[[nodiscard]] std::optional<SecretBytes> PinBlockWithoutAccount(std::span<const std::uint8_t> digits);

// Takes the rightmost twelve digits before the account's last one, the check
// digit; a shorter account is filled with zeros on the left. Nothing when a
// character of either is no digit.
[[nodiscard]] std::optional<SecretBytes> PinBlockWithAccount(std::span<const std::uint8_t> digits,
                                                             std::string_view account);

// What goes into a block of format 0: at most twelve digits of the account, and
// the filler nibble, which need not be F.
struct AccountAndFiller {
  std::string_view account;
  std::uint8_t filler = 0x0F;
};
[[nodiscard]] std::optional<SecretBytes> PinBlockOfFormat0(std::span<const std::uint8_t> digits,
                                                           const AccountAndFiller& with);

// The twelve digits that stand for a whole account; fewer if it is shorter.
[[nodiscard]] std::string_view AccountPart(std::string_view account);

}  // namespace gwq::terminal::device
