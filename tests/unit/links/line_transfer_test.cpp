// SPDX-License-Identifier: MIT
// Writing, reading and cancelling on the links over a terminal line.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

#include <gwq/links/aux_port.h>
#include <gwq/links/serial.h>
#include "support/fake_tty.h"
#include "support/guarded_buffer.h"
#include "support/named.h"
#include "support/predicates.h"
#include "support/test_clock.h"

namespace gwq::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct LineLink {
  const char* name;
  int (*open)(const char* path, int baud);
  int (*write)(unsigned char* data, int length);
  int (*read)(unsigned char* buffer, int maximum, int timeout_s, GwqEndOfRead end);
  int (*close)();
  int (*cancel)();
  int cancelled;
  std::vector<std::int64_t> slept_after_cancel;
};

const std::vector<LineLink> kLineLinks{{"Serial",
                                        &ICC_OpenLinuxCom,
                                        &ICC_WriteLinuxCom,
                                        &ICC_ReadLinuxCom,
                                        &ICC_CloseLinuxCom,
                                        &ICC_CancelLinuxComRead,
                                        -23,
                                        {}},
                                       {"Auxiliary",
                                        &ICC_OpenLinux,
                                        &ICC_WriteLinux,
                                        &ICC_ReadLinux,
                                        &ICC_CloseLinux,
                                        &ICC_CancelLinuxAuxRead,
                                        -27,
                                        {100'000'000}},
                                       {"AuxiliaryOfTheTerminal",
                                        &ICC_OpenLinux,
                                        &ICC_WriteLinuxAux,
                                        &ICC_ReadLinuxAux,
                                        &ICC_CloseLinux,
                                        &ICC_CancelLinuxAuxRead,
                                        -27,
                                        {100'000'000}}};

constexpr std::time_t kStart = 1'700'000'000;

class LineTransfer : public testing::TestWithParam<LineLink> {
 protected:
  LineTransfer() {
    ResetClock();
    SetTime(kStart);
    EXPECT_EQ(GetParam().open(tty_.Path().c_str(), 9600), 0);
    g_AuxOp = {};
    g_asked.clear();
  }
  ~LineTransfer() override { GetParam().close(); }

  static int Write(unsigned char* data, int length) { return GetParam().write(data, length); }
  static int Read(unsigned char* buffer, int maximum, int timeout_s, GwqEndOfRead end) {
    return GetParam().read(buffer, maximum, timeout_s, end);
  }
  static int Cancel() { return GetParam().cancel(); }
  static int Cancelled() { return GetParam().cancelled; }
  // What follows a read that was cancelled.
  static void ExpectPauseOfACancel() { EXPECT_EQ(SleptMs(), GetParam().slept_after_cancel); }

  FakeTty tty_;
};
INSTANTIATE_TEST_SUITE_P(Links, LineTransfer, testing::ValuesIn(kLineLinks), kByName);

TEST_P(LineTransfer, WriteGoesOnAfterPartialWrites) {
  tty_.NextWritesMove({3, 0, 1});
  EXPECT_EQ(Write(BytesOf("0123456789").data(), 10), 10);
  EXPECT_EQ(tty_.Received(), BytesOf("0123456789"));
  const auto calls = tty_.Calls();
  EXPECT_THAT(std::vector<std::string>(calls.end() - 4, calls.end()),
              ElementsAre("write 10", "write 7", "write 7", "write 6"));
}

TEST_P(LineTransfer, ReadEndsAtTheMaximumAndLeavesTheRestInTheDevice) {
  GuardedBuffer buffer(10);
  tty_.Send("0123456789AB");
  EXPECT_EQ(Read(buffer.data(), 10, 5, nullptr), 10);
  EXPECT_EQ(buffer.Content(), BytesOf("0123456789"));
  EXPECT_EQ(tty_.Waiting(), 2);
  EXPECT_EQ(Read(buffer.data(), 2, 5, nullptr), 2);
  EXPECT_EQ(buffer.First(2), BytesOf("AB"));
}

TEST_P(LineTransfer, ReadWritesNoTerminator) {
  GuardedBuffer buffer(6, 0x55);
  tty_.Send("abc");
  EXPECT_EQ(Read(buffer.data(), 6, 5, &UntilThree), 3);
  EXPECT_EQ(buffer.Content(), BytesOf("abcUUU"));
}

TEST_P(LineTransfer, ReadPassesEveryByteValue) {
  std::string all;
  for (int i = 0; i < 256; ++i) all += static_cast<char>(i);
  GuardedBuffer buffer(256);
  tty_.Send(all);
  EXPECT_EQ(Read(buffer.data(), 256, 5, nullptr), 256);
  EXPECT_EQ(buffer.Content(), BytesOf(all));
}

TEST_P(LineTransfer, MaximumOf0OrLessEndsWithItAfterOneRead) {
  GuardedBuffer buffer(1, 0x55);
  tty_.Send("x");
  EXPECT_EQ(Read(buffer.data(), 0, 5, nullptr), 0);
  EXPECT_EQ(Read(buffer.data(), -3, 5, nullptr), -3);
  EXPECT_TRUE(buffer.AllAre(0x55));
}

