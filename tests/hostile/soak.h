// SPDX-License-Identifier: MIT
// Random calls, one after the other, and what must hold after each and at the end.
#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <string>

#include "hostile/caller.h"

namespace gwq::test {

// What the line did while a call ran.
struct Traffic {
  std::int64_t stalled_ms = 0;  // in transfers out that hung
  std::int64_t reports = 0;     // passed to the host
};

struct SoakPlan {
  std::int64_t calls = 0;
  std::int64_t seconds = 0;  // of real time, after which it ends early; 0: never
  std::uint64_t seed = 0;
  Scene scene;
  // Since the last time it was asked.
  std::function<Traffic()> take_traffic;
  std::function<void(Caller& caller)> before_call;
};

// Loads the library from its build directory; throws when it cannot.
void* LoadLibrary();
void* Find(void* library, const char* name);

// What they lead to, pipes without their numbers. Sockets are left out: the library opens none, and
// those of the testbed's preload library outlive an unplugging.
std::multiset<std::string> OpenDescriptors();
std::int64_t ResidentKilobytes();

// Prints what it does, and each violation. Returns the number of violations.
int Soak(void* library, const SoakPlan& plan);

}  // namespace gwq::test
