// SPDX-License-Identifier: MIT
// What is the auxiliary port's own: what is written around the data, its log, and its pause after a cancel.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <termios.h>

#include <gwq/links/aux_port.h>
#include "support/fake_tty.h"
#include "support/guarded_buffer.h"
#include "support/iconv_text.h"
#include "support/log_capture.h"
#include "support/predicates.h"
#include "support/test_clock.h"

namespace gwq::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::time_t kStart = 1'700'000'000;
constexpr std::int64_t kPauseMs = 100'000'000;

class AuxTransfer : public testing::Test {
 protected:
  AuxTransfer() {
    ResetClock();
    SetTime(kStart);
    EXPECT_EQ(ICC_OpenLinux(tty_.Path().c_str(), 9600), 0);
    g_AuxOp = {};
  }
  ~AuxTransfer() override { ICC_CloseLinux(); }

  FakeTty tty_;
};

std::string EndOfReadLog() {
  return InGbk("ICC_ReadLinu :从辅口得到数据\n");
}

TEST_F(AuxTransfer, WriteSendsPrefixPayloadAndSuffix) {
  VK_OpenAuxPort(3, 1, 9600, 0);
  const std::size_t before = tty_.Received().size();
  Bytes data = BytesOf(std::string_view("\x00\x1B\xFF\r\n", 5));
  EXPECT_EQ(ICC_WriteLinuxAux(data.data(), 5), 5);
  Bytes sent = tty_.Received();
  sent.erase(sent.begin(), sent.begin() + static_cast<std::ptrdiff_t>(before));
  EXPECT_EQ(sent, Concat(Concat(BytesOf("\x1B[/|"), data), BytesOf("|")));
}

TEST_F(AuxTransfer, WriteGivesThePayloadsResultWhateverBecomesOfTheRest) {
  VK_OpenAuxPort(1, 1, 9600, 0);
  Bytes data = BytesOf("0123");
  tty_.NextWritesMove({-1, 3, -1, -1});
  EXPECT_EQ(ICC_WriteLinuxAux(data.data(), 4), 3);
  tty_.NextWritesMove({-1, 4, -1});
  EXPECT_EQ(ICC_WriteLinuxAux(data.data(), 4), 4);
  tty_.NextWritesMove({6, -1, 6});
  EXPECT_EQ(ICC_WriteLinuxAux(data.data(), 4), 0);
}

TEST_F(AuxTransfer, WriteTakesWhatTheHostPutAroundItButNoMoreThanTheRecordHolds) {
  std::fill(std::begin(g_AuxOp.szPrefix), std::end(g_AuxOp.szPrefix), 'p');
  std::fill(std::begin(g_AuxOp.szSuffix), std::end(g_AuxOp.szSuffix), 's');
  g_AuxOp.nPrefixLen = 2'000'000'000;
  g_AuxOp.nSuffixLen = 1025;
  EXPECT_EQ(ICC_WriteLinuxAux(BytesOf("x").data(), 1), 1);
  EXPECT_EQ(tty_.Received(), BytesOf(std::string(1024, 'p').append("x").append(1024, 's')));
}

TEST_F(AuxTransfer, WriteSendsNothingAroundForLengthsBelow1) {
  g_AuxOp.nPrefixLen = -1;
  g_AuxOp.nSuffixLen = -2'000'000'000;
  EXPECT_EQ(ICC_WriteLinuxAux(BytesOf("x").data(), 1), 1);
  EXPECT_EQ(tty_.Received(), BytesOf("x"));
}

TEST_F(AuxTransfer, PlainWriteSendsThePayloadAlone) {
  VK_OpenAuxPort(1, 1, 9600, 0);
  const std::size_t before = tty_.Received().size();
  EXPECT_EQ(ICC_WriteLinux(BytesOf("ab").data(), 2), 2);
  EXPECT_EQ(VK_SendDataToTransPort(BytesOf("c").data(), 1), 1);
  EXPECT_EQ(tty_.Received().size(), before + 3);
}

TEST_F(AuxTransfer, WriteRefusesNullAndLengthsBelow1AndSendsNothingAround) {
  VK_OpenAuxPort(1, 1, 9600, 0);
  const Bytes before = tty_.Received();
  unsigned char byte = 0;
  for (const auto write : {&ICC_WriteLinuxAux, &ICC_WriteLinux, &VK_SendDataToTransPort}) {
    EXPECT_EQ(write(nullptr, 1), -2);
    EXPECT_EQ(write(&byte, 0), -2);
    EXPECT_EQ(write(&byte, -1), -2);
  }
  EXPECT_EQ(tty_.Received(), before);
}

