// SPDX-License-Identifier: MIT
// gwq-terminal pty: a terminal for anyone who opens the path.
#include <gtest/gtest.h>

#include <csignal>

#include "child.h"
#include "serial_line.h"

namespace gwq::test {
namespace {

class PtyEndedBy : public testing::TestWithParam<int> {};

TEST_P(PtyEndedBy, ServesThePathItPrintsUntilThen) {
  Child child({GWQ_TERMINAL, "pty"});
  const std::string path = child.ReadLine();
  ASSERT_EQ(path.substr(0, 5), "/dev/");
  for (int round = 0; round < 2; ++round) {
    const SerialLine line(path);
    ASSERT_TRUE(line.Configure());
    ASSERT_TRUE(line.Send("\033[0GETVERSION"));
    EXPECT_EQ(line.ReadAnswer().substr(0, 1), "\002") << "round " << round;
  }
  child.Signal(GetParam());
  EXPECT_EQ(child.Wait(), 0);
  EXPECT_EQ(child.ReadRest(), "");
}

INSTANTIATE_TEST_SUITE_P(Signals, PtyEndedBy, testing::Values(SIGINT, SIGTERM));

TEST(Pty, TracesToStandardError) {
  Child child({GWQ_TERMINAL, "pty", "--trace"});
  const SerialLine line(child.ReadLine());
  ASSERT_TRUE(line.Configure());
  ASSERT_TRUE(line.Send("\033[0GETVERSION"));
  EXPECT_NE(line.ReadAnswer(), "");
  child.Signal(SIGTERM);
  EXPECT_EQ(child.Wait(), 0);
  EXPECT_NE(child.Errors().find("GETVERSION"), std::string::npos);
}

}  // namespace
}  // namespace gwq::test
