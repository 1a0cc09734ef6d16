// SPDX-License-Identifier: MIT
// Buffers for keys and PINs: whatever memory they used is wiped before it goes
// back to the heap, also when a vector grows or an exception passes.
#pragma once

#include <openssl/crypto.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace gwq::terminal {

template <typename T>
struct WipingAllocator {
  using value_type = T;

  WipingAllocator() = default;
  template <typename U>
  WipingAllocator(const WipingAllocator<U>&) noexcept {}  // NOLINT(google-explicit-constructor)

  T* allocate(std::size_t count) { return std::allocator<T>{}.allocate(count); }
  void deallocate(T* memory, std::size_t count) noexcept {
    OPENSSL_cleanse(memory, count * sizeof(T));
    std::allocator<T>{}.deallocate(memory, count);
  }
  template <typename U>
  bool operator==(const WipingAllocator<U>&) const noexcept {
    return true;
  }
};

using SecretBytes = std::vector<std::uint8_t, WipingAllocator<std::uint8_t>>;

inline SecretBytes CopySecret(std::span<const std::uint8_t> bytes) {
  return {bytes.begin(), bytes.end()};
}

// Wipes contents that live in an ordinary container, and empties it.
template <typename Container>
void Wipe(Container& container) {
  OPENSSL_cleanse(container.data(), container.size() * sizeof(typename Container::value_type));
  container.clear();
}

}  // namespace gwq::terminal
