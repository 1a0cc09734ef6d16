// SPDX-License-Identifier: MIT
// The printable form in which raw bytes travel: each byte as two characters,
// high nibble + 0x30 and low nibble + 0x30, so "0".."9" and then ":;<=>?".
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "base/secret.h"
#include "base/types.h"

namespace gwq::terminal::protocol {

void AppendSplit(Bytes& out, std::span<const std::uint8_t> bytes);

// Nothing when the count is odd or a character is no nibble.
[[nodiscard]] std::optional<SecretBytes> MergeSplit(std::span<const std::uint8_t> characters);

}  // namespace gwq::terminal::protocol
