// SPDX-License-Identifier: MIT
// What must be true whatever the input is.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace gwq::fuzz {

inline void Require(bool met, const char* otherwise) {
  if (met) return;
  std::fprintf(stderr, "%s\n", otherwise);
  std::abort();
}

}  // namespace gwq::fuzz