TEST(AuxClosed, EveryCallSaysSo) {
  unsigned char byte = 0x55;
  const LogCapture log;
  EXPECT_EQ(ICC_WriteLinuxAux(&byte, 1), -2);
  EXPECT_EQ(ICC_WriteLinux(&byte, 1), -2);
  EXPECT_EQ(VK_SendDataToTransPort(&byte, 1), -2);
  EXPECT_EQ(ICC_ReadLinuxAux(&byte, 1, 0, nullptr), -2);
  EXPECT_EQ(ICC_ReadLinux(&byte, 1, 0, nullptr), -2);
  EXPECT_EQ(ICC_CancelLinuxAuxRead(), -7);
  ClearReceiveBuffer();
  EXPECT_EQ(byte, 0x55);
  EXPECT_THAT(log.Messages(), IsEmpty());
}

TEST_F(AuxTransfer, ReadRefusesANullBuffer) {
  const LogCapture log;
  EXPECT_EQ(ICC_ReadLinuxAux(nullptr, 10, 0, nullptr), -2);
  EXPECT_THAT(log.Messages(), IsEmpty());
}

TEST_F(AuxTransfer, ReadLogsTheBuffersBeginningWithEachReadsCountAndItsEnd) {
  g_asked.clear();
  tty_.OnRead([this](int index) {
    if (index == 1) tty_.Send("a");
    if (index == 2) tty_.Send("bc");
  });
  GuardedBuffer buffer(6, 0x55);
  const LogCapture log;
  EXPECT_EQ(ICC_ReadLinux(buffer.data(), 6, 5, &UntilThree), 3);
  EXPECT_EQ(buffer.Content(), BytesOf("abcUUU"));
  EXPECT_THAT(g_asked, ElementsAre(0, 1, 3));
  EXPECT_THAT(log.Messages(),
              ElementsAre("ICC_ReadLinux =  LEN=0   HEX: ", "ICC_ReadLinux =  LEN=1   HEX: 61",
                          "ICC_ReadLinux =  LEN=2   HEX: 6162", EndOfReadLog()));
}

TEST_F(AuxTransfer, TimeoutOf0EndsWhenTheSecondChanges) {
  int reads = 0;
  tty_.OnRead([&reads](int index) { reads = index + 1; });
  unsigned char byte = 0;
  const LogCapture log;
  EXPECT_EQ(ICC_ReadLinux(&byte, 1, 0, nullptr), -4);
  EXPECT_EQ(reads, 10) << "of 0.1 s each";
  EXPECT_EQ(Now(), kStart + 1);
  EXPECT_EQ(log.Messages().size(), 11U);
  EXPECT_EQ(log.Messages().back(), EndOfReadLog());
}

TEST_F(AuxTransfer, ReadErrorBehindSomeBytesGivesMinus6) {
  tty_.Send("ab");
  tty_.OnRead([this](int index) {
    if (index == 1) tty_.FailReads();
  });
  GuardedBuffer buffer(4, 0x55);
  const LogCapture log;
  EXPECT_EQ(ICC_ReadLinux(buffer.data(), 4, 5, &Never), -6);
  EXPECT_EQ(buffer.Content(), BytesOf("abUU"));
  EXPECT_THAT(log.Messages(), ElementsAre("ICC_ReadLinux =  LEN=2   HEX: 6162",
                                          "ICC_ReadLinux =  LEN=-1   HEX: ", EndOfReadLog()));
}

TEST_F(AuxTransfer, CancelledReadPausesFor100000SecondsAndGivesMinus27) {
  tty_.OnRead([](int index) {
    if (index == 2) {
      EXPECT_EQ(ICC_CancelLinuxAuxRead(), 0);
    }
  });
  unsigned char byte = 0;
  const LogCapture log;
  EXPECT_EQ(ICC_ReadLinuxAux(&byte, 1, 60, &Never), -27);
  EXPECT_THAT(SleptMs(), ElementsAre(kPauseMs));
  EXPECT_EQ(log.Messages().size(), 4U);
  EXPECT_EQ(log.Messages().back(), EndOfReadLog());
}

TEST_F(AuxTransfer, ClearReceiveBufferDiscardsWhatWaits) {
  tty_.Send("stale");
  while (tty_.Waiting() < 5) continue;
  const LogCapture log;
  ClearReceiveBuffer();
  EXPECT_EQ(tty_.Waiting(), 0);
  EXPECT_EQ(tty_.Calls().back(), "tcflush " + std::to_string(TCIFLUSH));
  EXPECT_THAT(log.Messages(), ElementsAre("ClearReceiveBuffer  tcflush(g_AuxFd, TCIFLUSH) \n"));
  tty_.Send("new");
  unsigned char buffer[3] = {};
  EXPECT_EQ(ICC_ReadLinux(buffer, 3, 5, nullptr), 3);
  EXPECT_EQ(Bytes(buffer, buffer + 3), BytesOf("new"));
}

}  // namespace
}  // namespace gwq::test
