// SPDX-License-Identifier: MIT
// XOR of all bytes, the checksum of every frame and packet.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <span>

#include "codec/internal/lanes.h"

namespace gwq {

// Four independent accumulators: a single one would serialise on its own latency.
using XorGroup = Halves[4];

inline std::uint8_t XorOfBytes(Halves halves) {
  std::uint64_t word = halves[0] ^ halves[1];
  for (const unsigned shift : {32U, 16U, 8U}) word ^= word >> shift;
  return static_cast<std::uint8_t>(word);
}

// XOR of the whole groups at the start of `bytes`.
inline Halves XorOfGroups(std::span<const std::uint8_t> bytes) {
  XorGroup folded = {};
  for (; bytes.size() >= sizeof folded; bytes = bytes.subspan(sizeof folded)) {
    for (std::size_t i = 0; i < std::size(folded); ++i) {
      folded[i] ^= reinterpret_cast<Halves>(LoadBlock(bytes.data() + i * kBlockSize));
    }
  }
  const Halves all = folded[0] ^ folded[1] ^ folded[2] ^ folded[3];
  // For a single group the accumulators equal the input: clear them, so that unoptimised builds
  // leave no secret on the stack.
  for (Halves& accumulator : folded) accumulator = Halves{};
  return all;
}

inline std::uint8_t XorFold(std::span<const std::uint8_t> bytes, std::uint8_t folded = 0) {
  Halves blocks = {folded, 0};
  if (bytes.size() >= sizeof(XorGroup)) {
    blocks ^= XorOfGroups(bytes);
    bytes = bytes.last(bytes.size() % sizeof(XorGroup));
  }
  for (; bytes.size() >= kBlockSize; bytes = bytes.subspan(kBlockSize)) {
    blocks ^= reinterpret_cast<Halves>(LoadBlock(bytes.data()));
  }
  folded = XorOfBytes(blocks);
  blocks = Halves{};
  for (const std::uint8_t byte : bytes) folded = static_cast<std::uint8_t>(folded ^ byte);
  return folded;
}

}  // namespace gwq
