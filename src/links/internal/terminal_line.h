// A terminal line in raw mode, as the serial link and the auxiliary port use it.
#pragma once

#include <sys/types.h>
#include <termio.h>

#include <atomic>

#include <gwq/status_codes.h>
#include "links/internal/unique_fd.h"

namespace gwq {

// When a write gives up on a peer that takes no more bytes.
struct WriteEnd {
  int timeout_s = 5;  // without a byte taken; whole seconds, as a read's
  bool (*cancelled)() = nullptr;
};

// Opens a device for reading and writing; it may become the controlling terminal. Owns nothing after a failure.
UniqueFd OpenTerminal(const char* path);

// The line that is open, and the settings that it had before. Any thread may ask whether it is open.
class TerminalLine {
 public:
  [[nodiscard]] int fd() const { return fd_.load(std::memory_order_acquire); }
  [[nodiscard]] bool IsOpen() const { return fd() != UniqueFd::kNone; }

  // Makes a descriptor the line's own, without closing the one before.
  void Use(int fd) { fd_.store(fd, std::memory_order_release); }
  // Closes the line, its settings as they are.
  void Close();

  // Saves the settings of `fd` and applies raw 8N1 at `baud`. Returns 0, GWQ_LINK_UNUSABLE, or GWQ_LINK_BAD_ARGUMENT for
  // no descriptor.
  int SetUp(int fd, int baud);
  // Applies the saved settings; results as SetUp.
  [[nodiscard]] int Restore(int fd) const;

  // Writes until all bytes are out, an error occurs, or `end`. A signal does not end it, and a pipe without a reader
  // is an error, not SIGPIPE. Returns the bytes written; GWQ_LINK_BAD_ARGUMENT if the line is closed, for NULL, or a
  // length below 1.
  int Write(const unsigned char* data, int length, const WriteEnd& end = {}) const;

  // One read of what is there, `room` bytes at most; 0 when a signal arrives, -1 after an error.
  int Read(unsigned char* buffer, int room) const;

 private:
  std::atomic<int> fd_{UniqueFd::kNone};
  struct termio saved_ {};
};

}  // namespace gwq
