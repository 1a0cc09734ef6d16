// SPDX-License-Identifier: MIT
// Builds text in a buffer of fixed size, which is wiped on destruction.
#pragma once

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <string_view>

#include "codec/internal/secret.h"

namespace gwq {

// Always terminated. Text that does not fit is cut off, and IsCut says so.
template <typename Storage>
class TextBuilder {
 public:
  TextBuilder() = default;
  explicit TextBuilder(std::size_t room) : bytes_(room) {}

  // Writes nothing if the allocation failed.
  TextBuilder& operator<<(std::string_view text) {
    if (!*this) return *this;
    const std::size_t length = std::min(text.size(), bytes_.size() - 1 - size_);
    cut_ = cut_ || length < text.size();
    text.copy(bytes_.data() + size_, length);
    size_ += length;
    return *this;
  }
  TextBuilder& operator<<(int number) {
    char digits[12];
    const auto [end, error] = std::to_chars(digits, digits + sizeof digits, number);
    return *this << std::string_view(digits, static_cast<std::size_t>(end - digits));
  }

  // False if the allocation failed.
  explicit operator bool() const { return bytes_.data() != nullptr; }

  char* data() { return bytes_.data(); }
  [[nodiscard]] int size() const { return static_cast<int>(size_); }
  [[nodiscard]] std::string_view text() const { return {bytes_.data(), size_}; }
  [[nodiscard]] bool IsCut() const { return cut_; }

 private:
  Storage bytes_;
  std::size_t size_ = 0;
  bool cut_ = false;
};

// N bytes, including the terminator.
template <std::size_t N>
using SecretText = TextBuilder<SecretArray<char, N>>;

}  // namespace gwq
