#include "transports/processes.h"

#include <dirent.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <fstream>
#include <iterator>
#include <memory>
#include <string_view>
#include <thread>

#include "transports/errors.h"

namespace gwq::terminal {
namespace {

using namespace std::chrono_literals;

void CheckSpawnCall(int error, const std::string& what) {
  if (error != 0) throw std::system_error(error, std::generic_category(), what);
}

std::vector<char*> Pointers(const std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  // The exec family takes pointers to non-const but leaves the texts alone.
  for (const std::string& text : texts) pointers.push_back(const_cast<char*>(text.c_str()));
  pointers.push_back(nullptr);
  return pointers;
}

class SpawnSettings {
 public:
  explicit SpawnSettings(const SpawnRequest& request) {
    CheckSpawnCall(posix_spawnattr_init(&attributes_), "posix_spawnattr_init");
    CheckSpawnCall(posix_spawn_file_actions_init(&actions_), "posix_spawn_file_actions_init");
    int flags = POSIX_SPAWN_SETSIGMASK;
    posix_spawnattr_setsigmask(&attributes_, &request.signal_mask);
    if (request.passed_fd) {
      flags |= POSIX_SPAWN_SETPGROUP;
      // Onto itself, which only takes the close-on-exec mark off.
      posix_spawn_file_actions_adddup2(&actions_, *request.passed_fd, *request.passed_fd);
      posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    }
    RedirectTo(STDOUT_FILENO, request.output_file);
    RedirectTo(STDERR_FILENO, request.errors_file);
    posix_spawnattr_setflags(&attributes_, static_cast<short>(flags));
  }
  SpawnSettings(const SpawnSettings&) = delete;
  SpawnSettings& operator=(const SpawnSettings&) = delete;
  ~SpawnSettings() {
    posix_spawnattr_destroy(&attributes_);
    posix_spawn_file_actions_destroy(&actions_);
  }

  [[nodiscard]] const posix_spawnattr_t* Attributes() const { return &attributes_; }
  [[nodiscard]] const posix_spawn_file_actions_t* Actions() const { return &actions_; }

 private:
  void RedirectTo(int fd, const std::string& file) {
    if (!file.empty())
      posix_spawn_file_actions_addopen(&actions_, fd, file.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
  }

  posix_spawnattr_t attributes_{};
  posix_spawn_file_actions_t actions_{};
};

bool StartedWith(const std::string& pid, const std::string& assignment) {
  std::ifstream file("/proc/" + pid + "/environ", std::ios::binary);
  const std::string environment{std::istreambuf_iterator<char>(file), {}};
  // Entries end with a zero byte; the first has none before it.
  const std::string entry = assignment + '\0';
  return environment.starts_with(entry) || environment.find('\0' + entry) != std::string::npos;
}

std::optional<pid_t> ProcessId(std::string_view name) {
  pid_t pid = 0;
  const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), pid);
  if (error != std::errc{} || end != name.data() + name.size()) return std::nullopt;
  return pid;
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

pid_t Spawn(const SpawnRequest& request) {
  const SpawnSettings settings(request);
  std::vector<char*> arguments = Pointers(request.arguments);
  std::vector<char*> environment = Pointers(request.environment.Entries());
  pid_t pid = -1;
  CheckSpawnCall(posix_spawnp(&pid, arguments[0], settings.Actions(), settings.Attributes(), arguments.data(),
                              environment.data()),
                 request.arguments[0]);
  return pid;
}

std::optional<int> TryWait(pid_t pid) {
  int status = 0;
  if (waitpid(pid, &status, WNOHANG) != pid) return std::nullopt;
  return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

std::optional<int> WaitFor(pid_t pid, int limit_ms) {
  for (int waited_ms = 0;; waited_ms += 2) {
    if (const std::optional<int> status = TryWait(pid)) return status;
    if (waited_ms >= limit_ms) return std::nullopt;
    std::this_thread::sleep_for(2ms);
  }
}

std::vector<pid_t> ProcessesOf(const std::string& testbed_dir) {
  const std::string assignment = "UMOCKDEV_DIR=" + testbed_dir;
  std::vector<pid_t> found;
  const std::unique_ptr<DIR, int (*)(DIR*)> proc(opendir("/proc"), closedir);
  if (!proc) return found;
  while (const dirent* entry = readdir(proc.get())) {
    const std::optional<pid_t> pid = ProcessId(entry->d_name);
    if (pid && StartedWith(entry->d_name, assignment)) found.push_back(*pid);
  }
  return found;
}

bool SignalProcessesOf(const std::string& testbed_dir, int signal) {
  const std::vector<pid_t> found = ProcessesOf(testbed_dir);
  for (const pid_t pid : found) kill(pid, signal);
  return !found.empty();
}

void EndProcessesOf(const std::string& testbed_dir) {
  constexpr int kPolitePasses = 50;
  constexpr int kAllPasses = 500;
  if (!SignalProcessesOf(testbed_dir, SIGTERM)) return;
  for (int pass = 0; pass < kAllPasses; ++pass) {
    std::this_thread::sleep_for(10ms);
    // Signal 0 only looks; new children may appear between two looks.
    if (!SignalProcessesOf(testbed_dir, pass < kPolitePasses ? 0 : SIGKILL)) return;
  }
}

}  // namespace gwq::terminal
