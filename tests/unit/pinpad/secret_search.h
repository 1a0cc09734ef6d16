// SPDX-License-Identifier: MIT
// Looks for secrets that a call of the library left behind: on its stack, in the heap blocks that
// it released, and in the program's writable segments. A program that uses it is linked with
//     -Wl,--wrap=free,--wrap=_ZdlPv,--wrap=_ZdlPvm
// so that releases pass through here.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "support/bytes.h"

namespace gwq::test {

struct SecretFindings {
  std::vector<std::string> on_stack;
  std::vector<std::string> in_segments;
  int in_released_blocks;
};

// Runs the call on a stack of its own and tells which of the secrets it left. Secrets must stand on
// the heap alone while it runs.
SecretFindings SearchFor(const std::vector<Bytes>& secrets, const std::function<void()>& call);

inline void ExpectClean(const SecretFindings& findings) {
  EXPECT_EQ(findings.on_stack, std::vector<std::string>{});
  EXPECT_EQ(findings.in_segments, std::vector<std::string>{});
  EXPECT_EQ(findings.in_released_blocks, 0);
}

}  // namespace gwq::test
