// Writing, reading and cancelling on the serial device.
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

int Never(unsigned char*, int) {
  return 1;
}

int AnyByte(unsigned char*, int count) {
  return count > 0 ? 0 : 1;
}

int AtOnce(unsigned char*, int) {
  return 0;
}

// How often, and with what count, the predicate was asked.
std::vector<int> g_asked;

int Recorder(unsigned char*, int count) {
  g_asked.push_back(count);
  return count >= 3 ? 0 : 7;
}

TEST_F(SerialTransfer, WriteSendsAllBytes) {
  Bytes data = BytesOf(std::string_view("\x00\x1B\xFF\r\n\x11\x13", 7));
  EXPECT_EQ(ICC_WriteLinuxCom(data.data(), 7), 7);
  EXPECT_EQ(tty_.Received(), data);
}

TEST_F(SerialTransfer, WriteGoesOnAfterPartialWrites) {
  tty_.NextWritesMove({3, 0, 1});
  EXPECT_EQ(ICC_WriteLinuxCom(BytesOf("0123456789").data(), 10), 10);
  EXPECT_EQ(tty_.Received(), BytesOf("0123456789"));
  const auto calls = tty_.Calls();
  EXPECT_THAT(std::vector<std::string>(calls.end() - 4, calls.end()),
              ElementsAre("write 10", "write 7", "write 7", "write 6"));
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

TEST_F(SerialTransfer, ReadEndsAtTheMaximumAndLeavesTheRestInTheDevice) {
  GuardedBuffer buffer(10);
  tty_.Send("0123456789AB");
  EXPECT_EQ(ICC_ReadLinuxCom(buffer.data(), 10, 5, nullptr), 10);
  EXPECT_EQ(buffer.Content(), BytesOf("0123456789"));
  EXPECT_EQ(tty_.Waiting(), 2);
  EXPECT_EQ(ICC_ReadLinuxCom(buffer.data(), 2, 5, nullptr), 2);
  EXPECT_EQ(buffer.First(2), BytesOf("AB"));
}

TEST_F(SerialTransfer, ReadWritesNoTerminator) {
  GuardedBuffer buffer(6, 0x55);
  tty_.Send("abc");
  EXPECT_EQ(ICC_ReadLinuxCom(buffer.data(), 6, 5, &Recorder), 3);
  EXPECT_EQ(buffer.Content(), BytesOf("abcUUU"));
}

TEST_F(SerialTransfer, ReadPassesEveryByteValue) {
  std::string all;
  for (int i = 0; i < 256; ++i) all += static_cast<char>(i);
  GuardedBuffer buffer(256);
  tty_.Send(all);
  EXPECT_EQ(ICC_ReadLinuxCom(buffer.data(), 256, 5, nullptr), 256);
  EXPECT_EQ(buffer.Content(), BytesOf(all));
}

TEST_F(SerialTransfer, MaximumOf0OrLessEndsWithItAfterOneRead) {
  GuardedBuffer buffer(1, 0x55);
  tty_.Send("x");
  EXPECT_EQ(ICC_ReadLinuxCom(buffer.data(), 0, 5, nullptr), 0);
  EXPECT_EQ(ICC_ReadLinuxCom(buffer.data(), -3, 5, nullptr), -3);
  EXPECT_TRUE(buffer.AllAre(0x55));
}

TEST_F(SerialTransfer, PredicateIsAskedAfterEveryReadAlsoAnEmptyOne) {
  g_asked.clear();
  tty_.OnRead([this](int index) {
    if (index == 1) tty_.Send("a");
    if (index == 3) tty_.Send("bc");
  });
  GuardedBuffer buffer(10);
  EXPECT_EQ(ICC_ReadLinuxCom(buffer.data(), 10, 5, &Recorder), 3);
  EXPECT_THAT(g_asked, ElementsAre(0, 1, 1, 3));
}

TEST_F(SerialTransfer, PredicateMayEndAReadThatBroughtNothing) {
  unsigned char byte = 0x55;
  EXPECT_EQ(ICC_ReadLinuxCom(&byte, 1, 5, &AtOnce), 0);
  EXPECT_EQ(byte, 0x55);
}

TEST_F(SerialTransfer, MaximumIsLookedAtBeforeThePredicate) {
  g_asked.clear();
  tty_.Send("abc");
  unsigned char buffer[3] = {};
  EXPECT_EQ(ICC_ReadLinuxCom(buffer, 3, 5, &Recorder), 3);
  EXPECT_TRUE(g_asked.empty());
}

TEST_F(SerialTransfer, TimeoutOf0EndsWhenTheSecondChanges) {
  int reads = 0;
  tty_.OnRead([&reads](int index) { reads = index + 1; });
  unsigned char byte = 0;
  EXPECT_EQ(ICC_ReadLinuxCom(&byte, 1, 0, nullptr), -4);
  EXPECT_EQ(reads, 10) << "of 0.1 s each";
  EXPECT_EQ(Now(), kStart + 1);
}

TEST_F(SerialTransfer, TimeoutEndsOnlyAfterMoreSecondsThanGiven) {
  unsigned char byte = 0;
  EXPECT_EQ(ICC_ReadLinuxCom(&byte, 1, 3, &Never), -4);
  EXPECT_EQ(Now(), kStart + 4);
}

TEST_F(SerialTransfer, NegativeTimeoutEndsAfterOneRead) {
  int reads = 0;
  tty_.OnRead([&reads](int index) { reads = index + 1; });
  unsigned char byte = 0;
  EXPECT_EQ(ICC_ReadLinuxCom(&byte, 1, -1, nullptr), -4);
  EXPECT_EQ(reads, 1);
}

TEST_F(SerialTransfer, AnswerInTheLastMomentCounts) {
  tty_.OnRead([this](int) {
    AdvanceMs(60'000);
    tty_.Send("x");
  });
  unsigned char byte = 0;
  EXPECT_EQ(ICC_ReadLinuxCom(&byte, 5, 1, &AnyByte), 1);
}

TEST_F(SerialTransfer, BytesReceivedBeforeATimeoutStandInTheBuffer) {
  tty_.Send("ab");
  GuardedBuffer buffer(5);
  EXPECT_EQ(ICC_ReadLinuxCom(buffer.data(), 5, 0, &Never), -4);
  EXPECT_EQ(buffer.First(2), BytesOf("ab"));
}

TEST_F(SerialTransfer, ReadErrorGivesMinus6) {
  tty_.FailReads();
  unsigned char byte = 0x55;
  EXPECT_EQ(ICC_ReadLinuxCom(&byte, 1, 5, &Never), -6);
  EXPECT_EQ(byte, 0x55);
}

TEST_F(SerialTransfer, ReadErrorBehindSomeBytesGivesMinus6) {
  tty_.Send("ab");
  tty_.OnRead([this](int index) {
    if (index == 1) tty_.FailReads();
  });
  unsigned char buffer[4] = {};
  EXPECT_EQ(ICC_ReadLinuxCom(buffer, 4, 5, &Never), -6);
}

TEST_F(SerialTransfer, CancelEndsTheReadAtItsNextPass) {
  int reads = 0;
  tty_.OnRead([&reads](int index) {
    reads = index + 1;
    if (index == 2) {
      EXPECT_EQ(ICC_CancelLinuxComRead(), 0);
    }
  });
  unsigned char byte = 0;
  EXPECT_EQ(ICC_ReadLinuxCom(&byte, 1, 60, &Never), -23);
  EXPECT_EQ(reads, 3);
}

TEST_F(SerialTransfer, DataThatComesWithTheCancelStillCounts) {
  tty_.OnRead([this](int) {
    ICC_CancelLinuxComRead();
    tty_.Send("x");
  });
  unsigned char byte = 0;
  EXPECT_EQ(ICC_ReadLinuxCom(&byte, 1, 60, nullptr), 1);
}

TEST_F(SerialTransfer, CancelBeforeTheReadStartsIsDropped) {
  EXPECT_EQ(ICC_CancelLinuxComRead(), 0);
  tty_.Send("x");
  unsigned char byte = 0;
  EXPECT_EQ(ICC_ReadLinuxCom(&byte, 1, 5, nullptr), 1);
}

TEST_F(SerialTransfer, CancelOfOneReadDoesNotReachTheNext) {
  tty_.OnRead([](int index) {
    if (index == 0) ICC_CancelLinuxComRead();
  });
  unsigned char byte = 0;
  EXPECT_EQ(ICC_ReadLinuxCom(&byte, 1, 5, nullptr), -23);
  tty_.Send("x");
  EXPECT_EQ(ICC_ReadLinuxCom(&byte, 1, 5, nullptr), 1);
}

TEST_F(SerialTransfer, CancelFromAnotherThreadEndsTheRead) {
  std::atomic<int> reads = 0;
  tty_.OnRead([&reads](int index) { reads = index + 1; });
  std::thread canceller([&reads] {
    while (reads == 0) std::this_thread::yield();
    EXPECT_EQ(ICC_CancelLinuxComRead(), 0);
  });
  unsigned char byte = 0;
  EXPECT_EQ(ICC_ReadLinuxCom(&byte, 1, 2'000'000'000, &Never), -23);
  canceller.join();
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
