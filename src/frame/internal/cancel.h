// SPDX-License-Identifier: MIT
// The engine's cancel flag: set by CancelRead in any thread, cleared when an exchange starts,
// checked between the reports of a command.
#pragma once

namespace gwq {

void ClearReadCancel();
bool ReadCancelRequested();

// The function of transaction.h, for code of the library.
int CancelRead();

// As CancelRead, but also while a request is set: one made between sending and reading has not
// reached the link.
void RepeatReadCancel();

}  // namespace gwq
