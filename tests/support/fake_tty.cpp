// SPDX-License-Identifier: MIT
// The C library's own inline versions would stand in the way of the definitions below.
#undef _FORTIFY_SOURCE

#include "support/fake_tty.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/syscall.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <ctime>
#include <deque>
#include <mutex>
#include <set>

#include "support/test_clock.h"

namespace gwq::test {
namespace {

constexpr int kIdleReadMs = 100;
constexpr int kArrivalMs = 5000;  // the kernel moves bytes along in its own time

int SystemPoll(pollfd* fds, nfds_t count, int timeout_ms) {
  std::timespec timeout{.tv_sec = timeout_ms / 1000, .tv_nsec = timeout_ms % 1000 * 1'000'000L};
  return static_cast<int>(
      syscall(SYS_ppoll, fds, count, timeout_ms < 0 ? nullptr : &timeout, nullptr, std::size_t{0}));
}

bool WaitReadable(int fd) {
  pollfd wait{.fd = fd, .events = POLLIN, .revents = 0};
  return SystemPoll(&wait, 1, kArrivalMs) == 1;
}

// The kernel's TCGETA, TCSETA and TCSETAF by way of termios: an emulated program's termio does not
// arrive whole.
int PassOn(int fd, unsigned long request, void* argument) {
  if (request != TCGETA && request != TCSETA && request != TCSETAF) {
    return static_cast<int>(syscall(SYS_ioctl, fd, request, argument));
  }
  termios whole{};
  if (tcgetattr(fd, &whole) != 0) return -1;
  auto& part = *static_cast<struct termio*>(argument);
  const auto exchange = [get = request == TCGETA](tcflag_t& flags, unsigned short& low) {
    if (get) low = static_cast<unsigned short>(flags);
    flags = (flags & ~tcflag_t{0xFFFF}) | low;
  };
  exchange(whole.c_iflag, part.c_iflag);
  exchange(whole.c_oflag, part.c_oflag);
  exchange(whole.c_cflag, part.c_cflag);
  exchange(whole.c_lflag, part.c_lflag);
  if (request == TCGETA) {
    part.c_line = whole.c_line;
    std::copy_n(whole.c_cc, NCC, part.c_cc);
    return 0;
  }
  std::copy_n(part.c_cc, NCC, whole.c_cc);
  return tcsetattr(fd, request == TCSETAF ? TCSAFLUSH : TCSANOW, &whole);
}

}  // namespace

struct FakeTty::State {
  mutable std::mutex mutex;
  int master = -1;
  int keeper = -1;  // keeps the device's state while the host has it closed
  std::string path;
  std::string alias;
  std::set<int> fds;
  std::size_t pending = 0;  // sent and not read by the host
  mutable std::size_t in_flight = 0;
  mutable Bytes received;
  std::function<std::string(const Bytes&)> responder;
  std::function<void(int)> hook;
  std::function<void(int)> poll_hook;
  int reads = 0;
  bool fail_reads = false;
  bool hung_up = false;
  bool takes_nothing = false;
  std::deque<ssize_t> write_plans;
  std::set<unsigned long> failing_requests;
  std::vector<std::string> calls;
  std::vector<struct termio> applied;

  void Send(std::string_view bytes) {
    pending += bytes.size();
    while (!bytes.empty()) {
      const long written = syscall(SYS_write, master, bytes.data(), bytes.size());
      if (written <= 0) return;
      bytes.remove_prefix(static_cast<std::size_t>(written));
    }
  }

  void Collect() const {
    if (takes_nothing) return;
    std::array<std::uint8_t, 4096> block{};
    while (in_flight > 0 && WaitReadable(master)) {
      const long got = syscall(SYS_read, master, block.data(), block.size());
      if (got <= 0) return;
      received.insert(received.end(), block.begin(), block.begin() + got);
      in_flight -= std::min(in_flight, static_cast<std::size_t>(got));
    }
  }

  ssize_t Read(int fd, void* buffer, std::size_t size) {
    std::unique_lock lock(mutex);
    const int index = reads++;
    if (const auto call = hook) {
      lock.unlock();
      call(index);
      lock.lock();
    }
    if (fail_reads) {
      errno = EIO;
      return -1;
    }
    if (hung_up) return 0;
    if (pending == 0 || size == 0) {
      AdvanceMs(kIdleReadMs);
      return 0;
    }
    return Fetch(fd, buffer, size);
  }

  // For bytes to read; whether there is room to write is the system's to say.
  int Poll(pollfd* wait, int timeout_ms) {
    std::unique_lock lock(mutex);
    if (const auto call = poll_hook) {
      lock.unlock();
      call(timeout_ms);
      lock.lock();
    }
    if (pending > 0 || fail_reads || hung_up) {
      wait->revents = POLLIN;
      return 1;
    }
    AdvanceMs(timeout_ms);
    return 0;
  }

