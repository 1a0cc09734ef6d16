// SPDX-License-Identifier: MIT
// What is the serial link's own: its statuses and log, and what signals do to it.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/time.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <csignal>
#include <filesystem>
#include <thread>
#include <vector>

#include <gwq/links/serial.h>
#include "support/fake_tty.h"
#include "support/guarded_buffer.h"
#include "support/log_capture.h"
#include "support/predicates.h"
#include "support/test_clock.h"

namespace gwq::test {
namespace {

using testing::ElementsAre;

constexpr std::time_t kStart = 1'700'000'000;

class SerialTransfer : public testing::Test {
 protected:
  SerialTransfer() {
    SetTime(kStart);
    EXPECT_EQ(ICC_OpenLinuxCom(tty_.Path().c_str(), 9600), 0);
  }
  ~SerialTransfer() override { ICC_CloseLinuxCom(); }

  FakeTty tty_;
};

TEST_F(SerialTransfer, WriteSendsAllBytes) {
  Bytes data = BytesOf(std::string_view("\x00\x1B\xFF\r\n\x11\x13", 7));
  EXPECT_EQ(ICC_WriteLinuxCom(data.data(), 7), 7);
  EXPECT_EQ(tty_.Received(), data);
}

TEST_F(SerialTransfer, WriteGivesThePartialCountOnAnError) {
  tty_.NextWritesMove({4, -1});
  EXPECT_EQ(ICC_WriteLinuxCom(BytesOf("0123456789").data(), 10), 4);
  tty_.NextWritesMove({-1});
  EXPECT_EQ(SendDataToTransPort(BytesOf("01").data(), 2), 0);
}

TEST_F(SerialTransfer, WriteRefusesNullAndLengthsBelow1) {
  unsigned char byte = 0;
  EXPECT_EQ(ICC_WriteLinuxCom(nullptr, 1), -2);
  EXPECT_EQ(ICC_WriteLinuxCom(&byte, 0), -2);
  EXPECT_EQ(ICC_WriteLinuxCom(&byte, -1), -2);
  EXPECT_EQ(ICC_WriteLinuxCom(&byte, 1), 1);
  EXPECT_EQ(SendDataToTransPort(nullptr, 1), -2);
  EXPECT_EQ(SendDataToTransPort(&byte, 0), -2);
  EXPECT_EQ(SendDataToTransPort(&byte, -1), -2);
}

TEST(SerialClosed, EveryCallSaysSo) {
  unsigned char byte = 0x55;
  EXPECT_EQ(ICC_WriteLinuxCom(&byte, 1), -5);
  EXPECT_EQ(ICC_WriteLinuxCom(nullptr, 1), -2);
  EXPECT_EQ(SendDataToTransPort(&byte, 1), -2);
  EXPECT_EQ(ICC_ReadLinuxCom(&byte, 1, 0, nullptr), -2);
  EXPECT_EQ(ICC_CancelLinuxComRead(), -7);
  EXPECT_EQ(byte, 0x55);
}

TEST_F(SerialTransfer, ReadRefusesANullBuffer) {
  EXPECT_EQ(ICC_ReadLinuxCom(nullptr, 10, 0, nullptr), -2);
}

TEST_F(SerialTransfer, ReadLogsItsTimeoutAndTheOthersAreSilent) {
  const LogCapture log;
  unsigned char byte = 0;
  ICC_ReadLinuxCom(&byte, 1, 0, nullptr);
  ICC_ReadLinuxCom(nullptr, 1, 7, nullptr);
  ICC_WriteLinuxCom(&byte, 1);
  ICC_CancelLinuxComRead();
  tty_.Send("x");
  ICC_ReadLinuxCom(&byte, 1, 12, nullptr);
  EXPECT_THAT(log.Messages(), ElementsAre(" ICC_ReadLinuxCom nTimeOut=0", " ICC_ReadLinuxCom nTimeOut=12"));
}

// ------------------------------------------------------------------ signals and peers that take nothing

void Nothing(int /*signal*/) {}

// A handler without SA_RESTART, called every few milliseconds while this lives.
class Signals {
 public:
  Signals() {
    struct sigaction action {};
    action.sa_handler = &Nothing;
    sigaction(SIGALRM, &action, &before_);
    Every(2000);
  }
  ~Signals() {
    Every(0);
    sigaction(SIGALRM, &before_, nullptr);
  }
  Signals(const Signals&) = delete;
  Signals& operator=(const Signals&) = delete;

