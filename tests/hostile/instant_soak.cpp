// SPDX-License-Identifier: MIT
// instant_soak calls N SEED          random calls against a hostile terminal instant_soak
// transactions N        the same transaction over and over: memory and descriptors stay as they are
//
// The terminal is in this process, and the time is the test clock's.
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <exception>
#include <optional>
#include <string_view>
#include <utility>

#include <gwq/gwq.h>
#include "customer/agreeable.h"
#include "device/device.h"
#include "hostile/calls.h"
#include "hostile/instant_usb.h"
#include "hostile/soak.h"
#include "store/file_store.h"
#include "store/initial_files.h"
#include "support/temp_dir.h"
#include "support/test_clock.h"

namespace gwq::test {
namespace {

using terminal::device::Device;
using terminal::faults::Hostility;
using terminal::store::FileStore;

constexpr std::uint64_t kCancelOnceIn = 2000;  // transfers
constexpr std::int64_t kWarmUp = 20'000;
constexpr std::int64_t kFlatKilobytes = 256;

// A terminal with files, as gwq-terminal makes one.
struct Terminal {
  TempDir directory;
  terminal::customer::AgreeableCustomer customer;
  FileStore files{directory.Path().string()};

  Device unit{terminal::Line::kUsb, customer, {}, {}, {&files, {}, nullptr}};
  terminal::faults::FaultyLine line;

  explicit Terminal(std::optional<Hostility> hostility = {}) : line(unit, std::move(hostility)) {
    PutInitialFiles(files);
  }
};

int RunCalls(std::int64_t calls, std::uint64_t seed) {
  SetTime(1'700'000'000);
  const auto rates = terminal::faults::ParseRates("seed=" + std::to_string(seed));
  Terminal terminal(Hostility(rates, 0));
  const TempDir local;
  void* library = LoadLibrary();
  std::printf("hostile %s\n", RatesText(rates).c_str());
  PlugInstantTerminal(terminal.line);

  std::mt19937_64 cancels(seed);
  auto* cancel_read = reinterpret_cast<decltype(&CancelRead)>(Find(library, "CancelRead"));
  auto* cancel_write = reinterpret_cast<decltype(&CancelWrite)>(Find(library, "CancelWrite"));
  OnInstantTransfer([&] {
    if (cancels() % kCancelOnceIn == 0) cancel_read();
    if (cancels() % kCancelOnceIn == 0) cancel_write();
  });

  SoakPlan plan;
  plan.calls = calls;
  plan.seed = seed;
  plan.scene = {
      .now_ms = NowMs, .longest_wait_s = 999, .long_text = 60'000, .directory = local.Path().string()};
  plan.take_traffic = TakeInstantTraffic;
  // The calls begin at any moment of the clock's second.
  plan.before_call = [](Caller& caller) {
    ForgetSleeps();
    AdvanceMs(static_cast<std::int64_t>(caller.Below(1000)));
  };
  const int violations = Soak(library, plan);
  OnInstantTransfer({});
  if (InstantUsbLeftovers() != 0) std::printf("%d devices or lists left open\n", InstantUsbLeftovers());
  return violations == 0 && InstantUsbLeftovers() == 0 ? 0 : 1;
}

bool Transact(decltype(&TransProc) trans_proc) {
  char command[] = "\x1B[0GETVERSION";
  char answer[2048] = {};
  int length = 1024;
  ForgetSleeps();
  return trans_proc(0, 0, command, 0, answer, &length, 2000) == 0 && length > 2;
}

int RunTransactions(std::int64_t transactions) {
  SetTime(1'700'000'000);
  Terminal terminal;
  auto* trans_proc = reinterpret_cast<decltype(&TransProc)>(Find(LoadLibrary(), "TransProc"));
  PlugInstantTerminal(terminal.line);
  std::int64_t kilobytes = 0;
  std::size_t descriptors = 0;
  std::int64_t failed = 0;
  for (std::int64_t i = 0; i < kWarmUp + transactions; ++i) {
    if (i == kWarmUp) {
      kilobytes = ResidentKilobytes();
      descriptors = OpenDescriptors().size();
    }
    if (!Transact(trans_proc)) ++failed;
  }
  const std::int64_t growth = ResidentKilobytes() - kilobytes;
  const std::size_t open = OpenDescriptors().size();
  std::printf(
      "%lld transactions, %lld failed; %lld KB resident, grown by %lld KB; %zu descriptors open, %zu "
      "before\n",
      static_cast<long long>(transactions), static_cast<long long>(failed), static_cast<long long>(kilobytes),
      static_cast<long long>(growth), open, descriptors);
  return failed == 0 && growth <= kFlatKilobytes && open == descriptors && InstantUsbLeftovers() == 0 ? 0 : 1;
}

}  // namespace
}  // namespace gwq::test

// The monotonic clock is the test clock as well.
extern "C" int clock_gettime(clockid_t clock, std::timespec* out) noexcept {
  if (clock != CLOCK_MONOTONIC) return static_cast<int>(syscall(SYS_clock_gettime, clock, out));
  const std::int64_t now = gwq::test::NowMs();
  *out = {.tv_sec = now / 1000, .tv_nsec = static_cast<long>(now % 1000 * 1'000'000)};
  return 0;
}

int main(int argc, char** argv) {
  try {
    const std::string_view what = argc > 1 ? argv[1] : "";
    if (what == "calls" && argc == 4)
      return gwq::test::RunCalls(std::strtoll(argv[2], nullptr, 10), std::strtoull(argv[3], nullptr, 10));
    if (what == "transactions" && argc == 3)
      return gwq::test::RunTransactions(std::strtoll(argv[2], nullptr, 10));
  } catch (const std::exception& error) {
    std::fprintf(stderr, "instant_soak: %s\n", error.what());
    return 2;
  }
  std::fprintf(stderr, "usage: instant_soak calls N SEED | transactions N\n");
  return 2;
}
