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

// Raw 8N1 at the given speed; a read returns after 0.1 s at most, possibly with nothing.
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

// Only the write does not block: reads wait as the line is set up.
class WithoutBlocking {
 public:
  explicit WithoutBlocking(int fd) : fd_(fd), flags_(fcntl(fd, F_GETFL)) {
    if (Changes()) fcntl(fd_, F_SETFL, flags_ | O_NONBLOCK);
  }
  ~WithoutBlocking() {
    if (Changes()) fcntl(fd_, F_SETFL, flags_);
  }
  WithoutBlocking(const WithoutBlocking&) = delete;
  WithoutBlocking& operator=(const WithoutBlocking&) = delete;

 private:
  [[nodiscard]] bool Changes() const { return flags_ >= 0 && (flags_ & O_NONBLOCK) == 0; }

  int fd_;
  int flags_;
};

// Keeps a SIGPIPE of this thread's own write from the host.
class WithoutSigpipe {
 public:
  WithoutSigpipe() {
    sigemptyset(&sigpipe_);
    sigaddset(&sigpipe_, SIGPIPE);
    sigset_t pending{};
    sigpending(&pending);
    was_pending_ = sigismember(&pending, SIGPIPE) == 1;
    pthread_sigmask(SIG_BLOCK, &sigpipe_, &hosts_);
  }
  ~WithoutSigpipe() {
    constexpr std::timespec kAtOnce{};
    if (!was_pending_) sigtimedwait(&sigpipe_, nullptr, &kAtOnce);
    pthread_sigmask(SIG_SETMASK, &hosts_, nullptr);
  }
  WithoutSigpipe(const WithoutSigpipe&) = delete;
  WithoutSigpipe& operator=(const WithoutSigpipe&) = delete;

 private:
  sigset_t sigpipe_{};
  sigset_t hosts_{};
  bool was_pending_ = false;
};

// Waits a little until the line takes bytes again.
void AwaitRoom(int fd) {
  constexpr int kWaitMs = 100;
  pollfd line{.fd = fd, .events = POLLOUT, .revents = 0};
  poll(&line, 1, kWaitMs);
}

// How long the peer has taken nothing. A slow line takes bytes long before it has room for more.
class Standstill {
 public:
  explicit Standstill(int fd) : fd_(fd), since_(time(nullptr)), queued_(Queued()) {}

  void End() {
    since_ = time(nullptr);
    queued_ = Queued();
  }
  std::time_t Seconds() {
    if (Queued() != queued_) End();
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

bool Cancelled(const WriteEnd& end) {
  return end.cancelled != nullptr && end.cancelled();
}

}  // namespace

UniqueFd OpenTerminal(const char* path) {
  const int fd = path == nullptr ? UniqueFd::kNone : open(path, O_RDWR);
  if (fd >= 0) fcntl(fd, F_SETFD, FD_CLOEXEC);
  return UniqueFd(fd);
}

void TerminalLine::Close() {
  const UniqueFd fd(fd_.exchange(UniqueFd::kNone));
}

int TerminalLine::SetUp(int fd, int baud) {
  if (fd == UniqueFd::kNone) return GWQ_LINK_BAD_ARGUMENT;
  if (ioctl(fd, TCGETA, &saved_) != 0) return GWQ_LINK_UNUSABLE;
  struct termio raw = RawSettings(saved_, baud);
  return ioctl(fd, TCSETAF, &raw) == 0 ? 0 : GWQ_LINK_UNUSABLE;
}

int TerminalLine::Restore(int fd) const {
  if (fd == UniqueFd::kNone) return GWQ_LINK_BAD_ARGUMENT;
  return ioctl(fd, TCSETAF, &saved_) == 0 ? 0 : GWQ_LINK_UNUSABLE;
}

int TerminalLine::Write(const unsigned char* data, int length, const WriteEnd& end) const {
  if (!IsOpen() || data == nullptr || length <= 0) return GWQ_LINK_BAD_ARGUMENT;
  const int fd = this->fd();
  const WithoutBlocking without_blocking(fd);
  const WithoutSigpipe without_sigpipe;
  Standstill standstill(fd);
  int sent = 0;
  while (sent < length) {
    const ssize_t written = write(fd, data + sent, static_cast<std::size_t>(length - sent));
    if (written < 0 && errno != EAGAIN && errno != EINTR) break;
    if (written > 0) {
      sent += static_cast<int>(written);
      standstill.End();
      continue;
    }
    AwaitRoom(fd);
    if (standstill.Seconds() > end.timeout_s || Cancelled(end)) break;
  }
  return sent;
}

// A negative room, from a maximum below 0, would count as a huge one.
int TerminalLine::Read(unsigned char* buffer, int room) const {
  const ssize_t got = read(fd(), buffer, static_cast<std::size_t>(std::max(room, 0)));
  return got < 0 && errno == EINTR ? 0 : static_cast<int>(got);
}

}  // namespace gwq