 private:
  static void Every(int microseconds) {
    itimerval timer{};
    timer.it_interval.tv_usec = microseconds;
    timer.it_value.tv_usec = microseconds;
    setitimer(ITIMER_REAL, &timer, nullptr);
  }

  struct sigaction before_ {};
};

// A line of its own, without the test's hands on it: a pipe, whose peer reads when it is told to.
class PipeLine : public testing::Test {
 protected:
  PipeLine() {
    SetTime(kStart);
    EXPECT_EQ(pipe2(ends_.data(), O_CLOEXEC), 0);
    SetComFd(ends_[1]);
  }
  ~PipeLine() override {
    SetComFd(-1);
    close(ends_[1]);
    if (ends_[0] >= 0) close(ends_[0]);
  }

  void CloseReader() {
    close(ends_[0]);
    ends_[0] = -1;
  }
  // Reads it all in another thread, slowly at first.
  std::thread ReadSlowly(std::size_t bytes) {
    return std::thread([this, bytes] {
      std::vector<char> room(65536);
      for (std::size_t got = 0; got < bytes;) {
        ReallySleepMs(got == 0 ? 50 : 1);
        const ssize_t count = read(ends_[0], room.data(), room.size());
        if (count > 0) got += static_cast<std::size_t>(count);
      }
    });
  }

  std::array<int, 2> ends_{};
};

TEST_F(PipeLine, WriteGoesOnWhenSignalsCome) {
  Bytes data(300'000, 'x');
  std::thread reader = ReadSlowly(data.size());
  const Signals signals;
  EXPECT_EQ(ICC_WriteLinuxCom(data.data(), static_cast<int>(data.size())), 300'000);
  reader.join();
}

TEST_F(PipeLine, WriteToAPeerThatTakesNothingEndsAfterFiveSecondsWithWhatItTook) {
  Bytes data(300'000, 'x');
  std::thread clock([] {
    for (int second = 0; second < 7; ++second) {
      ReallySleepMs(120);
      AdvanceMs(1000);
    }
  });
  const int sent = ICC_WriteLinuxCom(data.data(), static_cast<int>(data.size()));
  clock.join();
  EXPECT_GT(sent, 0);
  EXPECT_LT(sent, 300'000);
}

TEST_F(PipeLine, ClosedPipeIsAShortWriteAndNoSignal) {
  CloseReader();
  Bytes data(10, 'x');
  EXPECT_EQ(ICC_WriteLinuxCom(data.data(), 10), 0);
  sigset_t pending{};
  sigpending(&pending);
  EXPECT_EQ(sigismember(&pending, SIGPIPE), 0);
}

TEST_F(PipeLine, StaysBlockingForItsHost) {
  Bytes data(10, 'x');
  EXPECT_EQ(ICC_WriteLinuxCom(data.data(), 10), 10);
  EXPECT_EQ(fcntl(ends_[1], F_GETFL) & O_NONBLOCK, 0);
}

TEST_F(SerialTransfer, ReadGoesOnWhenSignalsCome) {
  const Signals signals;
  std::thread device([this] {
    ReallySleepMs(30);
    tty_.Send("answer");
  });
  GuardedBuffer buffer(16);
  EXPECT_EQ(ICC_ReadLinuxCom(buffer.data(), 6, 1'000'000, &Never), 6);
  device.join();
}

TEST_F(SerialTransfer, DescriptorIsClosedWhenAProgramIsExecuted) {
  int closing = 0;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code none;
    if (std::filesystem::read_symlink(entry, none) != tty_.Path()) continue;
    const int fd = std::stoi(entry.path().filename());
    closing += (fcntl(fd, F_GETFD) & FD_CLOEXEC) != 0 ? 1 : 0;
  }
  EXPECT_GE(closing, 1);
}

}  // namespace
}  // namespace gwq::test
