// SPDX-License-Identifier: MIT
// Bytes as hexadecimal text.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "base/secret.h"

namespace gwq::terminal {

// Upper case.
[[nodiscard]] std::string ToHexText(std::span<const std::uint8_t> bytes);

// Either case. Nothing when the count is odd or a character is no digit.
[[nodiscard]] std::optional<SecretBytes> ReadHexText(std::string_view text);

}  // namespace gwq::terminal
