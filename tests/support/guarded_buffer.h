// SPDX-License-Identifier: MIT
// A heap buffer of exactly the given size, so that AddressSanitizer sees the first byte beside it; without
// the sanitizer, marks on both sides tell of a write.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "support/bytes.h"

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define GWQ_TEST_HAS_ASAN 1
#endif
#endif
#if defined(__SANITIZE_ADDRESS__)
#define GWQ_TEST_HAS_ASAN 1
#endif
#ifdef GWQ_TEST_HAS_ASAN
#include <sanitizer/asan_interface.h>
#endif

namespace gwq::test {

class GuardedBuffer {
 public:
  explicit GuardedBuffer(std::size_t size, std::uint8_t fill = 0)
      : size_(size), bytes_(size + 2 * kGuard, kMark) {
    std::fill_n(bytes_.begin() + kGuard, size, fill);
    Poison();
  }
  explicit GuardedBuffer(const Bytes& content) : GuardedBuffer(content.size()) {
    std::copy(content.begin(), content.end(), data());
  }
  ~GuardedBuffer() {
    Unpoison();
    EXPECT_TRUE(MarksStand()) << "written beside the buffer";
  }
  GuardedBuffer(const GuardedBuffer&) = delete;
  GuardedBuffer& operator=(const GuardedBuffer&) = delete;

  unsigned char* data() { return bytes_.data() + kGuard; }
  char* text() { return reinterpret_cast<char*>(data()); }
  [[nodiscard]] std::size_t size() const { return size_; }
  [[nodiscard]] Bytes Content() const {
    return {bytes_.begin() + kGuard, bytes_.begin() + static_cast<std::ptrdiff_t>(kGuard + size_)};
  }
  [[nodiscard]] Bytes First(std::size_t count) const {
    Bytes content = Content();
    content.resize(count);
    return content;
  }
  [[nodiscard]] bool AllAre(std::uint8_t value) const {
    const Bytes content = Content();
    return std::all_of(content.begin(), content.end(), [value](std::uint8_t byte) { return byte == value; });
  }

 private:
  static constexpr std::size_t kGuard = 64;
  static constexpr std::uint8_t kMark = 0xC7;

#ifdef GWQ_TEST_HAS_ASAN
  void Poison() {
    ASAN_POISON_MEMORY_REGION(bytes_.data(), kGuard);
    ASAN_POISON_MEMORY_REGION(bytes_.data() + kGuard + size_, kGuard);
  }
  void Unpoison() {
    ASAN_UNPOISON_MEMORY_REGION(bytes_.data(), bytes_.size());
  }
#else
  void Poison() {}
  void Unpoison() {}
#endif

  [[nodiscard]] bool MarksStand() const {
    const auto is_mark = [](std::uint8_t byte) { return byte == kMark; };
    return std::all_of(bytes_.begin(), bytes_.begin() + kGuard, is_mark) &&
           std::all_of(bytes_.end() - kGuard, bytes_.end(), is_mark);
  }

  std::size_t size_;
  Bytes bytes_;
};

}  // namespace gwq::test
