// XOR of all bytes: the check of every frame and packet.
#pragma once

#include <cstdint>
#include <span>

#include "codec/internal/lanes.h"

namespace gwq {

// Four chains, for one would wait for itself.
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
  // Of one group they are its very bytes. An optimised build has them in registers; others keep them on the stack.
  for (Halves& chain : folded) chain = Halves{};
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
