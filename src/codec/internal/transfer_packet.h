// The transfer packet, in which files travel both ways:
//
//     offset  0    1     2                3..5                          6
//             STX  type  XOR of payload   length, 24-bit, big-endian    payload
#pragma once

#include <cstdint>
#include <span>

namespace gwq {

enum class PacketType : std::uint8_t { kNone = 0, kStart = 1, kData = 2, kEnd = 3 };

inline constexpr std::size_t kPacketHeaderSize = 6;

// Writes the header for `payload`, which stands behind it already or follows.
void WritePacketHeader(PacketType type, std::span<const std::uint8_t> payload,
                       std::span<std::uint8_t, kPacketHeaderSize> header);

}  // namespace gwq
