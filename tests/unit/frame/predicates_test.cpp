// SPDX-License-Identifier: MIT
// The end-of-answer predicates, on buffers whose neighbours must not be looked at.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>

#include <gwq/frame/transaction.h>
#include "support/guarded_buffer.h"
#include "support/log_capture.h"

namespace gwq::test {
namespace {

using std::string_view_literals::operator""sv;
using testing::ElementsAre;
using testing::IsEmpty;

using Predicate = int (*)(unsigned char*, int);

// The bytes, with a zero behind them as the predicates on text need it.
int Ask(Predicate predicate, std::string_view text, int count) {
  GuardedBuffer buffer(Concat(BytesOf(text), {0}));
  return predicate(buffer.data(), count);
}

int Ask(Predicate predicate, std::string_view text) {
  return Ask(predicate, text, static_cast<int>(text.size()));
}

// Exactly the bytes, nothing behind them.
int AskBare(Predicate predicate, const Bytes& bytes) {
  GuardedBuffer buffer(bytes);
  return predicate(buffer.data(), static_cast<int>(bytes.size()));
}

Bytes FrameOfLength(std::size_t size, int declared) {
  Bytes frame(size, 0xEE);
  frame[5] = static_cast<std::uint8_t>(declared / 256);
  frame[6] = static_cast<std::uint8_t>(declared % 256);
  return frame;
}

TEST(Predicates, TextOnesReadOnForEmptyAndZeroFilledBuffers) {
  for (const Predicate predicate : {&EndOfRead2, &EndOfRead3}) {
    EXPECT_EQ(Ask(predicate, "", 0), 1);
    EXPECT_EQ(Ask(predicate, "", 5), 1);
    EXPECT_EQ(Ask(predicate, std::string(4096, '\0'), 4096), 1);
  }
}

TEST(Predicates, ByteBeforeTheBufferIsNotLookedAt) {
  unsigned char etx[] = {0x03, 0};
  EXPECT_EQ(EndOfRead2(etx + 1, 1), 1);
  unsigned char f[] = {'F', 0};
  EXPECT_EQ(EndOfRead3(f + 1, 1), 1);
  unsigned char cr[] = {'\r', 0};
  EXPECT_EQ(EndOfConditionD(cr + 1, 0), 1);
}

TEST(Predicates, EndOfRead2WantsEtxAtTheEndOfTheText) {
  EXPECT_EQ(Ask(&EndOfRead2, "\x03"), 0);
  EXPECT_EQ(Ask(&EndOfRead2,
                "\x02"
                "abc\x03"),
            0);
  EXPECT_EQ(Ask(&EndOfRead2,
                "\x02"
                "abc\x03\x04"),
            1);
  EXPECT_EQ(Ask(&EndOfRead2,
                "\x02"
                "abc"),
            1);
  EXPECT_EQ(Ask(&EndOfRead2, "abcF"), 1);
  EXPECT_EQ(Ask(&EndOfRead2, std::string(2047, 'x') + "\x03"), 0);
}

TEST(Predicates, EndOfRead3WantsAnFAtTheEndOfTheText) {
  EXPECT_EQ(Ask(&EndOfRead3, "F"), 0);
  EXPECT_EQ(Ask(&EndOfRead3, "B0F"), 0);
  EXPECT_EQ(Ask(&EndOfRead3, "B0f"), 1);
  EXPECT_EQ(Ask(&EndOfRead3, "FB0"), 1);
  EXPECT_EQ(Ask(&EndOfRead3, "\x02U\x03"), 1);
  EXPECT_EQ(Ask(&EndOfRead3, std::string(2047, 'x') + "F"), 0);
}

TEST(Predicates, TextEndsAtItsFirstZeroByteWhateverTheCount) {
  EXPECT_EQ(Ask(&EndOfRead2, "a\x03\0zz"sv), 0);
  EXPECT_EQ(Ask(&EndOfRead2, "ab\0\x03"sv), 1);
  EXPECT_EQ(Ask(&EndOfRead3, "aF\0zz"sv), 0);
  EXPECT_EQ(Ask(&EndOfRead3, "ab\0F"sv), 1);
  for (const int count : {INT_MIN, -1, 0, 1, INT_MAX}) {
    EXPECT_EQ(Ask(&EndOfRead2, "a\x03", count), 0);
    EXPECT_EQ(Ask(&EndOfRead3, "aF", count), 0);
  }
}

TEST(Predicates, TextOnesLogOnlyACompleteAnswer) {
  const LogCapture log;
  Ask(&EndOfRead2, "abc");
  Ask(&EndOfRead3, "abc");
  EXPECT_THAT(log.Messages(), IsEmpty());
  Ask(&EndOfRead2, "abc\x03");
  Ask(&EndOfRead3, "abcF");
  EXPECT_THAT(log.Messages(), ElementsAre("[EndOfRead2] return 0", "[EndOfRead3] return 0"));
}

TEST(Predicates, EndOfReadWantsTheHeaderAndTheBodyItDeclares) {
  EXPECT_EQ(AskBare(&EndOfRead, {}), 1);
  EXPECT_EQ(AskBare(&EndOfRead, Bytes(6, 0)), 1);
  EXPECT_EQ(AskBare(&EndOfRead, FrameOfLength(7, 0)), 0);
  EXPECT_EQ(AskBare(&EndOfRead, FrameOfLength(7, 1)), 1);
  EXPECT_EQ(AskBare(&EndOfRead, FrameOfLength(8, 1)), 0);
  EXPECT_EQ(AskBare(&EndOfRead, FrameOfLength(9, 1)), 0);
  EXPECT_EQ(AskBare(&EndOfRead, FrameOfLength(7 + 255, 256)), 1);
  EXPECT_EQ(AskBare(&EndOfRead, FrameOfLength(7 + 256, 256)), 0);
  EXPECT_EQ(AskBare(&EndOfRead, FrameOfLength(7 + 65534, 65535)), 1);
  EXPECT_EQ(AskBare(&EndOfRead, FrameOfLength(7 + 65535, 65535)), 0);
  EXPECT_EQ(AskBare(&EndOfRead, Bytes(1024, 0)), 0);
}

TEST(Predicates, EndOfReadLooksAtNothingBelow7Bytes) {
  EXPECT_EQ(EndOfRead(nullptr, 6), 1);
  EXPECT_EQ(EndOfRead(nullptr, -1), 1);
  EXPECT_EQ(EndOfRead(nullptr, INT_MIN), 1);
}

TEST(Predicates, EndOfCondition4WantsAnyByte) {
  EXPECT_EQ(EndOfCondition4(nullptr, 0), 1);
  EXPECT_EQ(EndOfCondition4(nullptr, -1), 1);
  EXPECT_EQ(AskBare(&EndOfCondition4, {0}), 0);
  EXPECT_EQ(AskBare(&EndOfCondition4, Bytes(2048, 0)), 0);
}

TEST(Predicates, EndOfConditionDWantsCrAtTheCount) {
  EXPECT_EQ(EndOfConditionD(nullptr, 0), 1);
  EXPECT_EQ(AskBare(&EndOfConditionD, {0x0D}), 0);
  EXPECT_EQ(AskBare(&EndOfConditionD, BytesOf("1234\r")), 0);
  EXPECT_EQ(AskBare(&EndOfConditionD, BytesOf("1234\r\n")), 1);
  EXPECT_EQ(AskBare(&EndOfConditionD, BytesOf("1\0\r"sv)), 0) << "zero bytes do not end it";
  EXPECT_EQ(AskBare(&EndOfConditionD, Bytes(1024, 0)), 1);
}

TEST(Predicates, EndOfConditionDLooksAtNothingBeforeTheBuffer) {
  GuardedBuffer buffer(BytesOf("\r"));
  EXPECT_EQ(EndOfConditionD(buffer.data(), 0), 1);
  EXPECT_EQ(EndOfConditionD(buffer.data(), -1), 1);
}

TEST(Min, GivesTheSmaller) {
  EXPECT_EQ(::min(1, 2), 1);
  EXPECT_EQ(::min(2, 1), 1);
  EXPECT_EQ(::min(-3, -3), -3);
  EXPECT_EQ(::min(INT_MIN, INT_MAX), INT_MIN);
}

TEST(Predicates, ReadOnForNullBytes) {
  for (const int count : {0, 1, 7, 1024}) {
    EXPECT_EQ(EndOfRead(nullptr, count), 1);
    EXPECT_EQ(EndOfConditionD(nullptr, count), 1);
  }
}

}  // namespace
}  // namespace gwq::test
