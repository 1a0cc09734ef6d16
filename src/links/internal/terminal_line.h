// SPDX-License-Identifier: MIT
// A terminal line in raw mode, for the serial link and the auxiliary port.
#pragma once

#include <sys/types.h>
#include <termio.h>

#include <atomic>

#include "links/internal/unique_fd.h"

namespace gwq {

// When a write gives up on a peer that takes no bytes.
struct WriteEnd {
  int timeout_s = 5;  // since the last byte was taken
  bool (*cancelled)() = nullptr;
};

// Opens a device for reading and writing; it may become the controlling terminal. Owns nothing
// after a failure.
UniqueFd OpenTerminal(const char* path);

// The open line and the settings that it had before. Any thread may call IsOpen.
class TerminalLine {
 public:
  [[nodiscard]] int fd() const { return fd_.load(std::memory_order_acquire); }
  // Contract: only -1 means closed; any other negative descriptor counts as open.
  [[nodiscard]] bool IsOpen() const { return fd() != UniqueFd::kNone; }

  // Takes ownership of `fd` without closing the descriptor before it.
  void Use(int fd) { fd_.store(fd, std::memory_order_release); }
  // Closes the line without restoring its settings.
  void Close();

  // Saves the settings of `fd` and applies raw 8N1 at `baud`. Returns 0, GWQ_LINK_UNUSABLE, or
  // GWQ_LINK_BAD_ARGUMENT if `fd` is -1.
  int SetUp(int fd, int baud);
  // Applies the saved settings; results as SetUp.
  [[nodiscard]] int Restore(int fd) const;

  // Writes until all bytes are written, an error occurs, or `end`. Signals do not interrupt it; a
  // pipe without a reader is an error, not SIGPIPE. Returns the bytes written;
  // GWQ_LINK_BAD_ARGUMENT if the line is closed, `data` is NULL, or `length` is below 1.
  int Write(const unsigned char* data, int length, const WriteEnd& end = {}) const;

  // Reads the bytes that are available, at most `room`. Returns 0 after a signal, -1 after an
  // error.
  int Read(unsigned char* buffer, int room) const;
  // As Read, but waits up to `timeout_ms` for the first byte, and not as long as the line's settings
  // say. Returns 0 if none arrives.
  int ReadWithin(int timeout_ms, unsigned char* buffer, int room) const;

 private:
  std::atomic<int> fd_{UniqueFd::kNone};
  struct termio saved_ {};
};

}  // namespace gwq
