// XOR of all bytes: the check of every frame and packet.
#pragma once

#include <cstdint>
#include <span>

#include "codec/lanes.h"

namespace gwq {

// Four chains, for one would wait for itself.
using XorGroup = Halves[4];

// XOR of the whole groups at the start of `bytes`. Out of line, so that short texts pass by it quickly.
[[gnu::noinline]] inline std::uint8_t XorOfGroups(std::span<const std::uint8_t> bytes) {
  XorGroup folded = {};
  for (; bytes.size() >= sizeof folded; bytes = bytes.subspan(sizeof folded)) {
    for (std::size_t i = 0; i < std::size(folded); ++i) {
      folded[i] ^= reinterpret_cast<Halves>(LoadBlock(bytes.data() + i * kBlockSize));
    }
  }
  const Halves halves = folded[0] ^ folded[1] ^ folded[2] ^ folded[3];
  std::uint64_t word = halves[0] ^ halves[1];
  for (const unsigned shift : {32U, 16U, 8U}) word ^= word >> shift;
  return static_cast<std::uint8_t>(word);
}

inline std::uint8_t XorFold(std::span<const std::uint8_t> bytes, std::uint8_t folded = 0) {
  if (bytes.size() >= sizeof(XorGroup)) {
    folded = static_cast<std::uint8_t>(folded ^ XorOfGroups(bytes));
    bytes = bytes.last(bytes.size() % sizeof(XorGroup));
  }
  for (const std::uint8_t byte : bytes) folded = static_cast<std::uint8_t>(folded ^ byte);
  return folded;
}

}  // namespace gwq
