// SPDX-License-Identifier: MIT
#include "device/pad/pin_block.h"

#include <openssl/rand.h>

#include <algorithm>

namespace gwq::terminal::device {
namespace {

constexpr std::size_t kNibbles = 16;
constexpr std::size_t kAccountDigits = 12;

template <typename Range>
bool AreDigits(const Range& range) {
  return std::all_of(range.begin(), range.end(), [](auto c) { return c >= '0' && c <= '9'; });
}

bool CanStandInBlock(std::span<const std::uint8_t> digits) {
  return !digits.empty() && digits.size() <= kMaxPinDigits && AreDigits(digits);
}

// Puts the format, the length and the digits before the filler that is already there.
void PutPin(SecretBytes& nibbles, std::uint8_t format, std::span<const std::uint8_t> digits) {
  nibbles[0] = format;
  nibbles[1] = static_cast<std::uint8_t>(digits.size());
  for (std::size_t i = 0; i < digits.size(); ++i) {
    nibbles[2 + i] = static_cast<std::uint8_t>(digits[i] - '0');
  }
}

SecretBytes Join(const SecretBytes& nibbles) {
  SecretBytes bytes(nibbles.size() / 2);
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    bytes[i] = static_cast<std::uint8_t>((nibbles[2 * i] << 4) | (nibbles[2 * i + 1] & 0x0F));
  }
  return bytes;
}

}  // namespace

std::optional<SecretBytes> PinBlockWithoutAccount(std::span<const std::uint8_t> digits) {
  if (!CanStandInBlock(digits)) return std::nullopt;
  SecretBytes nibbles(kNibbles);
  if (RAND_bytes(nibbles.data(), static_cast<int>(nibbles.size())) != 1) return std::nullopt;
  for (std::uint8_t& nibble : nibbles) nibble &= 0x0F;
  PutPin(nibbles, 1, digits);
  return Join(nibbles);
}

std::optional<SecretBytes> PinBlockWithAccount(std::span<const std::uint8_t> digits,
                                               std::string_view account) {
  if (!AreDigits(account)) return std::nullopt;
  return PinBlockOfFormat0(digits, {AccountPart(account)});
}

std::optional<SecretBytes> PinBlockOfFormat0(std::span<const std::uint8_t> digits,
                                             const AccountAndFiller& with) {
  if (!CanStandInBlock(digits) || !AreDigits(with.account) || with.account.size() > kAccountDigits)
    return std::nullopt;
  SecretBytes nibbles(kNibbles, with.filler);
  PutPin(nibbles, 0, digits);
  const std::size_t start = kNibbles - with.account.size();
  for (std::size_t i = 0; i < with.account.size(); ++i) {
    nibbles[start + i] ^= static_cast<std::uint8_t>(with.account[i] - '0');
  }
  return Join(nibbles);
}

std::string_view AccountPart(std::string_view account) {
  if (account.empty()) return account;
  account.remove_suffix(1);
  return account.substr(account.size() - std::min(account.size(), kAccountDigits));
}

}  // namespace gwq::terminal::device
