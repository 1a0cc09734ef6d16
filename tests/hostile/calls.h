// SPDX-License-Identifier: MIT
// Every exported function that talks to the terminal, and how to call it.
#pragma once

#include <span>

#include "hostile/caller.h"
#include "support/device_calls.h"

namespace gwq::test {

struct Call {
  const char* name;
  Waits waits;
  void (*make)(Caller& c);  // runs it once
};

std::span<const Call> DeviceCalls();

// Runs it once. Returns the longest that it may take.
Limit Make(const Call& call, Caller& caller);

}  // namespace gwq::test