TEST_P(LineTransfer, PredicateIsAskedAfterEveryReadAlsoAnEmptyOne) {
  tty_.OnRead([this](int index) {
    if (index == 1) tty_.Send("a");
    if (index == 3) tty_.Send("bc");
  });
  GuardedBuffer buffer(10);
  EXPECT_EQ(Read(buffer.data(), 10, 5, &UntilThree), 3);
  EXPECT_THAT(g_asked, ElementsAre(0, 1, 1, 3));
}

TEST_P(LineTransfer, PredicateMayEndAReadThatBroughtNothing) {
  unsigned char byte = 0x55;
  EXPECT_EQ(Read(&byte, 1, 5, &AtOnce), 0);
  EXPECT_EQ(byte, 0x55);
}

TEST_P(LineTransfer, MaximumIsLookedAtBeforeThePredicate) {
  tty_.Send("abc");
  unsigned char buffer[3] = {};
  EXPECT_EQ(Read(buffer, 3, 5, &UntilThree), 3);
  EXPECT_TRUE(g_asked.empty());
}

TEST_P(LineTransfer, TimeoutOf0EndsWhenTheSecondChanges) {
  int reads = 0;
  tty_.OnRead([&reads](int index) { reads = index + 1; });
  unsigned char byte = 0;
  EXPECT_EQ(Read(&byte, 1, 0, nullptr), -4);
  EXPECT_EQ(reads, 10) << "of 0.1 s each";
  EXPECT_EQ(Now(), kStart + 1);
}

TEST_P(LineTransfer, TimeoutEndsOnlyAfterMoreSecondsThanGiven) {
  unsigned char byte = 0;
  EXPECT_EQ(Read(&byte, 1, 3, &Never), -4);
  EXPECT_EQ(Now(), kStart + 4);
}

TEST_P(LineTransfer, NegativeTimeoutEndsAfterOneRead) {
  int reads = 0;
  tty_.OnRead([&reads](int index) { reads = index + 1; });
  unsigned char byte = 0;
  EXPECT_EQ(Read(&byte, 1, -1, nullptr), -4);
  EXPECT_EQ(reads, 1);
}

TEST_P(LineTransfer, AnswerInTheLastMomentCounts) {
  tty_.OnRead([this](int) {
    AdvanceMs(60'000);
    tty_.Send("x");
  });
  unsigned char byte = 0;
  EXPECT_EQ(Read(&byte, 5, 1, &AnyByte), 1);
}

TEST_P(LineTransfer, BytesReceivedBeforeATimeoutStandInTheBuffer) {
  tty_.Send("ab");
  GuardedBuffer buffer(5);
  EXPECT_EQ(Read(buffer.data(), 5, 0, &Never), -4);
  EXPECT_EQ(buffer.First(2), BytesOf("ab"));
}

TEST_P(LineTransfer, ReadErrorGivesMinus6) {
  tty_.FailReads();
  unsigned char byte = 0x55;
  EXPECT_EQ(Read(&byte, 1, 5, &Never), -6);
  EXPECT_EQ(byte, 0x55);
}

TEST_P(LineTransfer, ReadErrorBehindSomeBytesGivesMinus6) {
  tty_.Send("ab");
  tty_.OnRead([this](int index) {
    if (index == 1) tty_.FailReads();
  });
  GuardedBuffer buffer(4, 0x55);
  EXPECT_EQ(Read(buffer.data(), 4, 5, &Never), -6);
  EXPECT_EQ(buffer.Content(), BytesOf("abUU"));
}

TEST_P(LineTransfer, CancelEndsTheReadAtItsNextPass) {
  int reads = 0;
  tty_.OnRead([&reads](int index) {
    reads = index + 1;
    if (index == 2) {
      EXPECT_EQ(Cancel(), 0);
    }
  });
  unsigned char byte = 0;
  EXPECT_EQ(Read(&byte, 1, 60, &Never), Cancelled());
  EXPECT_EQ(reads, 3);
  ExpectPauseOfACancel();
}

TEST_P(LineTransfer, DataThatComesWithTheCancelStillCounts) {
  tty_.OnRead([this](int) {
    Cancel();
    tty_.Send("x");
  });
  unsigned char byte = 0;
  EXPECT_EQ(Read(&byte, 1, 60, nullptr), 1);
  EXPECT_THAT(SleptMs(), IsEmpty());
}

TEST_P(LineTransfer, CancelBeforeTheReadStartsIsDropped) {
  EXPECT_EQ(Cancel(), 0);
  tty_.Send("x");
  unsigned char byte = 0;
  EXPECT_EQ(Read(&byte, 1, 5, nullptr), 1);
}

TEST_P(LineTransfer, CancelOfOneReadDoesNotReachTheNext) {
  tty_.OnRead([](int index) {
    if (index == 0) Cancel();
  });
  unsigned char byte = 0;
  EXPECT_EQ(Read(&byte, 1, 5, nullptr), Cancelled());
  tty_.Send("x");
  EXPECT_EQ(Read(&byte, 1, 5, nullptr), 1);
}

TEST_P(LineTransfer, CancelFromAnotherThreadEndsTheRead) {
  std::atomic<int> reads = 0;
  tty_.OnRead([&reads](int index) { reads = index + 1; });
  std::thread canceller([&reads] {
    while (reads == 0) std::this_thread::yield();
    EXPECT_EQ(Cancel(), 0);
  });
  unsigned char byte = 0;
  EXPECT_EQ(Read(&byte, 1, 2'000'000'000, &Never), Cancelled());
  canceller.join();
  ExpectPauseOfACancel();
}

}  // namespace
}  // namespace gwq::test
