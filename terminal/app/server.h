// SPDX-License-Identifier: MIT
// The process that is the terminal, while another one runs the command.
#pragma once

namespace gwq::terminal::app {

// Takes its options from `control_fd`, makes the terminal with all its files below $TMPDIR, reports
// there what the command's environment is to have, and serves until the supervisor says that it is
// done. If the supervisor dies instead, ends the command with all its children and removes $TMPDIR in
// its place. Must run with the testbed's preload library where there is a testbed. Returns the exit status.
int RunServer(int control_fd);

}  // namespace gwq::terminal::app
