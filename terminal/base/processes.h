// SPDX-License-Identifier: MIT
// Signals, and starting and ending other processes.
#pragma once

#include <sys/signalfd.h>
#include <sys/types.h>

#include <chrono>
#include <csignal>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

#include "base/unique_fd.h"

namespace gwq::terminal {

// Turns signals into something to poll. They stay blocked afterwards.
class SignalWatch {
 public:
  explicit SignalWatch(std::initializer_list<int> signals);

  [[nodiscard]] int Fd() const { return fd_.Get(); }
  // A signal that has arrived; nothing when there is none.
  [[nodiscard]] std::optional<signalfd_siginfo> Next() const;
  // The signals that were blocked before.
  [[nodiscard]] const sigset_t& OriginalMask() const { return original_; }

 private:
  UniqueFd fd_;
  sigset_t original_{};
};

// Environment variables for a new process.
class Environment {
 public:
  Environment();  // a copy of our own
  void Set(const std::string& name, const std::string& value);
  void Unset(const std::string& name);
  [[nodiscard]] std::string Get(const std::string& name) const;
  [[nodiscard]] const std::vector<std::string>& Entries() const { return entries_; }

 private:
  std::vector<std::string> entries_;
};

struct SpawnRequest {
  std::vector<std::string> arguments;  // the first is looked up on the PATH
  Environment environment;
  sigset_t signal_mask{};
  // The server's way of starting: apart from our process group, so that keys at
  // the keyboard do not reach it, nothing on its standard input, and this
  // descriptor passed on under the same number.
  std::optional<int> passed_fd;
  bool dies_with_us = false;  // killed when the thread that spawns it ends, however it ends
  // Files for standard output and standard error; empty: our own.
  std::string output_file;
  std::string errors_file;
};

// The process id; throws std::system_error with what kept it from starting.
pid_t Spawn(const SpawnRequest& request);

// An exit status in the manner of a shell: 128 and the signal's number for a
// process that died by one. Nothing while it runs.
std::optional<int> TryWait(pid_t pid);

// Waits for a child to exit. SIGCHLD must be blocked.
std::optional<int> WaitFor(pid_t pid, std::chrono::milliseconds limit);

// Processes that run with this testbed, whoever started them and whatever group
// or session they moved to. Told by the environment they were started with.
std::vector<pid_t> ProcessesOf(const std::string& testbed_dir);

// The same for any testbed inside of `dir`.
std::vector<pid_t> ProcessesBelow(const std::string& dir);

// Sends `signal` to each of them; false when there was none.
bool SignalProcessesOf(const std::string& testbed_dir, int signal);

// Kills them, and what they start meanwhile.
void KillProcessesOf(const std::string& testbed_dir);

// Asks them to end, and after a moment makes them.
void EndProcessesOf(const std::string& testbed_dir);

}  // namespace gwq::terminal
