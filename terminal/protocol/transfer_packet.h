// SPDX-License-Identifier: MIT
// The packets in which files travel, in both directions.
//
//   offset  0    1     2      3..5                       6
//           STX  type  check  length (24-bit, big-end.)  payload
//
//   check: XOR of the payload, 0 when there is none
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "base/types.h"

namespace gwq::terminal::protocol {

inline constexpr std::size_t kPacketHeaderSize = 6;
// USB carries packets in zero-padded reports of this size.
inline constexpr std::size_t kPacketReportSize = 1024;

enum class PacketType : std::uint8_t { kStart = 1, kData = 2, kEnd = 3 };

struct PacketHeader {
  std::uint8_t type = 0;
  std::uint8_t check = 0;
  std::size_t length = 0;

  [[nodiscard]] bool Is(PacketType wanted) const { return type == static_cast<std::uint8_t>(wanted); }
};

[[nodiscard]] PacketHeader ReadPacketHeader(std::span<const std::uint8_t, kPacketHeaderSize> bytes);
void WritePacketHeader(const PacketHeader& header, std::span<std::uint8_t, kPacketHeaderSize> out);

[[nodiscard]] std::uint8_t FoldXor(std::span<const std::uint8_t> bytes, std::uint8_t start = 0);

[[nodiscard]] Bytes MakePacket(PacketType type, std::span<const std::uint8_t> payload);

}  // namespace gwq::terminal::protocol
