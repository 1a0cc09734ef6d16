// SPDX-License-Identifier: MIT
#include <gwq/frame/load.h>

#include <libusb-1.0/libusb.h>

#include <array>
#include <charconv>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <system_error>

#include <gwq/diag/Rwini.h>
#include <gwq/diag/log.h>
#include <gwq/extra.h>
#include "diag/internal/log_files.h"
#include "diag/internal/profile.h"
#include "frame/internal/operation.h"
#include "frame/internal/turn.h"
#include "links/internal/lifetime.h"

using namespace gwq;

const char dllversion[] = GWQ_VERSION;

namespace {

// Contract: a missing file is reported once, for the log's key.
void ReadDrainMs(const char* ini_path) {
  std::array<char, 256> text{};
  ReadProfileQuietly(ini_path, "Gwq", "DrainMs", text.data());
  const char* const end = text.data() + std::strlen(text.data());
  int ms = 0;
  const auto parsed = std::from_chars(text.data(), end, ms);
  if (parsed.ec == std::errc() && parsed.ptr == end && ms > 0) GWQ_SetDrainMs(ms);
}

void PrintUnloaded() {
  std::puts("------dlclose OK------");
}

}  // namespace

// Contract: returns 0 even if libusb fails.
int ICC_INIT_LIBUSB() {
  libusb_init(nullptr);
  return 0;
}

int ICC_UINIT_LIBUSB() {
  libusb_exit(nullptr);
  return 0;
}

// Contract: prints to standard output, at every load.
// Contract: only the first character of the flag counts, so that 10 switches the log on.
int test_init() {
  constexpr std::size_t kDirectoryAndName = 256 + sizeof "GWQ_LOG.ini";
  std::array<char, kDirectoryAndName> ini_path{};
  std::array<char, 256> log_flag{};
  GetFullPath("GWQ_LOG.ini", ini_path.data(), static_cast<int>(ini_path.size()));
  GetProfileString(ini_path.data(), "Gwq", "Log", log_flag.data());
  ReadDrainMs(ini_path.data());
  if (log_flag[0] == '1') {
    DelOutTimeLogFile();
    SetDebugFlag(1);
  }
  std::printf("szIniPath=%s\n", ini_path.data());
  std::printf("szLogFlag=%s\n", log_flag.data());
  RememberOwnPath();
  ICC_INIT_LIBUSB();
  std::puts("------dlopen OK------");
  return 0;
}

int test_deinit() {
  ICC_UINIT_LIBUSB();
  PrintUnloaded();
  return 0;
}

// Frees the memory that the C++ runtime reserves for exceptions, if the runtime is linked in:
// otherwise every load would leak it. Hidden, so that it never resolves to the host's runtime.
namespace __gnu_cxx {
[[gnu::weak, gnu::visibility("hidden")]] void __freeres();
}

namespace {

// Called by the loader, after the library's other initialisers.
[[gnu::constructor]] void OnLoad() {
  test_init();
}

// At exit a thread may still wait for the customer inside libusb, which aborts if it is released
// then. Returns whether libusb can be released.
bool StopExchanges() {
  constexpr int kMaxWaitMs = 2000;
  if (HasForked()) return false;
  CancelOperations();
  return AcquireTurnForUnload(kMaxWaitMs) && !UsbIsReading();
}

[[gnu::destructor]] void OnUnload() {
  if (StopExchanges()) {
    test_deinit();
  } else {
    PrintUnloaded();
  }
  if (&__gnu_cxx::__freeres != nullptr) __gnu_cxx::__freeres();
}

}  // namespace
