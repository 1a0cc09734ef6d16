// SPDX-License-Identifier: MIT
// What a host sees at serial port 78. Runs as the command of gwq-terminal.
#include "serial_line.h"

#include <gtest/gtest.h>

namespace gwq::test {
namespace {

using namespace std::chrono_literals;

constexpr const char* kPath = "/dev/ttyS77";

TEST(SerialHost, OpensThePortAndSetsItRaw) {
  const SerialLine line(kPath);
  ASSERT_GE(line.Fd(), 0);
  ASSERT_TRUE(line.Configure());
  struct termio settings {};
  ASSERT_EQ(ioctl(line.Fd(), TCGETA, &settings), 0);
  EXPECT_EQ(settings.c_cc[VMIN], 0);
  EXPECT_EQ(settings.c_cc[VTIME], 1);
  EXPECT_EQ(settings.c_lflag & (ICANON | ECHO | ISIG), 0);
  EXPECT_EQ(settings.c_cflag & CBAUD, B9600);
}

TEST(SerialHost, AnswersGETVERSIONWithoutPadding) {
  const SerialLine line(kPath);
  ASSERT_TRUE(line.Configure());
  ASSERT_TRUE(line.Send("\033[0GETVERSION"));
  const auto start = std::chrono::steady_clock::now();
  const std::string answer = line.ReadAnswer();
  EXPECT_LT(std::chrono::steady_clock::now() - start, 1s);
  EXPECT_EQ(answer.front(), '\002');
  EXPECT_EQ(answer.back(), '\003');
  EXPECT_NE(answer.find('|'), std::string::npos);
}

TEST(SerialHost, AnswersAgainAfterCloseAndReopen) {
  for (int round = 0; round < 3; ++round) {
    const SerialLine line(kPath);
    ASSERT_TRUE(line.Configure());
    ASSERT_TRUE(line.Send("\033[0GETVERSION"));
    EXPECT_EQ(line.ReadAnswer().substr(0, 1), "\002") << "round " << round;
  }
}

TEST(SerialHost, ReturnsFromAnIdleReadAfterATenthOfASecondWithNothing) {
  const SerialLine line(kPath);
  ASSERT_TRUE(line.Configure());
  char byte = 0;
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(read(line.Fd(), &byte, 1), 0);
  EXPECT_GE(std::chrono::steady_clock::now() - start, 50ms);
}

TEST(SerialHost, LosesUnreadBytesWhenTheSettingsAreFlushed) {
  const SerialLine line(kPath);
  ASSERT_TRUE(line.Configure());
  ASSERT_TRUE(line.Send("\033[0GETVERSION"));
  int waiting = 0;
  const auto start = std::chrono::steady_clock::now();
  while (waiting == 0 && std::chrono::steady_clock::now() - start < 3s) ioctl(line.Fd(), FIONREAD, &waiting);
  ASSERT_GT(waiting, 0);
  EXPECT_EQ(ioctl(line.Fd(), TCFLSH, TCIFLUSH), 0);
  char byte = 0;
  EXPECT_EQ(read(line.Fd(), &byte, 1), 0);
}

}  // namespace
}  // namespace gwq::test
