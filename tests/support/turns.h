// SPDX-License-Identifier: MIT
// What tests with two threads at the engine look at.
#pragma once

#include <atomic>
#include <string>
#include <vector>

#include "support/test_clock.h"

namespace gwq::test {

// Every device that was listed is closed before the next listing; from the calls of a ScriptedUsb.
inline bool TakesTurns(const std::vector<std::string>& calls) {
  bool open = false;
  for (const std::string& call : calls) {
    if (call == "list") {
      if (open) return false;
      open = true;
    }
    if (call == "free_list") open = false;
  }
  return !open;
}

// True once `holds` answers so; gives up after some seconds, so that a deadlock becomes a failure.
template <typename Condition>
bool Eventually(const Condition& holds) {
  for (int i = 0; i < 5000 && !holds(); ++i) ReallySleepMs(1);
  return holds();
}

inline bool Eventually(const std::atomic<bool>& flag) {
  return Eventually([&flag] { return flag.load(); });
}

}  // namespace gwq::test
