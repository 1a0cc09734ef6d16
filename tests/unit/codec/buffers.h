// SPDX-License-Identifier: MIT
// Buffers of exactly the size that a function may touch, so that AddressSanitizer sees a byte read or written
// too far, filled with a mark, so that every build sees one written too many.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace gwq::test {

using ByteVector = std::vector<std::uint8_t>;

inline constexpr std::uint8_t kUntouched = 0x5A;

inline ByteVector ToBytes(std::string_view text) {
  return {text.begin(), text.end()};
}

class ExactBuffer {
 public:
  explicit ExactBuffer(std::size_t size) : size_(size), bytes_(new std::uint8_t[size]) {
    std::fill_n(bytes_.get(), size, kUntouched);
  }
  explicit ExactBuffer(const ByteVector& content) : ExactBuffer(content.size()) {
    std::copy(content.begin(), content.end(), bytes_.get());
  }
  explicit ExactBuffer(std::string_view content) : ExactBuffer(ToBytes(content)) {}

  std::uint8_t* Bytes() { return bytes_.get(); }
  char* Chars() { return reinterpret_cast<char*>(bytes_.get()); }
  [[nodiscard]] int Size() const { return static_cast<int>(size_); }
  [[nodiscard]] ByteVector Content() const { return {bytes_.get(), bytes_.get() + size_}; }
  [[nodiscard]] std::string Text() const { return {bytes_.get(), bytes_.get() + size_}; }

 private:
  std::size_t size_;
  std::unique_ptr<std::uint8_t[]> bytes_;
};

// What an output buffer of this size holds when only `written` was written to its start.
inline ByteVector WithRestUntouched(ByteVector written, std::size_t size) {
  written.resize(std::max(size, written.size()), kUntouched);
  return written;
}

class Random {
 public:
  explicit Random(unsigned seed) : engine_(seed) {}

  int Between(int low, int high) { return std::uniform_int_distribution(low, high)(engine_); }
  std::uint8_t Byte() { return static_cast<std::uint8_t>(Between(0, 255)); }

  ByteVector Bytes(int count) {
    ByteVector bytes(static_cast<std::size_t>(count));
    for (auto& byte : bytes) byte = Byte();
    return bytes;
  }

  // Characters of an alphabet.
  ByteVector Of(std::string_view alphabet, int count) {
    ByteVector bytes(static_cast<std::size_t>(count));
    for (auto& byte : bytes) {
      byte = static_cast<std::uint8_t>(
          alphabet[static_cast<std::size_t>(Between(0, static_cast<int>(alphabet.size()) - 1))]);
    }
    return bytes;
  }

 private:
  std::mt19937 engine_;
};

}  // namespace gwq::test
