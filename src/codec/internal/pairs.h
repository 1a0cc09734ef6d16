// SPDX-License-Identifier: MIT
// Bytes to pairs of characters and back, for the text forms with one character per nibble: a form's
// digit or value is a rule as in lanes.h. Reads and writes stay within the spans; joining in place
// is allowed.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

#include "codec/internal/lanes.h"

namespace gwq {

struct SplitDigit {
  template <typename T>
  static T Of(T nibble) {
    return static_cast<T>(nibble + 0x30);
  }
};

// Hexadecimal; `kLetter` is the digit ten.
template <std::uint8_t kLetter>
struct HexDigit {
  template <typename T>
  static T Of(T nibble) {
    constexpr auto kBeyondDigits = static_cast<std::uint8_t>(kLetter - 10 - '0');
    return static_cast<T>(nibble + '0' + ValueIf(nibble > 9, kBeyondDigits));
  }
};

// Contract: no character is rejected; the difference wraps around at 8 bits.
struct SplitValue {
  template <typename T>
  static T Of(T c) {
    return static_cast<T>(c - 0x30);
  }
};

// Contract: no character is rejected; only its low nibble counts.
struct NibbleValue {
  template <typename T>
  static T Of(T c) {
    return static_cast<T>(c & 0x0F);
  }
};

// Hexadecimal in either case.
// Contract: no character is rejected; the difference wraps around at 8 bits.
struct HexValue {
  template <typename T>
  static T Of(T c) {
    const T upper = static_cast<T>(c - ValueIf(InRange(c, 'a', 'z'), 0x20));
    return static_cast<T>(upper - '0' - ValueIf(upper >= 'A', 'A' - 10 - '0'));
  }
};

// Writes two characters for each byte. Returns the end of the characters.
template <typename Digit>
[[gnu::always_inline]] inline char* SplitInPairs(std::span<const std::uint8_t> in, char* out) {
  for (; in.size() >= kBlockSize; in = in.subspan(kBlockSize), out += 2 * kBlockSize) {
    const Block bytes = LoadBlock(in.data());
    const Block high = Digit::Of(bytes >> 4);
    const Block low = Digit::Of(bytes & 0x0F);
    StoreBlock(InterleaveFirst(high, low), out);
    StoreBlock(InterleaveLast(high, low), out + kBlockSize);
  }
  if (in.size() >= kHalfBlock) {
    const Block bytes = LoadHalf(in.data());
    StoreBlock(InterleaveFirst(Digit::Of(bytes >> 4), Digit::Of(bytes & 0x0F)), out);
    in = in.subspan(kHalfBlock);
    out += kBlockSize;
  }
  const std::size_t rest = in.size() % kHalfBlock;
  for (std::size_t i = 0; i < rest; ++i) {
    *out++ = static_cast<char>(Digit::Of(static_cast<std::uint8_t>(in[i] >> 4U)));
    *out++ = static_cast<char>(Digit::Of(static_cast<std::uint8_t>(in[i] & 0x0FU)));
  }
  return out;
}

// Joins the pairs of a block, each in a word of its own. The byte is the upper half; the lower half
// is garbage.
template <typename Value>
Block JoinedWords(Block characters) {
  const auto values = reinterpret_cast<Words>(Value::Of(characters));
  return reinterpret_cast<Block>(values + (values << 12));
}

template <typename Value>
std::uint8_t JoinPair(std::uint8_t c0, std::uint8_t c1) {
  return static_cast<std::uint8_t>(Value::Of(c0) * 16 + Value::Of(c1));
}

// Joins as many pairs as fit in `out`, the last character of an odd count with `following`. Returns
// the bytes written.
template <typename Value>
[[gnu::always_inline]] inline std::size_t JoinPairsOf(std::span<const std::uint8_t> in,
                                                      std::uint8_t following, std::span<std::uint8_t> out) {
  const std::size_t pairs = std::min(in.size() / 2, out.size());
  std::size_t o = 0;
  for (; pairs - o >= kBlockSize; o += kBlockSize) {
    const Block first = JoinedWords<Value>(LoadBlock(&in[2 * o]));
    const Block last = JoinedWords<Value>(LoadBlock(&in[2 * o + kBlockSize]));
    StoreBlock(OddBytes(first, last), &out[o]);
  }
  if (pairs - o >= kHalfBlock) {
    const Block joined = JoinedWords<Value>(LoadBlock(&in[2 * o]));
    StoreHalf(OddBytes(joined, joined), &out[o]);
    o += kHalfBlock;
  }
  for (std::size_t rest = pairs % kHalfBlock; rest != 0; --rest, ++o) {
    out[o] = JoinPair<Value>(in[2 * o], in[2 * o + 1]);
  }
  if (in.size() % 2 == 0 || pairs == out.size()) return pairs;
  out[pairs] = JoinPair<Value>(in.back(), following);
  return pairs + 1;
}

}  // namespace gwq
