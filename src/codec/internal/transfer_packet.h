// SPDX-License-Identifier: MIT
// The packet that carries files in both directions:
//
//     offset  0    1     2                3..5                          6
//             STX  type  XOR of payload   length, 24-bit, big-endian    payload
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace gwq {

enum class PacketType : std::uint8_t { kNone = 0, kStart = 1, kData = 2, kEnd = 3 };

inline constexpr std::size_t kPacketHeaderSize = 6;

// Writes the header of `payload`.
void WritePacketHeader(PacketType type, std::span<const std::uint8_t> payload,
                       std::span<std::uint8_t, kPacketHeaderSize> header);

}  // namespace gwq
