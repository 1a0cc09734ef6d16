// SPDX-License-Identifier: MIT
// Sixteen bytes at a time, in the vector types of GCC and Clang: SSE2 on x86-64, NEON on 64-bit
// Arm. A rule for one character is written once, as a template for a byte and for a block.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace gwq {

static_assert(std::endian::native == std::endian::little, "a pair of characters is read as one 16-bit word");

inline constexpr std::size_t kBlockSize = 16;
inline constexpr std::size_t kHalfBlock = kBlockSize / 2;

using Block = std::uint8_t __attribute__((vector_size(kBlockSize)));
using Words = std::uint16_t __attribute__((vector_size(kBlockSize)));
using Halves = std::uint64_t __attribute__((vector_size(kBlockSize)));

inline Block LoadBlock(const void* from) {
  Block block;
  std::memcpy(&block, from, sizeof block);
  return block;
}

inline std::uint64_t LoadWord(const void* from) {
  std::uint64_t word = 0;
  std::memcpy(&word, from, sizeof word);
  return word;
}

// Eight bytes, followed by eight zeros.
inline Block LoadHalf(const void* from) {
  return reinterpret_cast<Block>(Halves{LoadWord(from), 0});
}

inline void StoreBlock(Block block, void* to) {
  std::memcpy(to, &block, sizeof block);
}

// The first eight bytes.
inline void StoreHalf(Block block, void* to) {
  const std::uint64_t half = reinterpret_cast<Halves>(block)[0];
  std::memcpy(to, &half, sizeof half);
}

inline Block InterleaveFirst(Block a, Block b) {
  return __builtin_shufflevector(a, b, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
}

inline Block InterleaveLast(Block a, Block b) {
  return __builtin_shufflevector(a, b, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
}

inline Block OddBytes(Block a, Block b) {
  return __builtin_shufflevector(a, b, 1, 3, 5, 7, 9, 11, 13, 15, 17, 19, 21, 23, 25, 27, 29, 31);
}

// `value` where the comparison is true, else 0.
inline std::uint8_t ValueIf(bool comparison, std::uint8_t value) {
  return comparison ? value : std::uint8_t{0};
}
template <typename Comparison>
Block ValueIf(Comparison comparison, std::uint8_t value) {
  return reinterpret_cast<Block>(comparison) & value;
}

// Whether first <= c <= last.
template <typename T>
auto InRange(T c, std::uint8_t first, std::uint8_t last) {
  const auto width = static_cast<std::uint8_t>(last - first);
  return static_cast<T>(c - first) <= width;
}

inline bool Or(bool a, bool b) {
  return a || b;
}
template <typename Comparison>
Comparison Or(Comparison a, Comparison b) {
  return a | b;
}

template <typename Comparison>
bool AllTrue(Comparison comparison) {
  const auto halves = reinterpret_cast<Halves>(comparison);
  return (halves[0] & halves[1]) == ~std::uint64_t{0};
}

}  // namespace gwq
