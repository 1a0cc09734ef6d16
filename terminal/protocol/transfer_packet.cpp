// SPDX-License-Identifier: MIT
#include "protocol/transfer_packet.h"

#include <algorithm>

#include "protocol/marks.h"

namespace gwq::terminal::protocol {

PacketHeader ReadPacketHeader(std::span<const std::uint8_t, kPacketHeaderSize> bytes) {
  const std::size_t length = (std::size_t{bytes[3]} << 16) | (std::size_t{bytes[4]} << 8) | bytes[5];
  return {bytes[1], bytes[2], length};
}

void WritePacketHeader(const PacketHeader& header, std::span<std::uint8_t, kPacketHeaderSize> out) {
  out[0] = kStx;
  out[1] = header.type;
  out[2] = header.check;
  out[3] = static_cast<std::uint8_t>(header.length >> 16);
  out[4] = static_cast<std::uint8_t>(header.length >> 8);
  out[5] = static_cast<std::uint8_t>(header.length);
}

std::uint8_t FoldXor(std::span<const std::uint8_t> bytes, std::uint8_t start) {
  std::uint8_t folded = start;
  for (const std::uint8_t byte : bytes) folded = static_cast<std::uint8_t>(folded ^ byte);
  return folded;
}

Bytes MakePacket(PacketType type, std::span<const std::uint8_t> payload) {
  Bytes packet(kPacketHeaderSize + payload.size());
  const PacketHeader header{static_cast<std::uint8_t>(type), FoldXor(payload), payload.size()};
  WritePacketHeader(header, std::span(packet).first<kPacketHeaderSize>());
  std::copy(payload.begin(), payload.end(), packet.begin() + kPacketHeaderSize);
  return packet;
}

}  // namespace gwq::terminal::protocol
