#include <gwq/frame/load.h>

#include <libusb-1.0/libusb.h>

#include <array>
#include <cstdio>

#include <gwq/diag/Rwini.h>
#include <gwq/diag/log.h>
#include "diag/internal/log_files.h"
#include "frame/internal/operation.h"
#include "frame/internal/turn.h"
#include "links/internal/lifetime.h"

const char dllversion[] = GWQ_VERSION;

namespace {

void TellUnloaded() {
  std::puts("------dlclose OK------");
}

}  // namespace

int ICC_INIT_LIBUSB() {
  libusb_init(nullptr);
  return 0;
}

int ICC_UINIT_LIBUSB() {
  libusb_exit(nullptr);
  return 0;
}

int test_init() {
  constexpr std::size_t kDirectoryAndName = 256 + sizeof "GWQ_LOG.ini";
  std::array<char, kDirectoryAndName> ini_path{};
  std::array<char, 256> log_flag{};
  GetFullPath("GWQ_LOG.ini", ini_path.data(), static_cast<int>(ini_path.size()));
  GetProfileString(ini_path.data(), "Gwq", "Log", log_flag.data());
  if (log_flag[0] == '1') {
    DelOutTimeLogFile();
    SetDebugFlag(1);
  }
  std::printf("szIniPath=%s\n", ini_path.data());
  std::printf("szLogFlag=%s\n", log_flag.data());
  gwq::RememberOwnPath();
  ICC_INIT_LIBUSB();
  std::puts("------dlopen OK------");
  return 0;
}

int test_deinit() {
  ICC_UINIT_LIBUSB();
  TellUnloaded();
  return 0;
}

// Gives back the memory that the C++ runtime keeps for exceptions, where it is part of the library at all:
// each loading would take it anew. Hidden, so that it can never be the host's.
namespace __gnu_cxx {
[[gnu::weak, gnu::visibility("hidden")]] void __freeres();
}

namespace {

// The loader runs these; nothing in the library needs another initialiser before them.
[[gnu::constructor]] void OnLoad() {
  test_init();
}

// A thread may still be inside libusb when the process exits, with a customer before the terminal: libusb aborts when it
// is released then.
bool LibusbIsUnused() {
  constexpr int kLongestWaitMs = 2000;
  if (gwq::HasForked()) return false;
  gwq::CancelOperations();
  return gwq::TakeTurnForGood(kLongestWaitMs) && !gwq::UsbIsReading();
}

[[gnu::destructor]] void OnUnload() {
  if (LibusbIsUnused()) {
    test_deinit();
  } else {
    TellUnloaded();
  }
  if (&__gnu_cxx::__freeres != nullptr) __gnu_cxx::__freeres();
}

}  // namespace
