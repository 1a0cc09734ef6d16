// SPDX-License-Identifier: MIT
#include "links/internal/terminal_line.h"

#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <ctime>

#include <gwq/status_codes.h>
#include "diag/internal/failure.h"
#include "diag/internal/pause.h"

namespace gwq {
namespace {

struct Speed {
  int baud;
  unsigned short code;
};

constexpr std::array kSpeeds{Speed{300, B300},     Speed{1200, B1200},   Speed{2400, B2400},
                             Speed{4800, B4800},   Speed{9600, B9600},   Speed{19200, B19200},
                             Speed{38400, B38400}, Speed{57600, B57600}, Speed{115200, B115200}};

// Contract: a baud rate that is not in the table means 9600.
unsigned short SpeedCode(int baud) {
  const auto* const found =
      std::find_if(kSpeeds.begin(), kSpeeds.end(), [baud](const Speed& s) { return s.baud == baud; });
  return found == kSpeeds.end() ? static_cast<unsigned short>(B9600) : found->code;
}

// Raw 8N1 at the given speed; a read returns after at most 0.1 s, possibly with no bytes.
// Contract: the control modes are replaced as a whole, and NOFLSH is cleared as well.
struct termio RawSettings(const struct termio& saved, int baud) {
  struct termio raw = saved;
  raw.c_iflag &= static_cast<unsigned short>(~(ISTRIP | INLCR | IGNCR | ICRNL | IXON));
  raw.c_oflag &= static_cast<unsigned short>(~OPOST);
  raw.c_cflag = static_cast<unsigned short>(SpeedCode(baud) | CS8 | CREAD | CLOCAL);
  raw.c_lflag &= static_cast<unsigned short>(~(ISIG | ICANON | ECHO | NOFLSH));
  raw.c_cc[VMIN] = 0;
  raw.c_cc[VTIME] = 1;
  raw.c_cc[VQUIT] = 0x7F;
  return raw;
}

// Makes one write non-blocking; reads go on waiting as VTIME says.
class NonBlocking {
 public:
  explicit NonBlocking(int fd) : fd_(fd), flags_(fcntl(fd, F_GETFL)) {
    if (Changes()) fcntl(fd_, F_SETFL, flags_ | O_NONBLOCK);
  }
  ~NonBlocking() {
    if (Changes()) fcntl(fd_, F_SETFL, flags_);
  }
  NonBlocking(const NonBlocking&) = delete;
  NonBlocking& operator=(const NonBlocking&) = delete;

 private:
  [[nodiscard]] bool Changes() const { return flags_ >= 0 && (flags_ & O_NONBLOCK) == 0; }

  int fd_;
  int flags_;
};

// Consumes the SIGPIPE of this thread's own write, so that the host does not receive it.
class SigpipeBlocked {
 public:
  SigpipeBlocked() {
    sigemptyset(&sigpipe_);
    sigaddset(&sigpipe_, SIGPIPE);
    sigset_t pending{};
    sigpending(&pending);
    was_pending_ = sigismember(&pending, SIGPIPE) == 1;
    pthread_sigmask(SIG_BLOCK, &sigpipe_, &host_mask_);
  }
  ~SigpipeBlocked() {
    constexpr std::timespec kNoWait{};
    if (!was_pending_) sigtimedwait(&sigpipe_, nullptr, &kNoWait);
    pthread_sigmask(SIG_SETMASK, &host_mask_, nullptr);
  }
  SigpipeBlocked(const SigpipeBlocked&) = delete;
  SigpipeBlocked& operator=(const SigpipeBlocked&) = delete;

 private:
  sigset_t sigpipe_{};
  sigset_t host_mask_{};
  bool was_pending_ = false;
};

// Waits up to 0.1 s until the line takes bytes again.
void WaitForRoom(int fd) {
  constexpr int kWaitMs = 100;
  pollfd line{.fd = fd, .events = POLLOUT, .revents = 0};
  poll(&line, 1, kWaitMs);
}

// Measures how long the peer has taken no byte. A queue that shrinks counts as progress: a slow
// line takes bytes long before it has room for more.
class StallTimer {
 public:
  explicit StallTimer(int fd) : fd_(fd), since_(time(nullptr)), queued_(Queued()) {}

