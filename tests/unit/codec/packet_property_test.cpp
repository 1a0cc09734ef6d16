// SPDX-License-Identifier: MIT
// Frames against a plain reading of them, on random and on damaged input.
#include <gtest/gtest.h>

#include <gwq/codec/packet.h>
#include "unit/codec/frames.h"

namespace gwq::test {
namespace {

constexpr int kCountBefore = 4321;

struct Answer {
  int status = -8;
  ByteVector data;
};

// -1 when there is none.
int FindBody(int start, int end, const ByteVector& received, ByteVector& body) {
  const int count = static_cast<int>(received.size());
  int p = count;
  for (int i = 0; i < count && p == count; ++i) {
    if (received[static_cast<std::size_t>(i)] == start) p = i + 1;
  }
  if (p >= count - 1) return -1;
  int q = p;
  while (q < count && received[static_cast<std::size_t>(q)] != end) ++q;
  if (q == count || q - p < 1) return -1;
  body.assign(received.begin() + p, received.begin() + q);
  return q - p;
}

Answer Read(const ByteVector& received) {
  ByteVector body;
  const int length = FindBody(0x02, 0x03, received, body);
  if (length < 2 || length % 2 != 0 || length > 2048) return {};
  const std::size_t m = body.size() / 2;
  ByteVector merged(4096, 0);
  for (std::size_t i = 0; i < m; ++i) {
    merged[i] = static_cast<std::uint8_t>(body[2 * i] % 16 * 16 + body[2 * i + 1] % 16);
  }
  unsigned folded = 0;
  for (std::size_t i = 2; i + 2 <= m; ++i) folded ^= merged[i];
  if (folded != merged[m - 1]) return {};
  Answer answer;
  answer.status = merged[2] * 256 + merged[3];
  const std::size_t declared = merged[0] * 256U + merged[1];
  for (std::size_t at = 4; at < 2 + declared && at < m; ++at) answer.data.push_back(merged[at]);
  return answer;
}

void ExpectReadAlike(const ByteVector& received) {
  const Answer expected = Read(received);
  ExactBuffer in(received);
  ExactBuffer data(expected.data.size());
  int count = kCountBefore;
  ASSERT_EQ(UnPackData(in.Bytes(), in.Size(), data.Bytes(), &count), expected.status);
  ASSERT_EQ(count, expected.status == -8 ? kCountBefore : static_cast<int>(expected.data.size()));
  ASSERT_EQ(data.Content(), expected.data);
}

TEST(PackDataOnRandomBodies, BuildsTheFrameByteForByte) {
  Random random(11);
  for (int length = 0; length <= 600; ++length) {
    const ByteVector body = random.Bytes(length);
    ExactBuffer in(body);
    ExactBuffer out(2 * body.size() + 8);
    ASSERT_EQ(PackData(in.Bytes(), length, out.Bytes()), 2 * length + 8);
    ASSERT_EQ(out.Content(), RequestFrame(body));
    for (std::size_t i = 1; i + 1 < out.Content().size(); ++i) ASSERT_GE(out.Bytes()[i], 0x30);
  }
}

TEST(UnPackDataOnRandomFrames, ReadsWholeFramesInNoise) {
  Random random(12);
  for (int round = 0; round < 2000; ++round) {
    ByteVector received = random.Of("noise\x03\x01\x7F", random.Between(0, 6));
    const ByteVector data = random.Bytes(random.Between(0, 60));
    const auto status = static_cast<unsigned>(random.Between(0, 0xFFFF));
    const ByteVector frame = AnswerFrame(status, data);
    received.insert(received.end(), frame.begin(), frame.end());
    ASSERT_EQ(Read(received).status, static_cast<int>(status));
    ASSERT_EQ(Read(received).data, data);
    ExpectReadAlike(received);
  }
}

TEST(UnPackDataOnRandomFrames, ReadsAnyDeclaredLengthWithinWhatArrived) {
  Random random(13);
  for (int round = 0; round < 4000; ++round) {
    const ByteVector data = random.Bytes(random.Between(0, 30));
    const int declared = random.Between(0, 1) == 0 ? random.Between(0, 40) : random.Between(0, 0xFFFF);
    ExpectReadAlike(
        AnswerFrame(static_cast<unsigned>(random.Between(0, 0xFFFF)), data, static_cast<unsigned>(declared)));
  }
}

TEST(UnPackDataOnDamagedFrames, AcceptsAndRefusesAsAPlainReading) {
  Random random(14);
  for (int round = 0; round < 20000; ++round) {
    ByteVector frame = AnswerFrame(0, random.Bytes(random.Between(0, 12)));
    const auto at = static_cast<std::size_t>(random.Between(0, static_cast<int>(frame.size()) - 1));
    switch (random.Between(0, 3)) {
      case 0:
        frame[at] = random.Byte();
        break;
      case 1:
        frame.resize(at);
        break;
      case 2:
        frame.erase(frame.begin() + static_cast<std::ptrdiff_t>(at));
        break;
      default:
        frame.insert(frame.begin() + static_cast<std::ptrdiff_t>(at), random.Byte());
    }
    ExpectReadAlike(frame);
  }
}

TEST(UnPackDataOnGarbage, NeverReadsOrWritesBeyondWhatArrived) {
  Random random(15);
  for (int round = 0; round < 20000; ++round) {
    ExpectReadAlike(
        random.Of("\x02\x03"
                  "00001",
                  random.Between(0, 14)));
    ExpectReadAlike(random.Bytes(random.Between(0, 300)));
  }
}

TEST(UnPackDataOnCutFrames, IsBadForEveryProperPrefix) {
  const ByteVector frame = AnswerFrame(0x6A82, Random(16).Bytes(40));
  for (std::size_t length = 0; length < frame.size(); ++length) {
    const ByteVector cut(frame.begin(), frame.begin() + static_cast<std::ptrdiff_t>(length));
    ASSERT_EQ(Read(cut).status, -8);
    ExpectReadAlike(cut);
  }
}

TEST(GetPacketBodyOnRandomText, FindsWhatAPlainSearchFinds) {
  Random random(17);
  for (int round = 0; round < 20000; ++round) {
    const ByteVector received = random.Of("ab<>", random.Between(0, 9));
    ByteVector body;
    const int expected = FindBody('<', '>', received, body);
    ExactBuffer in(received);
    ExactBuffer out(received.size());
    ASSERT_EQ(GetPacketBody('<', '>', in.Bytes(), in.Size(), out.Bytes()), expected);
    ASSERT_EQ(out.Content(), WithRestUntouched(body, received.size()));
  }
}

TEST(PsbcRoundTrip, GivesTheBytesBack) {
  Random random(18);
  for (int length = 0; length <= 300; ++length) {
    const ByteVector bytes = random.Bytes(length);
    ExactBuffer in(bytes);
    ExactBuffer text(2 * bytes.size());
    PSBC_SplitData(in.Bytes(), length, text.Bytes());
    ExactBuffer out(bytes.size());
    PSBC_MergeData(text.Bytes(), 2 * length, out.Bytes());
    ASSERT_EQ(out.Content(), bytes);
  }
}

}  // namespace
}  // namespace gwq::test
