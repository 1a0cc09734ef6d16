// Plain words that two threads share: flags and pointers whose layout is given, so that they cannot be
// std::atomic themselves. Stores release and loads acquire, so that a canceller that sees a read announced
// also sees the cancel flag that was cleared before, and cannot have its own setting overwritten by it.
#pragma once

#include <atomic>

namespace gwq {

template <typename T>
T LoadShared(T& word) {
  return std::atomic_ref<T>(word).load(std::memory_order_acquire);
}

template <typename T>
void StoreShared(T& word, T value) {
  std::atomic_ref<T>(word).store(value, std::memory_order_release);
}

}  // namespace gwq
