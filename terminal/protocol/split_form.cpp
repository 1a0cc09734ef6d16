// SPDX-License-Identifier: MIT
#include "protocol/split_form.h"

namespace gwq::terminal::protocol {
namespace {

constexpr std::uint8_t kFirst = 0x30;
constexpr std::uint8_t kLast = 0x3F;

bool IsNibble(std::uint8_t character) {
  return character >= kFirst && character <= kLast;
}

}  // namespace

void AppendSplit(Bytes& out, std::span<const std::uint8_t> bytes) {
  for (const std::uint8_t byte : bytes) {
    out.push_back(static_cast<std::uint8_t>(kFirst + (byte >> 4)));
    out.push_back(static_cast<std::uint8_t>(kFirst + (byte & 0x0F)));
  }
}

std::optional<SecretBytes> MergeSplit(std::span<const std::uint8_t> characters) {
  if (characters.size() % 2 != 0) return std::nullopt;
  SecretBytes bytes;
  bytes.reserve(characters.size() / 2);
  for (std::size_t i = 0; i < characters.size(); i += 2) {
    if (!IsNibble(characters[i]) || !IsNibble(characters[i + 1])) return std::nullopt;
    bytes.push_back(static_cast<std::uint8_t>((characters[i] - kFirst) << 4 | (characters[i + 1] - kFirst)));
  }
  return bytes;
}

}  // namespace gwq::terminal::protocol
