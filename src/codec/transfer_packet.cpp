#include "codec/internal/transfer_packet.h"

#include <gwq/codec/packet.h>

namespace gwq {

void WritePacketHeader(PacketType type, std::span<const std::uint8_t> payload,
                       std::span<std::uint8_t, kPacketHeaderSize> header) {
  const auto length = static_cast<int>(payload.size());
  header[0] = 0x02;
  // The length's three low bytes end where the header ends; its highest one is overwritten by the check.
  Endian_intToChar(length, header.data() + 2);
  header[1] = static_cast<std::uint8_t>(type);
  header[2] = getLRC(payload.data(), length);
}

}  // namespace gwq
