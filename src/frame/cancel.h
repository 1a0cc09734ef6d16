// The engine's cancel flag: set by CancelRead in any thread, dropped when an exchange starts, looked at
// between the reports of a command.
#pragma once

namespace gwq {

void ForgetReadCancel();
bool ReadCancelRequested();

}  // namespace gwq
