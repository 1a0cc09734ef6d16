// Runs a command that sees the terminal.
//
//   gwq-terminal exec         the supervisor: without preload, so that it survives
//    |                        what happens to the testbed, and cleans up after both
//    +- gwq-terminal server   the testbed and the terminal
//    +- COMMAND
#pragma once

#include "transports/options.h"

namespace gwq::terminal {

// Returns the exit status: the command's, 128 and the signal's number if it died
// by one, 127 or 126 if it could not be started. Throws when the terminal fails.
int RunCommand(const ExecOptions& options);

}  // namespace gwq::terminal
