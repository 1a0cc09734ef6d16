// SPDX-License-Identifier: MIT
// A system that has no memory. For programs that link gwq_failing_memory, whose library objects
// then ask here for their cleared blocks and for what they ask of `new (std::nothrow)`. Plain
// malloc, with which the log alone builds its lines, goes on.
#pragma once

#include <cstddef>

namespace gwq::test {

// For its lifetime every request fails but the first `granted`.
class OutOfMemory {
 public:
  explicit OutOfMemory(int granted);
  ~OutOfMemory();
  OutOfMemory(const OutOfMemory&) = delete;
  OutOfMemory& operator=(const OutOfMemory&) = delete;

  // How many requests are still granted, and how many failed so far.
  [[nodiscard]] static int Left();
  [[nodiscard]] static int Refused();
};

// The requests that a call makes when it gets everything.
template <typename Call>
int RequestsOf(Call call) {
  constexpr int kEnough = 1'000'000;
  const OutOfMemory counting(kEnough);
  call();
  return kEnough - OutOfMemory::Left();
}

// For its lifetime every request for so many bytes or more fails.
class NoMemoryFor {
 public:
  explicit NoMemoryFor(std::size_t bytes);
  ~NoMemoryFor();
  NoMemoryFor(const NoMemoryFor&) = delete;
  NoMemoryFor& operator=(const NoMemoryFor&) = delete;
};

}  // namespace gwq::test
