// SPDX-License-Identifier: MIT
// Run under gwq-terminal exec --hostile: soak_on_usb CALLS SECONDS SEED [STACK]
// With STACK the calls are made on a thread with so many bytes of it.
// The real libusb and the real time; the serial port is 78.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>

#include "hostile/soak.h"
#include "support/small_stack.h"
#include "support/temp_dir.h"

namespace gwq::test {
namespace {

// What the line did is not seen from here. A transfer out may take its whole second five times
// over; the files that are pulled have a few reports.
constexpr Traffic kMaxTraffic = {.stalled_ms = 10'000, .reports = 10};

std::int64_t NowMs() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

int RunOnStack(std::size_t size, const std::function<int()>& run) {
  SmallStack stack(size);
  int result = 1;
  if (!stack.Run([&] { result = run(); })) {
    std::printf("no thread with %zu bytes of stack\n", size);
    return 1;
  }
  std::printf("%zu of %zu bytes of stack used\n", stack.Used(), size);
  if (stack.CanaryIsWhole()) return result;
  std::puts("written to below the guard page of the stack");
  return 1;
}

int Run(char** argv) {
  const TempDir directory;
  SoakPlan plan;
  plan.calls = std::strtoll(argv[1], nullptr, 10);
  plan.seconds = std::strtoll(argv[2], nullptr, 10);
  plan.seed = std::strtoull(argv[3], nullptr, 10);
  plan.scene = {
      .now_ms = NowMs, .serial_port = 78, .long_text = 20'000, .directory = directory.Path().string()};
  plan.take_traffic = [] { return kMaxTraffic; };
  plan.before_call = [](Caller&) {};
  return Soak(LoadLibrary(), plan) == 0 ? 0 : 1;
}

}  // namespace
}  // namespace gwq::test

int main(int argc, char** argv) {
  try {
    if (argc == 4) return gwq::test::Run(argv);
    if (argc == 5) {
      return gwq::test::RunOnStack(std::strtoul(argv[4], nullptr, 10),
                                   [argv] { return gwq::test::Run(argv); });
    }
  } catch (const std::exception& error) {
    std::fprintf(stderr, "soak_on_usb: %s\n", error.what());
    return 2;
  }
  std::fprintf(stderr, "usage: soak_on_usb CALLS SECONDS SEED [STACK]\n");
  return 2;
}
