// SPDX-License-Identifier: MIT
// The process that is the terminal, while another one runs the command.
#pragma once

namespace gwq::terminal {

// Takes its options from `control_fd`, makes a testbed below $TMPDIR, reports it
// there and serves until the supervisor says that it is done. If the supervisor dies instead, ends the
// command with all its children and removes $TMPDIR in its place.
// Must run with the testbed's preload library. Returns the exit status.
int RunServer(int control_fd);

// Throws when this program was built without umockdev and has no such process.
void CheckHasServer();

}  // namespace gwq::terminal
