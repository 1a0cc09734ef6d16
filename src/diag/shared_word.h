// Plain words that two threads share: flags and pointers whose layout is given, so that they cannot be
// std::atomic themselves. Relaxed order suffices, for nothing else is published through them.
#pragma once

#include <atomic>

namespace gwq {

template <typename T>
T LoadShared(T& word) {
  return std::atomic_ref<T>(word).load(std::memory_order_relaxed);
}

template <typename T>
void StoreShared(T& word, T value) {
  std::atomic_ref<T>(word).store(value, std::memory_order_relaxed);
}

}  // namespace gwq
