// SPDX-License-Identifier: MIT
#include "unit/pinpad/secret_search.h"

#include <fcntl.h>
#include <link.h>
#include <malloc.h>
#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <semaphore>

#include "support/scripted_usb.h"

namespace gwq::test {
namespace {

constexpr std::size_t kStackSize = 1U << 20U;

// What is looked for; read by the releasing functions while a call runs.
const std::vector<Bytes>* g_secrets = nullptr;
int g_dirty_blocks = 0;
thread_local bool t_watched = false;

bool Holds(const std::uint8_t* begin, std::size_t size, const Bytes& secret) {
  return std::search(begin, begin + size, secret.begin(), secret.end()) != begin + size;
}

// The test's own blocks are wiped: what they held must not turn up in one that the library is given next.
void Inspect(void* block) {
  if (block == nullptr) return;
  const std::size_t size = malloc_usable_size(block);
  if (!t_watched || InsideScriptedUsb()) {
    explicit_bzero(block, size);
    return;
  }
  for (const Bytes& secret : *g_secrets) {
    g_dirty_blocks += Holds(static_cast<std::uint8_t*>(block), size, secret) ? 1 : 0;
  }
}

// Through the kernel: the sanitizers would object to reading another thread's frames, or between variables.
Bytes MemoryAt(std::uintptr_t address, std::size_t size) {
  Bytes content(size);
  const int memory = open("/proc/self/mem", O_RDONLY | O_CLOEXEC);
  const ssize_t got = pread(memory, content.data(), size, static_cast<off_t>(address));
  close(memory);
  EXPECT_EQ(got, static_cast<ssize_t>(size));
  return content;
}

std::vector<std::string> Found(const Bytes& memory, const std::vector<Bytes>& secrets) {
  std::vector<std::string> found;
  for (const Bytes& secret : secrets) {
    if (Holds(memory.data(), memory.size(), secret)) found.push_back(Readable(secret));
  }
  return found;
}

// Of the program itself, which holds the library's objects.
Bytes WritableSegments() {
  Bytes all;
  dl_iterate_phdr(
      [](dl_phdr_info* program, std::size_t, void* out) {
        for (int i = 0; i < program->dlpi_phnum; ++i) {
          const auto& segment = program->dlpi_phdr[i];
          if (segment.p_type != PT_LOAD || (segment.p_flags & PF_W) == 0) continue;
          auto* const bytes = static_cast<Bytes*>(out);
          *bytes = Concat(*bytes, MemoryAt(program->dlpi_addr + segment.p_vaddr, segment.p_memsz));
        }
        return 1;  // the program comes first; no shared object is looked at
      },
      &all);
  return all;
}

class OwnStack {
 public:
  OwnStack()
      : memory_(static_cast<std::uint8_t*>(
            mmap(nullptr, kStackSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))) {}
  ~OwnStack() { munmap(memory_, kStackSize); }
  OwnStack(const OwnStack&) = delete;
  OwnStack& operator=(const OwnStack&) = delete;

  // What the stack holds once the call has returned.
  Bytes Run(const std::function<void()>& call) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    EXPECT_EQ(pthread_attr_setstack(&attributes, memory_, kStackSize), 0);
    pthread_t thread{};
    call_ = &call;
    EXPECT_EQ(pthread_create(&thread, &attributes, &Main, this), 0);
    returned_.acquire();
    Bytes content = MemoryAt(reinterpret_cast<std::uintptr_t>(memory_), kStackSize);
    searched_.release();
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
    return content;
  }

 private:
  // The thread stays until its stack was read, for the C library gives the pages back when it ends.
  static void* Main(void* self) {
    auto* const stack = static_cast<OwnStack*>(self);
    t_watched = true;
    CallFarDown(*stack->call_);
    t_watched = false;
    stack->returned_.release();
    stack->searched_.acquire();
    return nullptr;
  }

  // Below what this thread's own waiting overwrites afterwards.
  __attribute__((noinline)) static void CallFarDown(const std::function<void()>& call) {
    std::uint8_t distance[32768];
    asm volatile("" : : "r"(distance) : "memory");
    call();
    asm volatile("" : : "r"(distance) : "memory");
  }

  std::uint8_t* memory_;
  const std::function<void()>* call_ = nullptr;
  std::binary_semaphore returned_{0};
  std::binary_semaphore searched_{0};
};

}  // namespace

SecretFindings SearchFor(const std::vector<Bytes>& secrets, const std::function<void()>& call) {
  g_secrets = &secrets;
  g_dirty_blocks = 0;
  OwnStack stack;
  const Bytes stack_content = stack.Run(call);
  const int dirty_blocks = g_dirty_blocks;
  return {Found(stack_content, secrets), Found(WritableSegments(), secrets), dirty_blocks};
}

}  // namespace gwq::test

extern "C" {

void __real_free(void* block);
void __real__ZdlPv(void* block);
void __real__ZdlPvm(void* block, std::size_t size);

void __wrap_free(void* block) {
  gwq::test::Inspect(block);
  __real_free(block);
}

void __wrap__ZdlPv(void* block) {
  gwq::test::Inspect(block);
  __real__ZdlPv(block);
}

void __wrap__ZdlPvm(void* block, std::size_t size) {
  gwq::test::Inspect(block);
  __real__ZdlPvm(block, size);
}

}  // extern "C"