  ssize_t Fetch(int fd, void* buffer, std::size_t size) {
    std::array<std::uint8_t, 4096> block{};
    WaitReadable(fd);
    const long got = syscall(SYS_read, fd, block.data(), std::min(size, block.size()));
    if (got <= 0) return got;
    pending -= std::min(pending, static_cast<std::size_t>(got));
    std::memcpy(buffer, block.data(), static_cast<std::size_t>(got));
    return got;
  }

  ssize_t Write(int fd, const void* data, std::size_t size) {
    const std::lock_guard lock(mutex);
    calls.push_back("write " + std::to_string(size));
    auto count = static_cast<ssize_t>(size);
    if (!write_plans.empty()) {
      count = std::min(count, write_plans.front());
      write_plans.pop_front();
    }
    if (count < 0) {
      errno = EIO;
      return -1;
    }
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    return Pass(fd, Bytes(bytes, bytes + count));
  }

  ssize_t Pass(int fd, const Bytes& bytes) {
    const long written = syscall(SYS_write, fd, bytes.data(), bytes.size());
    if (written <= 0) return written;
    in_flight += static_cast<std::size_t>(written);
    Collect();
    if (responder) Send(responder(bytes));
    return written;
  }

  int Control(int fd, unsigned long request, void* argument) {
    const std::lock_guard lock(mutex);
    if (request == TCGETA) calls.emplace_back("TCGETA");
    if (request == TCSETAF) {
      calls.emplace_back("TCSETAF");
      applied.push_back(*static_cast<struct termio*>(argument));
    }
    if (failing_requests.contains(request)) {
      errno = EIO;
      return -1;
    }
    if (request == TCSETAF) pending = 0;
    return PassOn(fd, request, argument);
  }

  int Flush(int fd, int queue) {
    const std::lock_guard lock(mutex);
    calls.push_back("tcflush " + std::to_string(queue));
    if (queue != TCOFLUSH) pending = 0;
    return static_cast<int>(syscall(SYS_ioctl, fd, TCFLSH, queue));
  }
};

namespace {

constinit std::mutex g_mutex;
constinit std::vector<std::shared_ptr<FakeTty::State>>* g_all = nullptr;

std::shared_ptr<FakeTty::State> ByPath(std::string_view path) {
  const std::lock_guard lock(g_mutex);
  if (g_all == nullptr) return nullptr;
  for (const auto& tty : *g_all) {
    if (path == tty->path || (!tty->alias.empty() && path == tty->alias)) return tty;
  }
  return nullptr;
}

std::shared_ptr<FakeTty::State> ByDescriptor(int fd) {
  const std::lock_guard lock(g_mutex);
  if (g_all == nullptr) return nullptr;
  for (const auto& tty : *g_all) {
    const std::lock_guard own(tty->mutex);
    if (tty->fds.contains(fd)) return tty;
  }
  return nullptr;
}

// Its own function, for the C library declares that poll only writes to `fds`.
[[gnu::noinline]] int PollHere(pollfd* fds, nfds_t count, int timeout_ms) {
  const auto tty = count == 1 && (fds->events & POLLIN) != 0 ? ByDescriptor(fds->fd) : nullptr;
  return tty != nullptr ? tty->Poll(fds, timeout_ms) : SystemPoll(fds, count, timeout_ms);
}

void Register(const std::shared_ptr<FakeTty::State>& state) {
  const std::lock_guard lock(g_mutex);
  if (g_all == nullptr) g_all = new std::vector<std::shared_ptr<FakeTty::State>>;
  g_all->push_back(state);
}

void Forget(const std::shared_ptr<FakeTty::State>& state) {
  const std::lock_guard lock(g_mutex);
  std::erase(*g_all, state);
  if (!g_all->empty()) return;
  delete g_all;
  g_all = nullptr;
}

}  // namespace

FakeTty::FakeTty(std::string alias) : state_(std::make_shared<State>()) {
  std::array<char, 128> name{};
  if (openpty(&state_->master, &state_->keeper, name.data(), nullptr, nullptr) != 0) {
    ADD_FAILURE() << "no pseudo-terminal: " << std::strerror(errno);
  }
  state_->path = name.data();
  state_->alias = std::move(alias);
  Register(state_);
}

FakeTty::~FakeTty() {
  Forget(state_);
  EXPECT_EQ(state_->fds.size(), 0U) << "the serial device was left open";
  EXPECT_EQ(state_->write_plans.size(), 0U) << "planned writes that were not made";
  syscall(SYS_close, state_->keeper);
  syscall(SYS_close, state_->master);
}

const std::string& FakeTty::Path() const {
  return state_->path;
}

void FakeTty::Send(std::string_view bytes) {
  const std::lock_guard lock(state_->mutex);
  state_->Send(bytes);
}

Bytes FakeTty::Received() const {
  const std::lock_guard lock(state_->mutex);
  return state_->received;
}

void FakeTty::Respond(std::function<std::string(const Bytes&)> responder) {
  const std::lock_guard lock(state_->mutex);
  state_->responder = std::move(responder);
}

void FakeTty::OnRead(std::function<void(int)> hook) {
  const std::lock_guard lock(state_->mutex);
  state_->hook = std::move(hook);
}

void FakeTty::OnPoll(std::function<void(int)> hook) {
  const std::lock_guard lock(state_->mutex);
  state_->poll_hook = std::move(hook);
}

void FakeTty::HangUp() {
  const std::lock_guard lock(state_->mutex);
  state_->hung_up = true;
}

void FakeTty::FailReads() {
  const std::lock_guard lock(state_->mutex);
  state_->fail_reads = true;
}

void FakeTty::NextWritesMove(const std::vector<ssize_t>& counts) {
  const std::lock_guard lock(state_->mutex);
  state_->write_plans.assign(counts.begin(), counts.end());
}

void FakeTty::TakeNothing() {
  const std::lock_guard lock(state_->mutex);
  state_->takes_nothing = true;
}

void FakeTty::FailIoctl(unsigned long request) {
  const std::lock_guard lock(state_->mutex);
  state_->failing_requests.insert(request);
}

std::vector<std::string> FakeTty::Calls() const {
  const std::lock_guard lock(state_->mutex);
  return state_->calls;
}

std::vector<struct termio> FakeTty::Applied() const {
  const std::lock_guard lock(state_->mutex);
  return state_->applied;
}

struct termio FakeTty::Settings() const {
  struct termio settings {};
  PassOn(state_->keeper, TCGETA, &settings);
  return settings;
}

void FakeTty::SetSettings(const struct termio& settings) {
  struct termio copy = settings;
  PassOn(state_->keeper, TCSETA, &copy);
}

int FakeTty::Waiting() const {
  int count = 0;
  syscall(SYS_ioctl, state_->keeper, FIONREAD, &count);
  return count;
}

}  // namespace gwq::test

