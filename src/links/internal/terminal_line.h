// What the serial link and the auxiliary port have in common: a terminal line in raw mode.
#pragma once

#include <sys/types.h>
#include <termio.h>

#include <gwq/status_codes.h>

namespace gwq::tty {
inline constexpr int kClosed = -1;

// Saves the settings of `fd` and applies raw 8N1 at `baud`. Returns 0, GWQ_LINK_UNUSABLE, or GWQ_LINK_BAD_ARGUMENT if
// `fd` is kClosed.
int SetUp(int fd, int baud, struct termio& saved);

// Applies the saved settings; results as SetUp.
int Restore(int fd, const struct termio& saved);

// Closes what is open in `shared_fd` with its settings as they are, then opens `path` there and sets it up.
// Returns 0, GWQ_NOT_OPENED or GWQ_LINK_UNUSABLE, both with nothing open.
int Open(int& shared_fd, const char* path, int baud, int (*set_up)(int fd, int baud));

// Closes what is open in `shared_fd`.
void Close(int& shared_fd);

// When a write gives up on a peer that takes no more bytes.
struct WriteEnd {
  int timeout_s = 5;  // without a byte taken; whole seconds, as a read's
  bool (*cancelled)() = nullptr;
};

// Writes until all bytes are out, an error comes, or `end`. A signal does not end it, and a pipe that nobody reads gives
// an error, not SIGPIPE. Returns the bytes written; GWQ_LINK_BAD_ARGUMENT if `fd` is kClosed, for null, or a length of 0 or less.
int Write(int fd, const unsigned char* data, int length, const WriteEnd& end = {});

// One read of what is there, `room` bytes at most; 0 when a signal has come.
ssize_t Read(int fd, unsigned char* buffer, int room);

}  // namespace gwq::tty
