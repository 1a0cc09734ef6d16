// SPDX-License-Identifier: MIT
#include "base/processes.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <charconv>
#include <cstddef>
#include <fstream>
#include <iterator>
#include <memory>
#include <string_view>
#include <utility>

#include "base/clock.h"
#include "base/errors.h"
#include "base/event_loop.h"

namespace gwq::terminal {
namespace {

// GLib's errors as those of the system, in whose words users know them.
constexpr std::array kStartErrors = {
    std::pair{G_SPAWN_ERROR_ACCES, EACCES},   std::pair{G_SPAWN_ERROR_PERM, EPERM},
    std::pair{G_SPAWN_ERROR_TOO_BIG, E2BIG},  std::pair{G_SPAWN_ERROR_NOEXEC, ENOEXEC},
    std::pair{G_SPAWN_ERROR_NOENT, ENOENT},   std::pair{G_SPAWN_ERROR_NAMETOOLONG, ENAMETOOLONG},
    std::pair{G_SPAWN_ERROR_NOMEM, ENOMEM},   std::pair{G_SPAWN_ERROR_NOTDIR, ENOTDIR},
    std::pair{G_SPAWN_ERROR_LOOP, ELOOP},     std::pair{G_SPAWN_ERROR_TXTBUSY, ETXTBSY},
    std::pair{G_SPAWN_ERROR_IO, EIO},         std::pair{G_SPAWN_ERROR_NFILE, ENFILE},
    std::pair{G_SPAWN_ERROR_MFILE, EMFILE},   std::pair{G_SPAWN_ERROR_ISDIR, EISDIR},
    std::pair{G_SPAWN_ERROR_LIBBAD, ELIBBAD}, std::pair{G_SPAWN_ERROR_INVAL, EINVAL}};

StartFailure FailureOf(const std::string& program, GError* error) {
  const std::unique_ptr<GError, decltype(&g_error_free)> owned(error, g_error_free);
  std::string reason = error->message;
  for (const auto& [code, number] : kStartErrors) {
    if (g_error_matches(error, G_SPAWN_ERROR, code)) reason = std::generic_category().message(number);
  }
  return {"cannot start " + program + ": " + reason,
          g_error_matches(error, G_SPAWN_ERROR, G_SPAWN_ERROR_NOENT) != FALSE};
}

// What GLib gives back their default action in the child.
constexpr std::array kResetSignals = {SIGINT, SIGTERM, SIGHUP};

struct ChildSetup {
  const SpawnRequest& request;
  const pid_t parent = getpid();
  std::array<bool, kResetSignals.size()> ignored{};
};

// In the child, between fork and exec: what GLib has no option for.
void SetUpChild(gpointer data) {
  const auto& [request, parent, ignored] = *static_cast<const ChildSetup*>(data);
  if (request.dies_with_us) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) _exit(128 + SIGKILL);  // it had ended before
  }
  if (request.passed_fd) {
    setpgid(0, 0);
    fcntl(*request.passed_fd, F_SETFD, 0);
  }
  // As nohup and the shell's background jobs have it.
  for (std::size_t i = 0; i < kResetSignals.size(); ++i) {
    if (ignored[i]) std::signal(kResetSignals[i], SIG_IGN);
  }
  pthread_sigmask(SIG_SETMASK, &request.signal_mask, nullptr);
}

bool IsIgnored(int signal) {
  struct sigaction action {};
  return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

// For the child's output; none where it has ours.
UniqueFd OpenOutput(const std::string& file) {
  if (file.empty()) return {};
  return UniqueFd(Checked(open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600), file));
}

