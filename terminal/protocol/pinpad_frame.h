// SPDX-License-Identifier: MIT
// The PIN-pad frame. Between its marks every byte is in split form:
//
//   STX | length hi, lo | body ... | LRC (XOR of the body) | ETX
//
// A request's body is the command (two bytes) and its arguments; an answer's
// body is a status word, high byte first, and data.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "base/secret.h"
#include "base/types.h"

namespace gwq::terminal::protocol {

// The body; nothing when marks, nibbles, length or LRC are not right.
[[nodiscard]] std::optional<SecretBytes> ReadFrame(std::span<const std::uint8_t> frame);

// At most 65533 bytes of data, as the length has two bytes and counts the status word.
[[nodiscard]] Bytes MakeAnswerFrame(std::uint16_t status, std::span<const std::uint8_t> data);

}  // namespace gwq::terminal::protocol