using gwq::test::ByDescriptor;
using gwq::test::ByPath;

extern "C" {

__attribute__((visibility("default"))) int open(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const unsigned mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, unsigned) : 0;
  va_end(arguments);
  const auto tty = ByPath(path);
  if (tty == nullptr) return static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, flags, mode));
  // The test's own session must not get a controlling terminal that hangs up.
  const int fd = static_cast<int>(syscall(SYS_openat, AT_FDCWD, tty->path.c_str(), flags | O_NOCTTY, mode));
  const std::lock_guard lock(tty->mutex);
  tty->calls.push_back("open " + std::string(path) + " " + std::to_string(flags));
  if (fd >= 0) tty->fds.insert(fd);
  return fd;
}

__attribute__((visibility("default"))) int close(int fd) {
  if (const auto tty = ByDescriptor(fd)) {
    const std::lock_guard lock(tty->mutex);
    tty->calls.emplace_back("close");
    tty->fds.erase(fd);
  }
  return static_cast<int>(syscall(SYS_close, fd));
}

__attribute__((visibility("default"))) ssize_t read(int fd, void* buffer, size_t size) {
  if (const auto tty = ByDescriptor(fd)) return tty->Read(fd, buffer, size);
  return syscall(SYS_read, fd, buffer, size);
}

__attribute__((visibility("default"))) ssize_t write(int fd, const void* data, size_t size) {
  if (const auto tty = ByDescriptor(fd)) return tty->Write(fd, data, size);
  return syscall(SYS_write, fd, data, size);
}

__attribute__((visibility("default"))) int poll(pollfd* fds, nfds_t count, int timeout_ms) {
  return gwq::test::PollHere(fds, count, timeout_ms);
}

__attribute__((visibility("default"))) int ioctl(int fd, unsigned long request, ...) noexcept {
  va_list arguments;
  va_start(arguments, request);
  void* argument = va_arg(arguments, void*);
  va_end(arguments);
  if (const auto tty = ByDescriptor(fd)) return tty->Control(fd, request, argument);
  return static_cast<int>(syscall(SYS_ioctl, fd, request, argument));
}

__attribute__((visibility("default"))) int tcflush(int fd, int queue) noexcept {
  if (const auto tty = ByDescriptor(fd)) return tty->Flush(fd, queue);
  return static_cast<int>(syscall(SYS_ioctl, fd, TCFLSH, queue));
}

}  // extern "C"
