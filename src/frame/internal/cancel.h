// The engine's cancel flag: set by CancelRead in any thread, dropped when an exchange starts, looked at
// between the reports of a command.
#pragma once

namespace gwq {

void ForgetReadCancel();
bool ReadCancelRequested();

// As CancelRead, also where a request is still standing: one between sending and reading has not reached the link.
void RepeatReadCancel();

}  // namespace gwq
