// SPDX-License-Identifier: MIT
#include "base/hex.h"

namespace gwq::terminal {
namespace {

std::optional<unsigned> Digit(char c) {
  if (c >= '0' && c <= '9') return static_cast<unsigned>(c - '0');
  if (c >= 'A' && c <= 'F') return static_cast<unsigned>(c - 'A' + 10);
  if (c >= 'a' && c <= 'f') return static_cast<unsigned>(c - 'a' + 10);
  return std::nullopt;
}

}  // namespace

std::string ToHexText(std::span<const std::uint8_t> bytes) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string text;
  text.reserve(2 * bytes.size());
  for (const std::uint8_t byte : bytes) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 0x0F];
  }
  return text;
}

std::optional<SecretBytes> ReadHexText(std::string_view text) {
  if (text.size() % 2 != 0) return std::nullopt;
  SecretBytes bytes;
  bytes.reserve(text.size() / 2);
  for (std::size_t i = 0; i < text.size(); i += 2) {
    const auto high = Digit(text[i]);
    const auto low = Digit(text[i + 1]);
    if (!high || !low) return std::nullopt;
    bytes.push_back(static_cast<std::uint8_t>(*high << 4 | *low));
  }
  return bytes;
}

}  // namespace gwq::terminal
