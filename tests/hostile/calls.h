// Every exported function that talks to the terminal, and how to call it.
#pragma once

#include <span>

#include "hostile/caller.h"

namespace gwq::test {

struct Call {
  const char* name;
  Limit (*make)(Caller& c);  // runs it once
};

std::span<const Call> DeviceCalls();

}  // namespace gwq::test
