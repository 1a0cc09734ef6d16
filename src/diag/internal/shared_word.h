// SPDX-License-Identifier: MIT
// Atomic access to words that two threads share and whose type is fixed by the interface or by a
// record's layout, so that they cannot be std::atomic. Stores release, loads acquire.
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
