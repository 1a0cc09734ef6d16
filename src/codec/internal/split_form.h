// SPDX-License-Identifier: MIT
// The split form inside the library: takes spans, and reads and writes nothing beyond them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace gwq {

// The bytes of a C pointer and length; none for a null pointer or a length below 1.
template <typename T>
std::span<T> BytesOf(T* data, int length) {
  if (data == nullptr || length < 1) return {};
  return {data, static_cast<std::size_t>(length)};
}

inline std::span<const std::uint8_t> AsBytes(std::span<const char> text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

inline std::string_view AsText(std::span<const std::uint8_t> bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// Writes two characters for each byte; `out` must have room for all of them.
void SplitBytes(std::span<const std::uint8_t> in, char* out);

// Joins pairs of characters as GetAsciStr does, as many as fit in `out`, the last character of an
// odd count with `following`. Returns the bytes written.
std::size_t JoinPairs(std::span<const std::uint8_t> in, std::uint8_t following, std::span<std::uint8_t> out);

// As JoinPairs with `following` zero, but only the low nibble of each character counts.
std::size_t MergePairs(std::span<const std::uint8_t> in, std::span<std::uint8_t> out);

}  // namespace gwq