std::vector<char*> Pointers(const std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  // GLib takes pointers to non-const but leaves the texts alone.
  for (const std::string& text : texts) pointers.push_back(const_cast<char*>(text.c_str()));
  pointers.push_back(nullptr);
  return pointers;
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

// Waits until each has ended, children or not, but not longer than `limit`.
void AwaitEnd(const std::vector<pid_t>& pids, Time limit) {
  EventLoop loop;
  std::vector<UniqueFd> processes;
  std::vector<EventLoop::Watch> watches;
  std::size_t running = 0;
  for (const pid_t pid : pids) {
    UniqueFd process(static_cast<int>(syscall(SYS_pidfd_open, pid, 0)));
    if (!process) continue;  // it has ended
    const std::size_t at = watches.size();
    watches.push_back(loop.OnReady(process.Get(), [&, at](unsigned) {
      watches[at].Want(0);
      if (--running == 0) loop.Stop();
    }));
    processes.push_back(std::move(process));
    ++running;
  }
  if (running > 0) loop.RunFor(Clock{}, limit);
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

Environment::Environment() : entries_(g_get_environ()) {}

void Environment::Set(const std::string& name, const std::string& value) {
  entries_.reset(g_environ_setenv(entries_.release(), name.c_str(), value.c_str(), TRUE));
}

void Environment::Unset(const std::string& name) {
  entries_.reset(g_environ_unsetenv(entries_.release(), name.c_str()));
}

std::string Environment::Get(const std::string& name) const {
  const gchar* value = g_environ_getenv(entries_.get(), name.c_str());
  return value == nullptr ? "" : value;
}

pid_t Spawn(const SpawnRequest& request) {
  std::vector<char*> arguments = Pointers(request.arguments);
  const UniqueFd output = OpenOutput(request.output_file);
  const UniqueFd errors = OpenOutput(request.errors_file);
  ChildSetup setup{request};
  for (std::size_t i = 0; i < kResetSignals.size(); ++i) setup.ignored[i] = IsIgnored(kResetSignals[i]);
  constexpr auto kAlways = G_SPAWN_DO_NOT_REAP_CHILD | G_SPAWN_SEARCH_PATH | G_SPAWN_LEAVE_DESCRIPTORS_OPEN;
  const auto flags =
      static_cast<GSpawnFlags>(kAlways | (request.passed_fd ? 0 : G_SPAWN_CHILD_INHERITS_STDIN));
  GPid pid = -1;
  GError* error = nullptr;
  if (!g_spawn_async_with_fds(nullptr, arguments.data(), request.environment.Entries(), flags, SetUpChild,
                              &setup, &pid, -1, output.Get(), errors.Get(), &error))
    throw FailureOf(request.arguments[0], error);
  return pid;
}

std::optional<int> WaitFor(pid_t pid, Time limit) {
  EventLoop loop;
  std::optional<int> status;
  const EventLoop::ExitWatch watch = loop.OnExit(pid, [&](int exit_status) {
    status = exit_status;
    loop.Stop();
  });
  loop.RunFor(Clock{}, limit);
  return status;
}

std::vector<pid_t> ProcessesOf(const std::string& dir) {
  std::string entry(kRunDirVariable);
  entry.append("=").append(dir).push_back('\0');
  return ProcessesWith(entry);
}

bool SignalProcessesOf(const std::string& dir, int signal) {
  const std::vector<pid_t> found = ProcessesOf(dir);
  for (const pid_t pid : found) kill(pid, signal);
  return !found.empty();
}

void KillProcessesOf(const std::string& dir) {
  constexpr Time kLimit{5000};
  const Clock clock;
  for (std::vector<pid_t> found; clock.Now() < kLimit && !(found = ProcessesOf(dir)).empty();) {
    for (const pid_t pid : found) kill(pid, SIGKILL);
    AwaitEnd(found, kLimit - clock.Now());
  }
}

void EndProcessesOf(const std::string& dir) {
  const std::vector<pid_t> found = ProcessesOf(dir);
  if (found.empty()) return;
  for (const pid_t pid : found) kill(pid, SIGTERM);
  AwaitEnd(found, Time{500});
  KillProcessesOf(dir);
}

}  // namespace gwq::terminal
