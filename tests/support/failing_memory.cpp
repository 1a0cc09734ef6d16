// SPDX-License-Identifier: MIT
#include "support/failing_memory.h"

#include <cstdint>
#include <limits>
#include <new>

namespace gwq::test {
namespace {

constexpr int kAll = std::numeric_limits<int>::max();

int g_granted = kAll;
int g_refused = 0;
std::size_t g_limit = SIZE_MAX;

bool Refuses(std::size_t bytes) {
  const bool granted = g_granted > 0 && bytes < g_limit;
  if (g_granted > 0 && g_granted < kAll) --g_granted;
  if (!granted) ++g_refused;
  return !granted;
}

}  // namespace

OutOfMemory::OutOfMemory(int granted) {
  g_refused = 0;
  g_granted = granted;
}

OutOfMemory::~OutOfMemory() {
  g_granted = kAll;
}

int OutOfMemory::Left() {
  return g_granted;
}

int OutOfMemory::Refused() {
  return g_refused;
}

NoMemoryFor::NoMemoryFor(std::size_t bytes) {
  g_limit = bytes;
}

NoMemoryFor::~NoMemoryFor() {
  g_limit = SIZE_MAX;
}

}  // namespace gwq::test

extern "C" {

void* __real_calloc(std::size_t count, std::size_t size);
void* __real__ZnwmRKSt9nothrow_t(std::size_t size, const std::nothrow_t& tag) noexcept;
void* __real__ZnamRKSt9nothrow_t(std::size_t size, const std::nothrow_t& tag) noexcept;

void* __wrap_calloc(std::size_t count, std::size_t size) {
  return gwq::test::Refuses(count * size) ? nullptr : __real_calloc(count, size);
}

void* __wrap__ZnwmRKSt9nothrow_t(std::size_t size, const std::nothrow_t& tag) noexcept {
  return gwq::test::Refuses(size) ? nullptr : __real__ZnwmRKSt9nothrow_t(size, tag);
}

void* __wrap__ZnamRKSt9nothrow_t(std::size_t size, const std::nothrow_t& tag) noexcept {
  return gwq::test::Refuses(size) ? nullptr : __real__ZnamRKSt9nothrow_t(size, tag);
}

}  // extern "C"
