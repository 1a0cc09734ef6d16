// SPDX-License-Identifier: MIT
#include <gwq/diag/log.h>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <span>

#include <gwq/codec/text_forms.h>
#include <gwq/extra.h>
#include "diag/internal/clock_text.h"
#include "diag/internal/log_files.h"
#include "diag/internal/shared_word.h"

namespace gwq {
namespace {

constexpr std::size_t kMessageSize = 4096;

unsigned int s_uDebugFlag = 0;

bool LogIsOn() {
  return LoadShared(s_uDebugFlag) != 0;
}

int g_first_failure = 0;

// A line that cannot be written is dropped without a word to the caller; the first error is kept
// for GWQ_GetLogFailure.
void RecordFailure(int error) {
  int none = 0;
  std::atomic_ref<int>(g_first_failure).compare_exchange_strong(none, error);
}

// Today's log file, open for one line. It is opened and closed for every line, so that the line is
// on disk when the call returns. A line is one write, so that lines of several threads do not mix.
class TodaysLog {
 public:
  TodaysLog() : fd_(OpenTodaysLog()) {
    if (fd_ < 0) RecordFailure(errno);
  }
  ~TodaysLog() {
    if (fd_ >= 0) close(fd_);
  }
  TodaysLog(const TodaysLog&) = delete;
  TodaysLog& operator=(const TodaysLog&) = delete;

  explicit operator bool() const { return fd_ >= 0; }

  void Write(std::span<const char> line) const {
    while (!line.empty()) {
      const ssize_t written = write(fd_, line.data(), line.size());
      if (written < 0 && errno == EINTR) continue;
      if (written <= 0) return RecordFailure(written < 0 ? errno : ENOSPC);
      line = line.subspan(static_cast<std::size_t>(written));
    }
  }

 private:
  int fd_;
};

// A line under construction, wiped on destruction: it may contain secrets from the caller's
// arguments.
class LineBuffer {
 public:
  explicit LineBuffer(std::size_t capacity)
      : size_(capacity), bytes_(static_cast<char*>(std::malloc(capacity))) {}
  ~LineBuffer() {
    if (bytes_ != nullptr) explicit_bzero(bytes_, used_);
    std::free(bytes_);
  }
  LineBuffer(const LineBuffer&) = delete;
  LineBuffer& operator=(const LineBuffer&) = delete;

  explicit operator bool() const { return bytes_ != nullptr; }
  char* End() { return bytes_ + used_; }
  [[nodiscard]] std::size_t Room() const { return size_ - used_; }
  void Grow(std::size_t count) { used_ += count; }
  [[nodiscard]] std::span<const char> Text() const { return {bytes_, used_}; }

  void Append(const char* text) {
    const std::size_t length = std::min(std::strlen(text), Room());
    std::memcpy(End(), text, length);
    used_ += length;
  }

 private:
  std::size_t size_;
  std::size_t used_ = 0;
  char* bytes_;
};

void AppendStamp(LineBuffer& line) {
  const ClockText stamp = TimeStamp();
  line.Append(stamp.data());
  line.Append("  ");
}

// Needs room for a terminator after the digits.
void AppendHex(LineBuffer& line, std::span<const unsigned char> data) {
  HexToAscii(data.data(), static_cast<int>(data.size()), line.End());
  line.Grow(2 * data.size());
}

// Not inlined: with the log off a call costs one load and one branch.
// Contract: a message is cut after 4095 bytes.
[[gnu::noinline]] void WriteMessage(const char* format, va_list arguments) {
  constexpr std::size_t kStampAndEnd = 64;
  const TodaysLog log;
  LineBuffer line(kMessageSize + kStampAndEnd);
  if (!log || !line) return;
  AppendStamp(line);
  std::memset(line.End(), 0, kMessageSize);
  // After an error the text that precedes it is logged.
  static_cast<void>(std::vsnprintf(line.End(), kMessageSize, format, arguments));
  line.Grow(strnlen(line.End(), kMessageSize - 1));
  line.Append("\r\n");
  log.Write(line.Text());
}

void WriteHexDump(const char* label, std::span<const unsigned char> data, int printed_length) {
  constexpr std::size_t kStampLengthAndEnd = 96;
  const std::size_t label_length = label == nullptr ? 0 : std::strlen(label) + 2;
  const TodaysLog log;
  LineBuffer line(kStampLengthAndEnd + label_length + 2 * data.size());
  if (!log || !line) return;
  AppendStamp(line);
  if (label != nullptr) {
    line.Append(label);
    line.Append("  ");
  }
  std::array<char, 32> length{};
  std::snprintf(length.data(), length.size(), "LEN=%d   HEX: ", printed_length);
  line.Append(length.data());
  AppendHex(line, data);
  line.Append("\r\n");
  log.Write(line.Text());
}

}  // namespace
}  // namespace gwq

using namespace gwq;

void SetDebugFlag(unsigned int flag) {
  StoreShared(s_uDebugFlag, flag);
}

int ICC_DPrintLogToFile(const char* format, ...) {
  if (!LogIsOn() || format == nullptr) return 0;
  va_list arguments;
  va_start(arguments, format);
  WriteMessage(format, arguments);
  va_end(arguments);
  return 0;
}

// Contract: a negative length is logged as it is, without bytes.
void ICC_DPrintDataHexToFile(const char* label, const unsigned char* data, int len) {
  if (!LogIsOn()) return;
  const std::size_t count = data == nullptr || len < 0 ? 0 : static_cast<std::size_t>(len);
  WriteHexDump(label, {data, count}, len);
}

int GWQ_GetLogFailure() {
  return std::atomic_ref<int>(g_first_failure).exchange(0);
}
