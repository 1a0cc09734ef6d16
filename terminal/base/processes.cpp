// SPDX-License-Identifier: MIT
#include "base/processes.h"

#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <ctime>
#include <fstream>
#include <iterator>
#include <memory>
#include <string_view>
#include <tuple>

#include "base/errors.h"

namespace gwq::terminal {
namespace {

using namespace std::chrono_literals;
using SteadyTime = std::chrono::steady_clock::time_point;

std::vector<char*> Pointers(const std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  // The exec family takes pointers to non-const but leaves the texts alone.
  for (const std::string& text : texts) pointers.push_back(const_cast<char*>(text.c_str()));
  pointers.push_back(nullptr);
  return pointers;
}

bool RedirectTo(int fd, const std::string& file, int flags) {
  if (file.empty()) return true;
  const int opened = open(file.c_str(), flags, 0600);
  return opened >= 0 && dup2(opened, fd) == fd && (opened == fd || close(opened) == 0);
}

// In the child. False, and errno, when something does not work.
bool Prepare(const SpawnRequest& request, pid_t parent) {
  constexpr int kAppend = O_WRONLY | O_CREAT | O_APPEND;
  if (request.dies_with_us) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) _exit(128 + SIGKILL);  // it had ended before
  }
  if (request.passed_fd) {
    setpgid(0, 0);
    if (fcntl(*request.passed_fd, F_SETFD, 0) != 0 || !RedirectTo(STDIN_FILENO, "/dev/null", O_RDONLY))
      return false;
  }
  if (!RedirectTo(STDOUT_FILENO, request.output_file, kAppend) ||
      !RedirectTo(STDERR_FILENO, request.errors_file, kAppend))
    return false;
  return pthread_sigmask(SIG_SETMASK, &request.signal_mask, nullptr) == 0;
}

// What kept the child from becoming another program; 0 when nothing did.
int ReadFailure(const UniqueFd& pipe) {
  int error = 0;
  ssize_t count = -1;
  do {
    count = read(pipe.Get(), &error, sizeof error);
  } while (count < 0 && errno == EINTR);
  return count == sizeof error ? error : 0;
}

// Whether `assignment` begins an entry of the environment it was started with. Entries end with a zero byte.
bool StartedWith(const std::string& pid, const std::string& assignment) {
  std::ifstream file("/proc/" + pid + "/environ", std::ios::binary);
  const std::string environment{std::istreambuf_iterator<char>(file), {}};
  return environment.starts_with(assignment) || environment.find('\0' + assignment) != std::string::npos;
}

std::optional<pid_t> ProcessId(std::string_view name) {
  pid_t pid = 0;
  const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), pid);
  if (error != std::errc{} || end != name.data() + name.size()) return std::nullopt;
  return pid;
}

std::vector<pid_t> ProcessesWith(const std::string& assignment) {
  std::vector<pid_t> found;
  const std::unique_ptr<DIR, int (*)(DIR*)> proc(opendir("/proc"), closedir);
  if (!proc) return found;
  while (const dirent* entry = readdir(proc.get())) {
    const std::optional<pid_t> pid = ProcessId(entry->d_name);
    if (pid && StartedWith(entry->d_name, assignment)) found.push_back(*pid);
  }
  return found;
}

// Waits until each has ended, children or not, but not longer than to `end`.
void AwaitEnd(const std::vector<pid_t>& pids, SteadyTime end) {
  for (const pid_t pid : pids) {
    const UniqueFd process(static_cast<int>(syscall(SYS_pidfd_open, pid, 0)));
    if (!process) continue;  // it has ended
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
    pollfd ended{process.Get(), POLLIN, 0};
    poll(&ended, 1, static_cast<int>(std::max<std::int64_t>(left.count(), 0)));
  }
}

}  // namespace

SignalWatch::SignalWatch(std::initializer_list<int> signals) {
  sigset_t set;
  sigemptyset(&set);
  for (const int signal : signals) sigaddset(&set, signal);
  const int error = pthread_sigmask(SIG_BLOCK, &set, &original_);
  if (error != 0) throw std::system_error(error, std::generic_category(), "pthread_sigmask");
  fd_.Reset(Checked(signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK), "signalfd"));
}

