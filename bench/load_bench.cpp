// SPDX-License-Identifier: MIT
// Loading and unloading the library. libusb_init starts a thread, whose time counts as well.
#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "side.h"

namespace gwq::bench {
namespace {

void LoadAndUnload(const char* file) {
  void* const library = dlopen(file, RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) {
    std::fprintf(stderr, "gwq_bench_load: %s\n", dlerror());
    std::exit(1);
  }
  dlclose(library);
}

long ResidentKb() {
  long pages = 0;
  std::FILE* const file = std::fopen("/proc/self/statm", "r");
  if (file == nullptr || std::fscanf(file, "%*d %ld", &pages) != 1) std::exit(1);
  std::fclose(file);
  return pages * (sysconf(_SC_PAGESIZE) / 1024);
}

// In a process of its own, where nothing was loaded before.
long AddedKb(const char* file) {
  int ends[2];
  if (pipe(ends) != 0) std::exit(1);
  if (fork() == 0) {
    const long before = ResidentKb();
    if (dlopen(file, RTLD_NOW | RTLD_LOCAL) == nullptr) _exit(1);
    const long added = ResidentKb() - before;
    _exit(write(ends[1], &added, sizeof added) == sizeof added ? 0 : 1);
  }
  long added = 0;
  if (read(ends[0], &added, sizeof added) != sizeof added) std::exit(1);
  wait(nullptr);
  close(ends[0]);
  close(ends[1]);
  return added;
}

void Resident(const char* side, const char* file) {
  const std::string name = std::string("resident memory/0/") + side;
  const long kb = AddedKb(file);
  benchmark::RegisterBenchmark(name.c_str(), [kb](benchmark::State& state) {
    for ([[maybe_unused]] const auto& turn : state) {
    }
    state.counters["kb"] = static_cast<double>(kb);
  })->Iterations(1);
}

const bool kRegistered = [] {
  Side("load and unload", 0, "gwq", [] { LoadAndUnload(GWQ_LIBRARY_FILE); })->MeasureProcessCPUTime();
  Side("load and unload", 0, "empty library", [] {
    LoadAndUnload(GWQ_EMPTY_LIBRARY_FILE);
  })->MeasureProcessCPUTime();
  Resident("gwq", GWQ_LIBRARY_FILE);
  Resident("empty library", GWQ_EMPTY_LIBRARY_FILE);
  return true;
}();

}  // namespace
}  // namespace gwq::bench
