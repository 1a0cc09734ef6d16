// SPDX-License-Identifier: MIT
// Reads captures, whoever made them: pcapng, and pcap of either byte order with micro- or nanoseconds.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>

#include "recording/transfer.h"

namespace gwq::terminal::recording {

// Numbers at the front of bytes that may end too early or hold anything.
class ByteReader {
 public:
  ByteReader(std::span<const std::uint8_t> bytes, bool big_endian) : rest_(bytes), big_endian_(big_endian) {}

  // All throw std::runtime_error when there is not that much.
  template <typename T>
  T Take() {
    const auto bytes = TakeBytes(sizeof(T));
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < sizeof(T); ++i)
      value = value << 8 | bytes[big_endian_ ? i : sizeof(T) - 1 - i];
    return static_cast<T>(value);
  }
  std::span<const std::uint8_t> TakeBytes(std::size_t count);

  [[nodiscard]] std::size_t Left() const { return rest_.size(); }
  [[nodiscard]] bool BigEndian() const { return big_endian_; }

 private:
  std::span<const std::uint8_t> rest_;
  bool big_endian_;
};

struct CapturedPacket {
  std::uint16_t link_type = 0;
  bool big_endian = false;
  std::int64_t time_us = 0;
  std::span<const std::uint8_t> data;  // of the file
  bool cut = false;                    // the packet was longer
  std::string_view comment;            // of the file
};
using PacketVisitor = std::function<void(const CapturedPacket&)>;

[[nodiscard]] bool IsCapture(std::span<const std::uint8_t> file);

// Throws std::runtime_error with what is wrong with the file, and where.
void ReadCapture(std::span<const std::uint8_t> file, const PacketVisitor& visit);

}  // namespace gwq::terminal::recording