std::optional<signalfd_siginfo> SignalWatch::Next() const {
  signalfd_siginfo info{};
  if (read(fd_.Get(), &info, sizeof info) != sizeof info) return std::nullopt;
  return info;
}

Environment::Environment() {
  for (char** entry = environ; *entry != nullptr; ++entry) entries_.emplace_back(*entry);
}

void Environment::Set(const std::string& name, const std::string& value) {
  Unset(name);
  entries_.push_back(name + "=" + value);
}

void Environment::Unset(const std::string& name) {
  std::erase_if(entries_, [&](const std::string& entry) { return entry.starts_with(name + "="); });
}

std::string Environment::Get(const std::string& name) const {
  for (const std::string& entry : entries_) {
    if (entry.starts_with(name + "=")) return entry.substr(name.size() + 1);
  }
  return {};
}

// Not posix_spawn, which cannot have the child die with us.
pid_t Spawn(const SpawnRequest& request) {
  const std::vector<char*> arguments = Pointers(request.arguments);
  const std::vector<char*> environment = Pointers(request.environment.Entries());
  std::array<int, 2> ends{};
  Checked(pipe2(ends.data(), O_CLOEXEC), "cannot start " + request.arguments[0]);
  const UniqueFd failure(ends[0]);
  UniqueFd report(ends[1]);
  const pid_t parent = getpid();
  const pid_t pid = Checked(fork(), "cannot start " + request.arguments[0]);
  if (pid == 0) {
    if (Prepare(request, parent)) execvpe(arguments[0], arguments.data(), environment.data());
    const int error = errno;
    std::ignore = write(report.Get(), &error, sizeof error);
    _exit(127);
  }
  report.Reset();
  if (const int error = ReadFailure(failure)) {
    waitpid(pid, nullptr, 0);
    throw std::system_error(error, std::generic_category(), "cannot start " + request.arguments[0]);
  }
  return pid;
}

std::optional<int> TryWait(pid_t pid) {
  int status = 0;
  if (waitpid(pid, &status, WNOHANG) != pid) return std::nullopt;
  return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

// The signal is blocked, and so waits for us when it comes before we do.
std::optional<int> WaitFor(pid_t pid, std::chrono::milliseconds limit) {
  sigset_t child;
  sigemptyset(&child);
  sigaddset(&child, SIGCHLD);
  for (const SteadyTime end = std::chrono::steady_clock::now() + limit;;) {
    if (const std::optional<int> status = TryWait(pid)) return status;
    const auto left = end - std::chrono::steady_clock::now();
    if (left <= 0s) return std::nullopt;
    const auto seconds = std::chrono::floor<std::chrono::seconds>(left);
    const timespec time{seconds.count(), std::chrono::nanoseconds(left - seconds).count()};
    sigtimedwait(&child, nullptr, &time);
  }
}

std::vector<pid_t> ProcessesOf(const std::string& testbed_dir) {
  return ProcessesWith("UMOCKDEV_DIR=" + testbed_dir + '\0');
}

std::vector<pid_t> ProcessesBelow(const std::string& dir) {
  return ProcessesWith("UMOCKDEV_DIR=" + dir + "/");
}

bool SignalProcessesOf(const std::string& testbed_dir, int signal) {
  const std::vector<pid_t> found = ProcessesOf(testbed_dir);
  for (const pid_t pid : found) kill(pid, signal);
  return !found.empty();
}

void KillProcessesOf(const std::string& testbed_dir) {
  const SteadyTime end = std::chrono::steady_clock::now() + 5s;
  while (std::chrono::steady_clock::now() < end) {
    const std::vector<pid_t> found = ProcessesOf(testbed_dir);
    if (found.empty()) return;
    for (const pid_t pid : found) kill(pid, SIGKILL);
    AwaitEnd(found, end);
  }
}

void EndProcessesOf(const std::string& testbed_dir) {
  const std::vector<pid_t> found = ProcessesOf(testbed_dir);
  if (found.empty()) return;
  for (const pid_t pid : found) kill(pid, SIGTERM);
  AwaitEnd(found, std::chrono::steady_clock::now() + 500ms);
  KillProcessesOf(testbed_dir);
}

}  // namespace gwq::terminal
