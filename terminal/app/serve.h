// SPDX-License-Identifier: MIT
// Serves terminals to whoever comes, until interrupted.
#pragma once

#include "app/options.h"

namespace gwq::terminal::app {

// On USB/IP, at a pseudo-terminal or both, and prints where. Returns the exit status; throws
// when the terminal fails.
int RunServe(const ServeOptions& options);

// A pseudo-terminal only, of which nothing but the path is printed.
int RunPty(const TerminalOptions& options);

}  // namespace gwq::terminal::app
