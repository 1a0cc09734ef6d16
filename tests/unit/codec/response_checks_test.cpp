// SPDX-License-Identifier: MIT
// Judging short answers, PIN-block answers and device ids.
#include <gtest/gtest.h>

#include <string>

#include <gwq/codec/packet.h>
#include "unit/codec/frames.h"

namespace gwq::test {
namespace {

constexpr int kFailed = -2;
constexpr int kRefused = -14;
constexpr int kCountBefore = 777;

int Judge(const ByteVector& answer) {
  ExactBuffer in(answer);
  return CheckAndGetResponse(in.Bytes(), in.Size());
}

TEST(CheckAndGetResponse, TellsNoAnswer) {
  const unsigned char byte = 0x02;
  EXPECT_EQ(CheckAndGetResponse(nullptr, 0), kFailed);
  EXPECT_EQ(CheckAndGetResponse(nullptr, 3), kFailed);
  EXPECT_EQ(CheckAndGetResponse(&byte, 0), kFailed);
}

TEST(CheckAndGetResponse, RefusesWhatHasNoFrame) {
  EXPECT_EQ(Judge({0x02}), kRefused);
  EXPECT_EQ(Judge({0x03}), kRefused);
  EXPECT_EQ(Judge({0x02, '0'}), kRefused);
  EXPECT_EQ(Judge({'0', 0x03}), kRefused);
  EXPECT_EQ(Judge({0x02, '0', 0x03, '\r'}), kRefused);
  EXPECT_EQ(CheckAndGetResponse(reinterpret_cast<const unsigned char*>("\x02"
                                                                       "0\x03"),
                                -1),
            kRefused);
}

TEST(CheckAndGetResponse, KnowsTheMarks) {
  EXPECT_EQ(Judge({0x02, 'U', 0x03}), kRefused);
  EXPECT_EQ(Judge({0x02, 'U', '0', 0x03}), kRefused);
  EXPECT_EQ(Judge({0x02, 0xAA, '1', 0x03}), kFailed);
  EXPECT_EQ(Judge({0x02, 0xAA, '1', '2', 0x03}), kFailed);
  EXPECT_EQ(Judge({0x02, 0xAA, '0', 0x03}), 0);
  EXPECT_EQ(Judge({0x02, 0xAA, 0x03}), 0);
  EXPECT_EQ(Judge({0x02, '0', 0x03}), 0);
  EXPECT_EQ(Judge({0x02, '1', '1', 0x03}), 0);
  EXPECT_EQ(Judge({0x02, 0x03}), 0);
}

int JudgePlainly(const ByteVector& answer) {
  if (answer.empty()) return -2;
  if (answer.size() < 2 || answer[0] != 2 || answer[answer.size() - 1] != 3) return -14;
  if (answer[1] == 0x55) return -14;
  if (answer.size() > 2 && answer[1] == 0xAA && answer[2] == 0x31) return -2;
  return 0;
}

TEST(CheckAndGetResponse, JudgesEveryShortAnswerAsAPlainReading) {
  const std::uint8_t alphabet[] = {0x02, 0x03, 0x55, 0xAA, 0x31, 0x30, 0x00};
  std::vector<ByteVector> answers{{}};
  for (std::size_t at = 0; at < answers.size(); ++at) {
    const ByteVector answer = answers[at];
    ASSERT_EQ(Judge(answer), JudgePlainly(answer)) << testing::PrintToString(answer);
    if (answer.size() == 4) continue;
    for (const std::uint8_t byte : alphabet) {
      answers.push_back(answer);
      answers.back().push_back(byte);
    }
  }
  EXPECT_EQ(answers.size(), 1U + 7 + 49 + 343 + 2401);
}

ByteVector PinBlockAnswer(const ByteVector& merged) {
  ByteVector answer{0x02};
  for (const std::uint8_t byte : merged) AppendSplit(answer, byte);
  answer.push_back(0x03);
  return answer;
}

void ExpectTaken(const ByteVector& answer, const ByteVector& data) {
  ExactBuffer in(answer);
  ExactBuffer out(data.size());
  int count = kCountBefore;
  EXPECT_EQ(CheckAndGetResponseForTY(0x02, 0x03, in.Bytes(), in.Size(), out.Bytes(), &count), 0);
  EXPECT_EQ(count, static_cast<int>(data.size()));
  EXPECT_EQ(out.Content(), data);
}

void ExpectRefused(const ByteVector& answer) {
  ExactBuffer in(answer);
  ExactBuffer out(answer.size());
  int count = kCountBefore;
  EXPECT_EQ(CheckAndGetResponseForTY(0x02, 0x03, in.Bytes(), in.Size(), out.Bytes(), &count), kRefused);
  EXPECT_EQ(count, kCountBefore) << "the count was touched";
  EXPECT_EQ(out.Content(), ByteVector(answer.size(), kUntouched)) << "the output was touched";
}

ByteVector Marked(std::uint8_t mark, ByteVector data) {
  data.insert(data.begin(), mark);
  return PinBlockAnswer(data);
}

TEST(CheckAndGetResponseForTY, TakesTheShortMarkWithUpToEightDataBytes) {
  Random random(21);
  for (int length = 0; length <= 8; ++length) {
    const ByteVector data = random.Bytes(length);
    ExpectTaken(Marked(0x10, data), data);
  }
  ExpectRefused(Marked(0x10, random.Bytes(9)));
  ExpectRefused(Marked(0x10, random.Bytes(16)));
}

TEST(CheckAndGetResponseForTY, TakesTheLongMarkWithNineDataBytesAndMore) {
  Random random(22);
  for (const int length : {9, 16, 32, 1023}) {
    const ByteVector data = random.Bytes(length);
    ExpectTaken(Marked(0x20, data), data);
  }
  for (int length = 0; length <= 8; ++length) ExpectRefused(Marked(0x20, random.Bytes(length)));
}

TEST(CheckAndGetResponseForTY, RefusesAnyOtherMark) {
  for (int mark = 0; mark < 256; ++mark) {
    if (mark == 0x10 || mark == 0x20) continue;
    ExpectRefused(Marked(static_cast<std::uint8_t>(mark), ByteVector(8, 0x11)));
    ExpectRefused(Marked(static_cast<std::uint8_t>(mark), ByteVector(16, 0x11)));
  }
}

TEST(CheckAndGetResponseForTY, RefusesMoreThan1024MergedBytes) {
  ExpectRefused(Marked(0x20, ByteVector(1024, 0x11)));
  ByteVector odd = Marked(0x20, ByteVector(1023, 0x11));
  odd.insert(odd.end() - 1, '1');
  ExpectRefused(odd);
}

TEST(CheckAndGetResponseForTY, PairsTheLastCharacterOfAnOddBodyWithTheEndMark) {
  // 2 x 16 + (0x03 - 0x30), in 8 bits
  ExpectTaken(BetweenMarks("10112"), {0x11, 0xF3});
}

TEST(CheckAndGetResponseForTY, RefusesAnAnswerWithoutItsMarks) {
  ByteVector answer = Marked(0x10, {1, 2});
  answer.front() = 0x01;
  ExpectRefused(answer);
  answer = Marked(0x10, {1, 2});
  answer.back() = 0x04;
  ExpectRefused(answer);
  ExpectRefused({});
  ExpectRefused({0x02});
  ExpectRefused({0x02, 0x03});
}

TEST(CheckAndGetResponseForTY, TakesOtherStartAndEndBytes) {
  ExactBuffer in(
      "<10"
      "45>");
  ExactBuffer out(1);
  int count = 0;
  EXPECT_EQ(CheckAndGetResponseForTY('<', '>', in.Bytes(), in.Size(), out.Bytes(), &count), 0);
  EXPECT_EQ(count, 1);
  EXPECT_EQ(out.Content(), ByteVector{0x45});
}

TEST(CheckAndGetResponseForTY, RefusesASingleByteThatIsStartAndEnd) {
  ExactBuffer in("|");
  ExactBuffer out(1);
  int count = kCountBefore;
  EXPECT_EQ(CheckAndGetResponseForTY('|', '|', in.Bytes(), 1, out.Bytes(), &count), kRefused);
  EXPECT_EQ(count, kCountBefore);
}

TEST(CheckDeviceId, TakesThePrefixAndEightDigitsOnly) {
  EXPECT_EQ(CheckDeviceId("st_12345678"), 1);
  EXPECT_EQ(CheckDeviceId("st_00000000"), 1);
  for (const char* id : {"st_1234567a", "ST_12345678", "st_1234567", "st_123456789", "st_", "",
                         "xst_12345678", "st-12345678", "st_ 2345678", "st_1234567 ", "st_12345678\n",
                         "st_+1234567", "st_1234:678", "st_1234/678", "12345678901"}) {
    EXPECT_EQ(CheckDeviceId(id), 0) << id;
  }
  EXPECT_EQ(CheckDeviceId(nullptr), 0);
}

}  // namespace
}  // namespace gwq::test
