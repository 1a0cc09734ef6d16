// SPDX-License-Identifier: MIT
// Predicates that end a read, as hosts give them to the links.
#pragma once

#include <vector>

namespace gwq::test {

inline int Never(unsigned char* /*data*/, int /*count*/) {
  return 1;
}

inline int AtOnce(unsigned char* /*data*/, int /*count*/) {
  return 0;
}

inline int AnyByte(unsigned char* /*data*/, int count) {
  return count > 0 ? 0 : 1;
}

// The counts with which UntilThree was asked.
inline std::vector<int> g_asked;

// No value but 0 ends a read.
inline int UntilThree(unsigned char* /*data*/, int count) {
  g_asked.push_back(count);
  return count >= 3 ? 0 : count > 0 ? 7 : -1;
}

}  // namespace gwq::test
