// SPDX-License-Identifier: MIT
// Storage for PINs, keys and the buffers they pass through: zeroed on construction, wiped on
// destruction.
#pragma once

#include <array>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <span>

namespace gwq {

// A fixed-size work buffer on the stack.
template <typename T, std::size_t N>
class SecretArray {
 public:
  SecretArray() = default;
  ~SecretArray() { Wipe(); }
  SecretArray(const SecretArray&) = delete;
  SecretArray& operator=(const SecretArray&) = delete;

  void Wipe() { explicit_bzero(bytes_.data(), N * sizeof(T)); }

  T* data() { return bytes_.data(); }
  const T* data() const { return bytes_.data(); }
  [[nodiscard]] constexpr std::size_t size() const { return N; }
  T& operator[](std::size_t i) { return bytes_[i]; }
  const T& operator[](std::size_t i) const { return bytes_[i]; }
  std::span<T, N> span() { return bytes_; }

 private:
  std::array<T, N> bytes_{};
};

// A buffer on the heap, for sizes that come from the caller. Never throws: data() is null if the
// allocation failed.
template <typename T>
class SecretHeap {
 public:
  explicit SecretHeap(std::size_t count)
      : data_(static_cast<T*>(std::calloc(count == 0 ? 1 : count, sizeof(T)))), count_(count) {}
  ~SecretHeap() {
    if (data_ != nullptr) explicit_bzero(data_, count_ * sizeof(T));
    std::free(data_);
  }
  SecretHeap(const SecretHeap&) = delete;
  SecretHeap& operator=(const SecretHeap&) = delete;

  explicit operator bool() const { return data_ != nullptr; }
  T* data() { return data_; }
  const T* data() const { return data_; }
  [[nodiscard]] std::size_t size() const { return count_; }

 private:
  T* data_;
  std::size_t count_;
};

}  // namespace gwq
