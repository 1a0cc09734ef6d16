// SPDX-License-Identifier: MIT
// Runs a session: a script of calls, with what the terminal says and what goes wrong.
#pragma once

#include "calls.h"
#include "machine.h"
#include "records.h"

namespace gwq::fuzz {

void RunCall(const Call& call, Arguments& arguments);

// Closes everything that a script may have left open, and sees that nothing is held then.
void EndSession();

void RunSession(const std::vector<Record>& records);

}  // namespace gwq::fuzz
