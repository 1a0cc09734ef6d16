// SPDX-License-Identifier: MIT
// Signals, and starting and ending other processes.
#pragma once

#include <glib.h>
#include <sys/signalfd.h>
#include <sys/types.h>

#include <csignal>
#include <initializer_list>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "base/types.h"
#include "base/unique_fd.h"

namespace gwq::terminal {

// Makes signals a descriptor to wait for. They stay blocked afterwards. GLib's own source of signals
// does not tell who sent one.
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
  // As GLib takes them.
  [[nodiscard]] gchar** Entries() const { return entries_.get(); }

 private:
  struct Free {
    void operator()(gchar** entries) const { g_strfreev(entries); }
  };
  std::unique_ptr<gchar*, Free> entries_;
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

// A program that could not be started.
class StartFailure : public std::runtime_error {
 public:
  StartFailure(const std::string& reason, bool not_found) : runtime_error(reason), not_found_(not_found) {}
  [[nodiscard]] bool WasNotFound() const { return not_found_; }

 private:
  bool not_found_;
};

// The process id. Throws StartFailure; std::system_error when its output cannot be opened.
pid_t Spawn(const SpawnRequest& request);

// Waits for a child to exit. Its status in the manner of a shell: 128 and the signal's number for a
// process that died by one. Nothing when it still runs.
std::optional<int> WaitFor(pid_t pid, Time limit);

// The variable that all processes of a run have in their environment; its value is the run's directory.
inline constexpr const char* kRunDirVariable = "GWQ_TERMINAL_DIR";

// The processes of a run, whoever started them and whatever group or session they moved to. Told by
// the environment they were started with.
std::vector<pid_t> ProcessesOf(const std::string& dir);

// Sends `signal` to each of them; false when there was none.
bool SignalProcessesOf(const std::string& dir, int signal);

// Kills them, and what they start meanwhile.
void KillProcessesOf(const std::string& dir);

// Asks them to end, and after a moment makes them.
void EndProcessesOf(const std::string& dir);

}  // namespace gwq::terminal
