// SPDX-License-Identifier: MIT
// The command line of gwq-terminal.
#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "app/check.h"
#include "app/options.h"

namespace gwq::terminal::app {

struct PtyRequest {
  TerminalOptions terminal;
};

// How the supervisor starts its server; not for people.
struct ServerRequest {
  int control_fd = -1;
};

// Runs a command in scenarios, or lists those that come with the program.
struct CheckCommand {
  CheckRequest check;
  bool list = false;
};

// Nothing is left to do but to exit with this.
struct ExitRequest {
  int status = 0;
};

using Request = std::variant<ExecOptions, ServeOptions, PtyRequest, ServerRequest, CheckCommand, ExitRequest>;

// Prints help, version and complaints itself.
[[nodiscard]] Request ParseArguments(int argc, const char* const* argv);

}  // namespace gwq::terminal::app
