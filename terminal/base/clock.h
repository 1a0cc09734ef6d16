// SPDX-License-Identifier: MIT
// The terminals' time: milliseconds since this process's terminals were switched on.
#pragma once

#include <chrono>

#include "base/types.h"

namespace gwq::terminal {

class Clock {
 public:
  [[nodiscard]] Time Now() const {
    return std::chrono::duration_cast<Time>(std::chrono::steady_clock::now() - start_);
  }

 private:
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

}  // namespace gwq::terminal
