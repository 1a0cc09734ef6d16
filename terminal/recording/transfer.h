// SPDX-License-Identifier: MIT
// What passes on the wire between host and terminal, as recordings have it.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "base/types.h"

namespace gwq::terminal::recording {

enum class Wire { kUsb, kSerial };

// The numbers that the kernel's own captures have.
enum class TransferType : std::uint8_t { kIsochronous = 0, kInterrupt = 1, kControl = 2, kBulk = 3 };

struct MaskedSpan {
  std::size_t offset = 0;
  std::size_t size = 0;
  friend bool operator==(const MaskedSpan&, const MaskedSpan&) = default;
};
using Masks = std::vector<MaskedSpan>;  // in order, apart from each other

inline constexpr std::uint8_t kMaskByte = '*';
inline constexpr std::uint8_t kInBit = 0x80;

// On a serial line each piece of the stream is one.
struct WireTransfer {
  std::int64_t time_us = 0;  // when it ended, since some beginning
  Wire wire = Wire::kUsb;
  TransferType type = TransferType::kInterrupt;
  std::uint8_t endpoint = 0;            // kInBit set: towards the host; of serial lines only this bit
  std::array<std::uint8_t, 8> setup{};  // of control transfers
  int status = 0;                       // 0 or a negative error number
  std::size_t length = 0;               // what the host offered, or asked for
  Bytes data;                           // what was moved
  Masks masks;                          // which of the data are not told

  [[nodiscard]] bool ToHost() const { return (endpoint & kInBit) != 0; }
};

inline void ApplyMasks(Bytes& data, const Masks& masks) {
  for (const MaskedSpan& span : masks) {
    for (std::size_t i = span.offset; i < span.offset + span.size; ++i) data.at(i) = kMaskByte;
  }
}

// Those that remain of the first `size` bytes.
inline Masks CutMasks(const Masks& masks, std::size_t size) {
  Masks cut;
  for (const MaskedSpan& span : masks) {
    if (span.offset < size) cut.push_back({span.offset, std::min(span.size, size - span.offset)});
  }
  return cut;
}

}  // namespace gwq::terminal::recording
