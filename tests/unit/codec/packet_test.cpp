// SPDX-License-Identifier: MIT
// The PIN pad's request and answer frames: the cases one writes by hand.
#include <gwq/codec/packet.h>

#include <gtest/gtest.h>

#include <optional>

#include "unit/codec/frames.h"

namespace gwq::test {
namespace {

constexpr int kBadFrame = -8;
constexpr int kCountBefore = 12345;

ByteVector Packed(const ByteVector& body) {
  ExactBuffer in(body);
  ExactBuffer out(2 * body.size() + 8);
  EXPECT_EQ(PackData(in.Bytes(), in.Size(), out.Bytes()), out.Size());
  return out.Content();
}

struct Unpacked {
  int status;
  int count;
  ByteVector data;  // all of the room for data
};

Unpacked Unpack(const ByteVector& received, std::size_t room) {
  ExactBuffer in(received);
  ExactBuffer data(room);
  Unpacked result{0, kCountBefore, {}};
  result.status = UnPackData(in.Bytes(), in.Size(), data.Bytes(), &result.count);
  result.data = data.Content();
  return result;
}

void ExpectBadFrame(const ByteVector& received) {
  const Unpacked result = Unpack(received, received.size());
  EXPECT_EQ(result.status, kBadFrame);
  EXPECT_EQ(result.count, kCountBefore) << "the count was touched";
  EXPECT_EQ(result.data, ByteVector(received.size(), kUntouched)) << "the data were touched";
}

void ExpectAnswer(const ByteVector& received, int status, const ByteVector& data) {
  const Unpacked result = Unpack(received, data.size());
  EXPECT_EQ(result.status, status);
  EXPECT_EQ(result.count, static_cast<int>(data.size()));
  EXPECT_EQ(result.data, data);
}

TEST(PackData, WrapsTheBodyInMarksLengthAndXor) {
  EXPECT_EQ(Packed({0x30, 0x18}), BetweenMarks("0002301828"));
}

TEST(PackData, MakesEightBytesOfAnEmptyBody) {
  EXPECT_EQ(Packed({}), BetweenMarks("000000"));
}

TEST(PackData, WritesTheLengthOfALongBodyInTwoBytes) {
  const ByteVector frame = Packed(ByteVector(300, 0x77));
  EXPECT_EQ(ByteVector(frame.begin() + 1, frame.begin() + 5), ToBytes("012<"));
}

TEST(PackData, LeavesTheLengthOutOfTheXor) {
  const ByteVector frame = Packed({0xF0, 0x0F, 0x01});
  EXPECT_EQ(frame, BetweenMarks("0003?00?01?>"));
}

TEST(PackData, TakesTheLongestBody) {
  const ByteVector body = Random(1).Bytes(65535);
  EXPECT_EQ(Packed(body), RequestFrame(body));
}

TEST(UnPackData, AcceptsAnAnswerWithoutData) {
  ExpectAnswer(BetweenMarks("0002000000"), 0, {});
}

TEST(UnPackData, CoversStatusAndDataByTheXor) {
  ExpectBadFrame(BetweenMarks("00040000123406"));
  ExpectAnswer(BetweenMarks("00040000123426"), 0, {0x12, 0x34});
}

TEST(UnPackData, ReturnsAStatusThatIsNotZeroAndCopiesTheDataAllTheSame) {
  ExpectAnswer(AnswerFrame(0x6A82, {0xDE, 0xAD}), 0x6A82, {0xDE, 0xAD});
}

TEST(UnPackData, ReturnsEveryStatusWord) {
  for (unsigned status = 0; status <= 0xFFFF; ++status) {
    const ByteVector frame = AnswerFrame(status, {0x5C});
    unsigned char data = 0;
    int count = 0;
    ASSERT_EQ(UnPackData(frame.data(), static_cast<int>(frame.size()), &data, &count),
              static_cast<int>(status));
    ASSERT_EQ(count, 1);
    ASSERT_EQ(data, 0x5C);
  }
}

TEST(UnPackData, SkipsNoiseBeforeTheStart) {
  ByteVector received = ToBytes("noise\x03\x1B");
  const ByteVector frame = AnswerFrame(0, {1, 2, 3});
  received.insert(received.end(), frame.begin(), frame.end());
  ExpectAnswer(received, 0, {1, 2, 3});
}

TEST(UnPackData, IgnoresWhatFollowsTheEnd) {
  ByteVector received = AnswerFrame(0x9000, {1});
  received.insert(received.end(), {0x02, 0x30, 0x03, 0x00, 0xFF});
  ExpectAnswer(received, 0x9000, {1});
}

TEST(UnPackData, LooksAtLowNibblesOnly) {
  ExpectAnswer(BetweenMarks("@PpD@@@@ABCDBF"), 0, {0x12, 0x34});
}

TEST(UnPackData, RefusesAFrameWithoutItsMarks) {
  ExpectBadFrame({});
  ExpectBadFrame(ToBytes("0002000000"));
  ExpectBadFrame(
      ToBytes("\x02"
              "0002000000"));
  ExpectBadFrame(ToBytes("0002000000\x03"));
  ExpectBadFrame({0x03, 0x02});
}

TEST(UnPackData, RefusesAnEmptyAnOddAndATooShortBody) {
  ExpectBadFrame(BetweenMarks(""));
  ExpectBadFrame(BetweenMarks("0"));
  ExpectBadFrame(BetweenMarks("000"));
  ExpectBadFrame(BetweenMarks("00020000000"));
}

TEST(UnPackData, RefusesAnyOtherXor) {
  for (int check = 0; check < 256; ++check) {
    const ByteVector frame = Framed(4, {0x00, 0x00, 0x12, 0x34}, static_cast<unsigned>(check));
    if (check != 0x26) ExpectBadFrame(frame);
  }
}

TEST(UnPackData, AcceptsBodiesTooShortForAStatusWhenTheirLastByteIsZero) {
  ExpectAnswer(BetweenMarks("00"), 0, {});
  ExpectAnswer(BetweenMarks("0000"), 0, {});
  ExpectAnswer(BetweenMarks("120000"), 0, {});
  ExpectBadFrame(BetweenMarks("01"));
  ExpectBadFrame(BetweenMarks("0001"));
  ExpectBadFrame(BetweenMarks("000001"));
}

TEST(UnPackData, CopiesAsManyBytesAsDeclaredWhenMoreArrived) {
  ExpectAnswer(AnswerFrame(0, {1, 2, 3, 4}, 4), 0, {1, 2});
  ExpectAnswer(AnswerFrame(0, {1, 2, 3, 4}, 2), 0, {});
}

TEST(UnPackData, CopiesNothingForADeclaredLengthBelowTwo) {
  ExpectAnswer(AnswerFrame(0, {1, 2, 3, 4}, 0), 0, {});
  ExpectAnswer(AnswerFrame(0x6300, {1, 2, 3, 4}, 1), 0x6300, {});
}

// One byte more than the data reaches the XOR byte; nothing stands behind that.
TEST(UnPackData, CopiesUpToTheXorByteAndNoFurtherWhenMoreIsDeclared) {
  for (const unsigned declared : {7U, 8U, 256U, 2046U, 2047U, 2048U, 0x8000U, 0xFFFFU}) {
    SCOPED_TRACE(declared);
    ExpectAnswer(AnswerFrame(0, {1, 2, 3, 4, 8}, declared), 0,
                 declared == 7 ? ByteVector{1, 2, 3, 4, 8} : ByteVector{1, 2, 3, 4, 8, 0x0C});
  }
}

TEST(UnPackData, CopiesNoMoreThan1020BytesOfTheLongestBody) {
  const ByteVector data = Random(3).Bytes(1019);
  ByteVector with_check = data;
  with_check.push_back(static_cast<std::uint8_t>(XorOf(data)));
  ExpectAnswer(AnswerFrame(0, data, 0xFFFF), 0, with_check);
}

TEST(UnPackData, TakesABodyOf2048Characters) {
  const ByteVector data = Random(2).Bytes(1019);
  const ByteVector frame = AnswerFrame(0x1234, data);
  ASSERT_EQ(frame.size(), 2U + 2048U);
  ExpectAnswer(frame, 0x1234, data);
}

TEST(UnPackData, RefusesABodyOfMoreThan2048Characters) {
  ByteVector odd = AnswerFrame(0, ByteVector(1019, 0));
  odd.insert(odd.end() - 1, '0');
  ASSERT_EQ(odd.size(), 2U + 2049U);
  ExpectBadFrame(odd);
  ExpectBadFrame(AnswerFrame(0, ByteVector(1020, 0)));
  ExpectBadFrame(AnswerFrame(0, ByteVector(30000, 0)));
}

struct BodyCase {
  const char* what;
  const char* received;
  std::optional<const char*> body;
};

TEST(GetPacketBody, FindsWhatStandsBetweenTheFirstStartAndTheNextEnd) {
  const BodyCase cases[] = {{"whole", "<abc>", "abc"},
                            {"one byte", "<a>", "a"},
                            {"noise around", "xx<abc>yy", "abc"},
                            {"an end before the start", ">>a<bc>", "bc"},
                            {"a second start is body", "<a<b>", "a<b"},
                            {"a second end is left", "<a>b>", "a"},
                            {"start at start", "<<>", "<"},
                            {"no start", "abc>", std::nullopt},
                            {"no end", "<abc", std::nullopt},
                            {"neither", "abc", std::nullopt},
                            {"empty body", "<>", std::nullopt},
                            {"empty body, more behind", "<>a>", std::nullopt},
                            {"start is last", "abc<", std::nullopt},
                            {"start is last but one", "ab<c", std::nullopt},
                            {"end is right behind the last start", "ab<>", std::nullopt},
                            {"nothing", "", std::nullopt},
                            {"start alone", "<", std::nullopt}};
  for (const BodyCase& test : cases) {
    SCOPED_TRACE(test.what);
    ExactBuffer in{std::string_view(test.received)};
    const ByteVector body = ToBytes(test.body.value_or(""));
    ExactBuffer out(in.Content().size());
    EXPECT_EQ(GetPacketBody('<', '>', in.Bytes(), in.Size(), out.Bytes()),
              test.body ? static_cast<int>(body.size()) : -1);
    EXPECT_EQ(out.Content(), WithRestUntouched(body, in.Content().size()));
  }
}

TEST(GetPacketBody, TakesTheSameByteAsStartAndEnd) {
  ExactBuffer in("|abc|de|");
  ExactBuffer out(3);
  EXPECT_EQ(GetPacketBody('|', '|', in.Bytes(), in.Size(), out.Bytes()), 3);
  EXPECT_EQ(out.Text(), "abc");
}

TEST(Lrc, IsTheXorOfTheBytes) {
  const unsigned char data[] = {0x30, 0x18, 0xFF};
  EXPECT_EQ(GetDataLRC(data, 2) & 0xFF, 0x28);
  EXPECT_EQ(GetDataLRC(data, 3) & 0xFF, 0xD7);
  EXPECT_EQ(GetDataLRC(data, 0) & 0xFF, 0);
  EXPECT_EQ(getLRC(data, 2), 0x28);
  EXPECT_EQ(getLRC(data, 3), 0xD7);
  EXPECT_EQ(getLRC(data, 0), 0);
}

TEST(PsbcSplitData, WritesEachNibblePlus0x30) {
  ExactBuffer in(ByteVector{0xAB, 0x09});
  ExactBuffer out(4);
  PSBC_SplitData(in.Bytes(), 2, out.Bytes());
  EXPECT_EQ(out.Text(), ":;09");
}

TEST(PsbcSplitData, DoesNothingForNullOrALengthBelowOne) {
  ExactBuffer in(ByteVector{0xAB});
  ExactBuffer out(2);
  PSBC_SplitData(nullptr, 1, out.Bytes());
  PSBC_SplitData(in.Bytes(), 1, nullptr);
  PSBC_SplitData(in.Bytes(), 0, out.Bytes());
  PSBC_SplitData(in.Bytes(), -1, out.Bytes());
  EXPECT_EQ(out.Content(), ByteVector(2, kUntouched));
}

TEST(PsbcMergeData, JoinsLowNibbles) {
  ExactBuffer in(":;4G\xFF\x81");
  ExactBuffer out(3);
  PSBC_MergeData(in.Bytes(), 6, out.Bytes());
  EXPECT_EQ(out.Content(), (ByteVector{0xAB, 0x47, 0xF1}));
}

TEST(PsbcMergeData, DoesNothingForNullOrAnOddLength) {
  ExactBuffer in("123");
  ExactBuffer out(2);
  PSBC_MergeData(nullptr, 2, out.Bytes());
  PSBC_MergeData(in.Bytes(), 2, nullptr);
  PSBC_MergeData(in.Bytes(), 3, out.Bytes());
  PSBC_MergeData(in.Bytes(), 1, out.Bytes());
  PSBC_MergeData(in.Bytes(), 0, out.Bytes());
  PSBC_MergeData(in.Bytes(), -2, out.Bytes());
  EXPECT_EQ(out.Content(), ByteVector(2, kUntouched));
}

TEST(Helpers, GiveTheirFailingValueForNull) {
  unsigned char body[] = {0x02, 'a', 0x03};
  unsigned char out[8] = {};
  int length = 0;
  EXPECT_EQ(PackData(body, 3, nullptr), 0);
  EXPECT_EQ(GetPacketBody(0x02, 0x03, body, 3, nullptr), -1);
  EXPECT_EQ(GetPacketBody(0x02, 0x03, nullptr, 3, out), -1);
  EXPECT_EQ(Endian_intToChar(1, nullptr), nullptr);
  EXPECT_EQ(CheckAndGetResponseForTY(0x02, 0x03, body, 3, nullptr, &length), -14);
  EXPECT_EQ(CheckAndGetResponseForTY(0x02, 0x03, body, 3, out, nullptr), -14);
}

}  // namespace
}  // namespace gwq::test
