// SPDX-License-Identifier: MIT
#include "codec/internal/transfer_packet.h"

#include "codec/internal/xor_fold.h"

namespace gwq {

void WritePacketHeader(PacketType type, std::span<const std::uint8_t> payload,
                       std::span<std::uint8_t, kPacketHeaderSize> header) {
  header[0] = 0x02;
  header[1] = static_cast<std::uint8_t>(type);
  header[2] = XorFold(payload);
  header[3] = static_cast<std::uint8_t>(payload.size() >> 16U);
  header[4] = static_cast<std::uint8_t>(payload.size() >> 8U);
  header[5] = static_cast<std::uint8_t>(payload.size());
}

}  // namespace gwq
