// SPDX-License-Identifier: MIT
// A thread with little stack, as programs with hundreds of threads have them.
//
//     canary | guard page | stack
//
// A frame that goes beyond the stack faults at the guard page; one that is larger than the guard
// page and is not touched page by page jumps over it, and writes to the canary.
#pragma once

#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <span>

namespace gwq::test {

class SmallStack {
 public:
  // `size` as pthread_attr_setstacksize has it: with what the C library itself keeps there.
  explicit SmallStack(std::size_t size)
      : page_(static_cast<std::size_t>(sysconf(_SC_PAGESIZE))),
        size_((size + page_ - 1) / page_ * page_),
        memory_(static_cast<std::uint8_t*>(
            mmap(nullptr, Total(), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))) {
    if (memory_ == MAP_FAILED) std::abort();
    std::fill_n(memory_, Total(), kPaint);
    if (mprotect(memory_ + kCanary, page_, PROT_NONE) != 0) std::abort();
  }
  ~SmallStack() { munmap(memory_, Total()); }
  SmallStack(const SmallStack&) = delete;
  SmallStack& operator=(const SmallStack&) = delete;

  // False when there is no such thread: the size is below what the system allows.
  bool Run(const std::function<void()>& call) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_t thread{};
    call_ = &call;
    const bool made = pthread_attr_setstack(&attributes, Stack(), size_) == 0 &&
                      pthread_create(&thread, &attributes, &Main, this) == 0;
    if (made) pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
    return made;
  }

  [[nodiscard]] bool CanaryIsWhole() const {
    return std::all_of(memory_, memory_ + kCanary, [](std::uint8_t byte) { return byte == kPaint; });
  }
  std::span<std::uint8_t> Canary() { return {memory_, kCanary}; }

  // The most that was in use at any time.
  [[nodiscard]] std::size_t Used() const { return used_; }

 private:
  static constexpr std::size_t kCanary = 256U << 10U;
  static constexpr std::uint8_t kPaint = 0xC5;

  [[nodiscard]] std::size_t Total() const { return kCanary + page_ + size_; }
  [[nodiscard]] std::uint8_t* Stack() const { return memory_ + kCanary + page_; }

  // The C library gives a stack's pages back when the thread ends, so its use is measured before.
  static void* Main(void* self) {
    auto* const stack = static_cast<SmallStack*>(self);
    (*stack->call_)();
    stack->used_ = stack->Measure();
    return nullptr;
  }

  // Volatile: what is behind the stack pointer is nobody's to a compiler.
  [[nodiscard]] std::size_t Measure() const {
    const volatile std::uint8_t* lowest = Stack();
    while (*lowest == kPaint) ++lowest;
    return size_ - static_cast<std::size_t>(lowest - Stack());
  }

  std::size_t page_;
  std::size_t size_;
  std::uint8_t* memory_;
  const std::function<void()>* call_ = nullptr;
  std::size_t used_ = 0;
};

}  // namespace gwq::test
