// Text under construction in a buffer of a given size, which is wiped when it is released.
#pragma once

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <string_view>

#include "codec/internal/secret.h"

namespace gwq {

// Always terminated. What does not fit is cut, and reported by IsCut.
template <typename Storage>
class TextIn {
 public:
  TextIn() = default;
  explicit TextIn(std::size_t room) : bytes_(room) {}

  // Without memory nothing is written.
  TextIn& operator<<(std::string_view text) {
    if (!*this) return *this;
    const std::size_t length = std::min(text.size(), bytes_.size() - 1 - size_);
    cut_ = cut_ || length < text.size();
    text.copy(bytes_.data() + size_, length);
    size_ += length;
    return *this;
  }
  TextIn& operator<<(int number) {
    char digits[12];
    const auto [end, error] = std::to_chars(digits, digits + sizeof digits, number);
    return *this << std::string_view(digits, static_cast<std::size_t>(end - digits));
  }

  // False when there was no memory.
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

// N bytes, the terminator among them.
template <std::size_t N>
using SecretText = TextIn<SecretArray<char, N>>;

}  // namespace gwq
