// SPDX-License-Identifier: MIT
// What an exchange costs beside its libusb calls, which are instant here: a difference, not a ratio, says it.
#include <array>

#include <gwq/diag/log.h>
#include <gwq/frame/transaction.h>
#include "bare_exchange.h"
#include "instant_usb.h"
#include "side.h"

namespace gwq::bench {
namespace {

void Exchange() {
  char command[] = "\x1B[0GETVERSION";
  std::array<char, 4096 + 1024> answer{};
  int length = 4096;
  benchmark::DoNotOptimize(
      TransProc(0, 9600, command, static_cast<int>(sizeof command - 1), answer.data(), &length, 2000));
}

void Bare() {
  std::array<char, BARE_REPORT> answer{};
  benchmark::DoNotOptimize(BareExchange(INSTANT_VID, INSTANT_PID, "\x1B[0GETVERSION", answer.data()));
}

[[gnu::noinline, gnu::format(printf, 1, 2)]] int LogNothing(const char* format, ...) {
  benchmark::DoNotOptimize(format);
  return 0;
}

const bool kRegistered = [] {
  Side("exchange, instant libusb", 0, "gwq", &Exchange);
  Side("exchange, instant libusb", 0, "bare C", &Bare);
  Side("log call, off", 0, "gwq", [] { ICC_DPrintLogToFile("nRet=%d, %s, %d", 1, "text", 2); });
  Side("log call, off", 0, "empty function", [] { LogNothing("nRet=%d, %s, %d", 1, "text", 2); });
  return true;
}();

}  // namespace
}  // namespace gwq::bench
