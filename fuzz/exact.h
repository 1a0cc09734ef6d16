// SPDX-License-Identifier: MIT
// Buffers of exactly a given size on the heap, so that AddressSanitizer sees the byte beside them.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>

namespace gwq::fuzz {

template <typename T>
class Exact {
 public:
  // Never more than this, which compilers want to know.
  static constexpr std::size_t kMax = std::size_t{1} << 26U;

  explicit Exact(std::size_t count) : size_(std::min(count, kMax)), data_(new T[size_]()) {}
  explicit Exact(std::span<const std::uint8_t> bytes) : Exact(bytes.size() / sizeof(T)) {
    if (size_ > 0) std::memcpy(data_.get(), bytes.data(), size_ * sizeof(T));
  }

  T* data() { return data_.get(); }
  [[nodiscard]] std::size_t size() const { return size_; }
  [[nodiscard]] int length() const { return static_cast<int>(size_); }
  [[nodiscard]] std::span<const T> first(std::size_t count) const {
    return std::span<const T>(data_.get(), size_).first(count);
  }

 private:
  std::size_t size_;
  std::unique_ptr<T[]> data_;
};

}  // namespace gwq::fuzz
