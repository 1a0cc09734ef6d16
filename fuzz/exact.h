// Buffers of exactly a given size on the heap, so that AddressSanitizer sees the byte beside them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>

namespace gwq::fuzz {

template <typename T>
class Exact {
 public:
  explicit Exact(std::size_t count) : size_(count), data_(new T[count]()) {}
  explicit Exact(std::span<const std::uint8_t> bytes) : Exact(bytes.size() / sizeof(T)) {
    if (size_ > 0) std::memcpy(data_.get(), bytes.data(), size_ * sizeof(T));
  }

  T* data() { return data_.get(); }
  [[nodiscard]] std::size_t size() const { return size_; }
  [[nodiscard]] int length() const { return static_cast<int>(size_); }
  [[nodiscard]] std::span<const T> first(std::size_t count) const { return std::span<const T>(data_.get(), size_).first(count); }

 private:
  std::size_t size_;
  std::unique_ptr<T[]> data_;
};

}  // namespace gwq::fuzz