  void Restart() {
    since_ = time(nullptr);
    queued_ = Queued();
  }
  std::time_t Seconds() {
    if (Queued() != queued_) Restart();
    return time(nullptr) - since_;
  }

 private:
  [[nodiscard]] int Queued() const {
    int bytes = 0;
    return ioctl(fd_, TIOCOUTQ, &bytes) == 0 ? bytes : 0;
  }

  int fd_;
  std::time_t since_;
  int queued_;
};

void NoteNotOpened(int error) {
  const bool absent = error == ENOENT || error == ENXIO || error == ENODEV;
  const bool refused = error == EACCES || error == EPERM;
  const int there = refused ? GWQ_STEP_PERMISSION : error == EBUSY ? GWQ_STEP_CLAIM : GWQ_STEP_OPEN;
  NoteSystemFailure(absent ? static_cast<int>(GWQ_STEP_FIND) : there, error);
}

int NotSetUp() {
  NoteSystemFailure(GWQ_STEP_OPEN, errno);
  return GWQ_LINK_UNUSABLE;
}

}  // namespace

UniqueFd OpenTerminal(const char* path) {
  if (path == nullptr) return UniqueFd();
  SetTty(path);
  const int fd = open(path, O_RDWR);
  if (fd < 0) NoteNotOpened(errno);
  if (fd >= 0) fcntl(fd, F_SETFD, FD_CLOEXEC);
  return UniqueFd(fd);
}

void TerminalLine::Close() {
  const UniqueFd fd(fd_.exchange(UniqueFd::kNone));
}

int TerminalLine::SetUp(int fd, int baud) {
  if (fd == UniqueFd::kNone) return GWQ_LINK_BAD_ARGUMENT;
  if (ioctl(fd, TCGETA, &saved_) != 0) return NotSetUp();
  struct termio raw = RawSettings(saved_, baud);
  return ioctl(fd, TCSETAF, &raw) == 0 ? 0 : NotSetUp();
}

int TerminalLine::Restore(int fd) const {
  if (fd == UniqueFd::kNone) return GWQ_LINK_BAD_ARGUMENT;
  return ioctl(fd, TCSETAF, &saved_) == 0 ? 0 : GWQ_LINK_UNUSABLE;
}

int TerminalLine::Write(const unsigned char* data, int length, const WriteEnd& end) const {
  if (!IsOpen() || data == nullptr || length <= 0) return GWQ_LINK_BAD_ARGUMENT;
  const int fd = this->fd();
  const NonBlocking non_blocking(fd);
  const SigpipeBlocked sigpipe_blocked;
  StallTimer stall(fd);
  int sent = 0;
  while (sent < length) {
    const ssize_t written = write(fd, data + sent, static_cast<std::size_t>(length - sent));
    if (written < 0 && errno != EAGAIN && errno != EINTR) {
      NoteSystemFailure(GWQ_STEP_SEND, errno);
      break;
    }
    if (written > 0) {
      sent += static_cast<int>(written);
      stall.Restart();
      continue;
    }
    WaitForRoom(fd);
    if (stall.Seconds() > end.timeout_s) {
      NoteSystemFailure(GWQ_STEP_SEND, ETIMEDOUT);
      break;
    }
    if (end.cancelled != nullptr && end.cancelled()) break;
  }
  return sent;
}

// A maximum below 0 gives a negative room, which read() would take for a huge one.
int TerminalLine::Read(unsigned char* buffer, int room) const {
  const ssize_t got = read(fd(), buffer, static_cast<std::size_t>(std::max(room, 0)));
  if (got < 0 && errno == EINTR) return 0;
  if (got < 0) NoteSystemFailure(GWQ_STEP_WAIT, errno);
  return static_cast<int>(got);
}

// A line that has hung up can be read at once and has no byte, so that the time is slept instead.
int TerminalLine::ReadWithin(int timeout_ms, unsigned char* buffer, int room) const {
  pollfd line{.fd = fd(), .events = POLLIN, .revents = 0};
  if (poll(&line, 1, timeout_ms) <= 0) return 0;
  const int got = Read(buffer, room);
  if (got == 0) PauseMs(timeout_ms);
  return got;
}

}  // namespace gwq
