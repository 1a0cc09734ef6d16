// SPDX-License-Identifier: MIT
#include "support/log_capture.h"

#include <dlfcn.h>
#include <glob.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>
#include <mutex>
#include <string_view>
#include <system_error>

#include <gwq/diag/log.h>
#include "support/temp_dir.h"

namespace gwq::test {
namespace {

// Made on first use: the load hook asks before this file's own initialisers.
struct Module {
  TempDir directory;
  std::mutex mutex;
  std::string file = directory / "libgwq.so";
};

Module& TheModule() {
  static Module s_module;
  return s_module;
}

// "09:41:07(052)  "
constexpr std::string_view kStampShape = "dd:dd:dd(ddd)  ";

bool IsStampAt(std::string_view text, std::size_t at) {
  if (text.size() - at < kStampShape.size()) return false;
  return std::equal(kStampShape.begin(), kStampShape.end(), text.begin() + static_cast<std::ptrdiff_t>(at),
                    [](char shape, char c) {
                      return shape == 'd' ? std::isdigit(static_cast<unsigned char>(c)) != 0 : shape == c;
                    });
}

// Where the line that begins at `from` ends: before the CR LF that a stamp or the end of the log follows.
std::size_t EndOfLine(std::string_view log, std::size_t from) {
  std::size_t end = log.find("\r\n", from);
  while (end != std::string_view::npos && end + 2 < log.size() && !IsStampAt(log, end + 2)) {
    end = log.find("\r\n", end + 1);
  }
  return std::min(end, log.size());
}

std::vector<std::string> SplitMessages(std::string_view log) {
  std::vector<std::string> messages;
  for (std::size_t at = 0; at < log.size();) {
    const std::size_t end = EndOfLine(log, at);
    const std::size_t message = IsStampAt(log, at) ? at + kStampShape.size() : at;
    messages.emplace_back(log.substr(message, end - message));
    at = end + 2;
  }
  return messages;
}

void RemoveLogs() {
  std::error_code ignored;
  std::filesystem::remove_all(ModuleDirectory() / "Log", ignored);
}

}  // namespace

const std::filesystem::path& ModuleDirectory() {
  return TheModule().directory.Path();
}

std::filesystem::path LogDirectory() {
  return ModuleDirectory() / "Log" / "Gwq_Volkarn";
}

void PretendModuleIs(const std::string& file) {
  Module& module = TheModule();
  const std::lock_guard lock(module.mutex);
  module.file = file.empty() ? (module.directory / "libgwq.so").string() : file;
}

LogCapture::LogCapture() {
  Clear();
  SetDebugFlag(1);
}

LogCapture::~LogCapture() {
  SetDebugFlag(0);
}

void LogCapture::Clear() {
  RemoveLogs();
}

// glob, not a directory_iterator: ThreadSanitizer sees a directory being closed, but not opened,
// and takes its descriptor for another thread's of the same number.
std::string LogCapture::Raw() const {
  glob_t found{};
  std::string all;
  if (glob((LogDirectory() / "*").c_str(), 0, nullptr, &found) == 0) {
    for (std::size_t i = 0; i < found.gl_pathc; ++i) all += ReadFile(found.gl_pathv[i]);
  }
  globfree(&found);
  return all;
}

std::vector<std::string> LogCapture::Messages() const {
  return SplitMessages(Raw());
}

}  // namespace gwq::test

extern "C" __attribute__((visibility("default"))) int dladdr(const void* address, Dl_info* info) noexcept {
  if (address != reinterpret_cast<const void*>(&GetModuleCurPath)) {
    using Function = int (*)(const void*, Dl_info*);
    static const auto s_pNext = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "dladdr"));
    return s_pNext(address, info);
  }
  // The library reads the name after the call: the text stays as it is for the thread that asked.
  static thread_local std::array<char, 4096> s_szFile;
  gwq::test::Module& module = gwq::test::TheModule();
  const std::lock_guard lock(module.mutex);
  s_szFile[module.file.copy(s_szFile.data(), s_szFile.size() - 1)] = '\0';
  *info = {};
  info->dli_fname = s_szFile.data();
  return 1;
}
