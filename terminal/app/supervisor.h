// SPDX-License-Identifier: MIT
// Runs a command that sees the terminal.
//
//   gwq-terminal exec         the supervisor: without preload, so that it survives
//    |                        what happens to the testbed, and cleans up after both
//    +- gwq-terminal server   the testbed and the terminal
//    +- COMMAND
#pragma once

#include <chrono>
#include <string>

#include "app/options.h"
#include "base/private_dir.h"
#include "base/processes.h"

namespace gwq::terminal::app {

// Returns the exit status: the command's, 128 and the signal's number if it died
// by one, 127 or 126 if it could not be started. Throws when the terminal fails.
int RunCommand(const ExecOptions& options);

struct CommandOutcome {
  int status = 0;             // as above
  std::string start_problem;  // why it could not be started; else empty
  bool timed_out = false;     // it was ended after its time limit
  bool interrupted = false;   // a signal ended it by way of us
  std::chrono::milliseconds took{0};
};

// The signals that a supervisor has to see. One watch serves any number of runs.
[[nodiscard]] SignalWatch WatchSignals();

// The same for one of several runs, with the directory for what it leaves on disk. Throws when the
// terminal fails.
[[nodiscard]] CommandOutcome RunWatched(const ExecOptions& options, const SignalWatch& signals,
                                        const PrivateDir& dir);

}  // namespace gwq::terminal::app
