// SPDX-License-Identifier: MIT
// Lines of the log, against the bare calls that bring the same bytes to the file and against stdio.
// The library is loaded from a directory of its own, where its log is written.
#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "side.h"

namespace gwq::bench {
namespace {

namespace fs = std::filesystem;

// A copy of the library in a fresh directory, its log switched on; goes with the process.
class LoggingLibrary {
 public:
  LoggingLibrary() : directory_(fs::temp_directory_path() / ("gwq-bench-" + std::to_string(getpid()))) {
    fs::create_directory(directory_);
    fs::copy_file(GWQ_LIBRARY_FILE, directory_ / "libgwq.so");
    handle_ = dlopen((directory_ / "libgwq.so").c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle_ == nullptr) std::exit(1);
    Function<void(unsigned)>("SetDebugFlag")(1);
    log_file = Function<char*()>("pGetLogPath")();
  }
  ~LoggingLibrary() {
    dlclose(handle_);
    fs::remove_all(directory_);
  }
  LoggingLibrary(const LoggingLibrary&) = delete;
  LoggingLibrary& operator=(const LoggingLibrary&) = delete;

  template <typename Signature>
  Signature* Function(const char* name) const {
    return reinterpret_cast<Signature*>(dlsym(handle_, name));
  }

  fs::path log_file;

 private:
  fs::path directory_;
  void* handle_ = nullptr;
};

struct Log {
  LoggingLibrary library;
  int (*print)(const char*, ...) = library.Function<int(const char*, ...)>("ICC_DPrintLogToFile");
  void (*dump)(const char*, const unsigned char*, int) =
      library.Function<void(const char*, const unsigned char*, int)>("ICC_DPrintDataHexToFile");
  std::string bare_file = library.log_file.string() + ".bare";
};

Log& TheLog() {
  static Log s_log;
  return s_log;
}

void BareLine(const std::string& line) {
  const int fd = open(TheLog().bare_file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
  if (write(fd, line.data(), line.size()) != static_cast<ssize_t>(line.size())) std::exit(1);
  close(fd);
}

void StdioLine() {
  std::FILE* const file = std::fopen(TheLog().bare_file.c_str(), "a");
  std::fprintf(file, "%02d:%02d:%02d(%03d)  ", 9, 41, 7, 52);
  std::fprintf(file, "ICC_OpenTransPort: PID=%x,VID=%x, nRet=%d\r\n", 0x0001U, 0x1209U, 0);
  std::fclose(file);
}

void StdioDump(const std::vector<unsigned char>& bytes) {
  std::FILE* const file = std::fopen(TheLog().bare_file.c_str(), "a");
  std::fprintf(file, "%02d:%02d:%02d(%03d)  Send  LEN=%d   HEX: ", 9, 41, 7, 52,
               static_cast<int>(bytes.size()));
  for (const unsigned char byte : bytes) std::fprintf(file, "%02X", byte);
  std::fprintf(file, "\r\n");
  std::fclose(file);
}

// As Side, but empties both files from time to time, outside the measured time.
template <typename Call>
void LineSide(const std::string& work, std::size_t size, const char* side, Call call) {
  const std::string name = work + "/" + std::to_string(size) + "/" + side;
  benchmark::RegisterBenchmark(name.c_str(), [call, size](benchmark::State& state) {
    constexpr std::size_t kLargestFile = 1 << 20;
    const std::size_t calls_between =
        std::max<std::size_t>(1, kLargestFile / std::max<std::size_t>(2 * size, 128));
    std::size_t calls = 0;
    for ([[maybe_unused]] const auto& turn : state) {
      call();
      if (++calls % calls_between != 0) continue;
      state.PauseTiming();
      for (const fs::path& file : {TheLog().library.log_file, fs::path(TheLog().bare_file)}) {
        if (fs::exists(file)) fs::resize_file(file, 0);
      }
      state.ResumeTiming();
    }
  });
}

void Dump(std::size_t size) {
  auto& bytes = *new std::vector<unsigned char>(size, 0xA5);
  const auto& line =
      *new std::string("09:41:07(052)  Send  LEN=200000   HEX: " + std::string(2 * size, 'A') + "\r\n");
  LineSide("hex-dump line", size, "gwq",
           [&] { TheLog().dump("Send", bytes.data(), static_cast<int>(bytes.size())); });
  LineSide("hex-dump line", size, "bare calls", [&] { BareLine(line); });
  LineSide("hex-dump line", size, "fprintf a byte", [&] { StdioDump(bytes); });
}

const bool kRegistered = [] {
  static const std::string s_line = "09:41:07(052)  ICC_OpenTransPort: PID=1,VID=1209, nRet=0\r\n";
  LineSide("log line", 0, "gwq",
           [] { TheLog().print("ICC_OpenTransPort: PID=%x,VID=%x, nRet=%d", 0x0001U, 0x1209U, 0); });
  LineSide("log line", 0, "bare calls", [] { BareLine(s_line); });
  LineSide("log line", 0, "stdio", &StdioLine);
  for (const std::size_t size : {std::size_t{16}, std::size_t{1024}, std::size_t{200'000}}) Dump(size);
  return true;
}();

}  // namespace
}  // namespace gwq::bench
