// SPDX-License-Identifier: MIT
// GbkToUnicode and UnicodeToGbk: what they pass, drop and count.
#include <gtest/gtest.h>

#include <memory>
#include <random>

#include <gwq/codec/encodings.h>
#include "support/bytes.h"
#include "support/guarded_buffer.h"
#include "support/iconv_text.h"

namespace gwq::test {
namespace {

using Characters = std::vector<unsigned short>;

constexpr std::uint16_t kUntouched = 0x5A5A;

struct Decoded {
  int count;
  Characters out;
};

// Into room for exactly `cap` characters, from exactly the text and its zero byte.
Decoded Decode(const Bytes& text, int cap) {
  GuardedBuffer in(Concat(text, {0}));
  GuardedBuffer out(2 * static_cast<std::size_t>(cap < 0 ? 0 : cap), 0x5A);
  const int count = GbkToUnicode(in.data(), reinterpret_cast<unsigned short*>(out.data()), cap);
  const auto* first = reinterpret_cast<const unsigned short*>(out.data());
  return {count, Characters(first, first + out.size() / 2)};
}

void ExpectDecoded(const Bytes& text, Characters expected) {
  const Decoded decoded = Decode(text, static_cast<int>(expected.size()) + 3);
  EXPECT_EQ(decoded.count, static_cast<int>(expected.size()));
  expected.insert(expected.end(), 3, kUntouched);
  EXPECT_EQ(decoded.out, expected) << "no terminator either";
}

TEST(GbkToUnicode, PairAndAsciiAreOneCharacterEach) {
  ExpectDecoded({0xD2, 0xBB, 0x41}, {0x4E00, 0x41});
}

TEST(GbkToUnicode, EveryByteBelow81IsItself) {
  for (unsigned byte = 1; byte <= 0x80; ++byte) {
    ExpectDecoded({static_cast<std::uint8_t>(byte)}, {static_cast<unsigned short>(byte)});
  }
}

TEST(GbkToUnicode, FirstAndLastPairsOfTheTableAreWritten) {
  ExpectDecoded({0x81, 0x40}, {0x4E02});
  ExpectDecoded({0xFE, 0x9F}, {unicodeTables[32095]});
}

TEST(GbkToUnicode, PairsOutsideTheTableAreDroppedWhole) {
  ExpectDecoded({0x81, 0x3F, 'x'}, {'x'});
  ExpectDecoded({0x81, 0x01, 'x'}, {'x'});
  ExpectDecoded({0xFE, 0xA0, 'x'}, {'x'});
  ExpectDecoded({0xFF, 0x41, 'x'}, {'x'});
  ExpectDecoded({0xFF, 0xFF, 'x'}, {'x'});
}

TEST(GbkToUnicode, PairThatIsNoCharacterInsideTheTableIsWrittenAsZero) {
  ExpectDecoded({0x82, 0x3F, 'x'}, {0, 'x'});
}

TEST(GbkToUnicode, FirstByteAtTheEndIsDroppedAndNothingReadBehindIt) {
  ExpectDecoded({'a', 0x81}, {'a'});
  ExpectDecoded({'a', 0x82}, {'a'});
  ExpectDecoded({'a', 0xFF}, {'a'});
}

TEST(GbkToUnicode, EmptyTextIs0) {
  ExpectDecoded({}, {});
}

TEST(GbkToUnicode, StopsAtTheCapacity) {
  const Bytes text = {'a', 0xD2, 0xBB, 'b', 0xD2, 0xBB};
  const Characters all = {'a', 0x4E00, 'b', 0x4E00};
  for (int cap = 0; cap <= 4; ++cap) {
    const Decoded decoded = Decode(text, cap);
    EXPECT_EQ(decoded.count, cap);
    EXPECT_EQ(decoded.out, Characters(all.begin(), all.begin() + cap));
  }
}

TEST(GbkToUnicode, NegativeCapacityWritesNothing) {
  EXPECT_EQ(Decode({'a'}, -1).count, 0);
}

TEST(GbkToUnicode, DroppedPairsDoNotUseUpTheCapacity) {
  const Decoded decoded = Decode({0xFF, 0x41, 0xFF, 0x42, 'a', 'b'}, 1);
  EXPECT_EQ(decoded.count, 1);
  EXPECT_EQ(decoded.out, Characters{'a'});
}

// The rule, a byte or a pair at a time.
Characters ExpectedCharacters(const Bytes& text, int cap) {
  Characters out;
  for (std::size_t i = 0; i < text.size() && static_cast<int>(out.size()) < cap; ++i) {
    const unsigned first = text[i];
    if (first < 0x81) {
      out.push_back(static_cast<unsigned short>(first));
      continue;
    }
    if (++i == text.size()) break;
    const unsigned code = first * 256 + text[i];
    if (code >= 0x8140 && code <= 0xFE9F) out.push_back(unicodeTables[code - 0x8140]);
  }
  return out;
}

TEST(GbkToUnicode, RandomTextIsConvertedByTheRuleIntoEveryCapacity) {
  std::mt19937 random(2);
  for (int round = 0; round < 600; ++round) {
    Bytes text(random() % 90);
    const auto run = 1 + random() % 40;  // about so many bytes of one kind after one another
    bool single = true;
    for (std::uint8_t& byte : text) {
      if (random() % run == 0) single = !single;
      byte = static_cast<std::uint8_t>(single ? 1 + random() % 0x80 : 0x81 + random() % 0x7F);
    }
    for (int cap = 0; cap <= static_cast<int>(text.size()) + 1; ++cap) {
      Characters expected = ExpectedCharacters(text, cap);
      const Decoded decoded = Decode(text, cap);
      ASSERT_EQ(decoded.count, static_cast<int>(expected.size())) << cap;
      expected.resize(static_cast<std::size_t>(cap), kUntouched);
      ASSERT_EQ(decoded.out, expected) << cap;
    }
  }
}

// No terminator is needed once the capacity is reached.
TEST(GbkToUnicode, ReadsNoFurtherThanTheCapacityNeeds) {
  for (int length = 1; length <= 70; ++length) {
    GuardedBuffer in(Bytes(static_cast<std::size_t>(length), 'x'));
    std::vector<unsigned short> out(static_cast<std::size_t>(length));
    EXPECT_EQ(GbkToUnicode(in.data(), out.data(), length), length);
  }
}

TEST(GbkToUnicode, NullIsMinus1) {
  unsigned short out = 7;
  const unsigned char text[] = "a";
  EXPECT_EQ(GbkToUnicode(nullptr, &out, 1), -1);
  EXPECT_EQ(GbkToUnicode(text, nullptr, 1), -1);
  EXPECT_EQ(out, 7);
}

struct Encoded {
  int count;
  Bytes out;
};

// From exactly the text and its zero character, into room for exactly `room` bytes.
Encoded Encode(Characters text, int cap, std::size_t room) {
  text.push_back(0);
  const auto in = std::make_unique<unsigned short[]>(text.size());
  std::copy(text.begin(), text.end(), in.get());
  GuardedBuffer out(room, 0x5A);
  const int count = UnicodeToGbk(in.get(), out.data(), cap);
  return {count, out.Content()};
}

void ExpectEncoded(const Characters& text, int count, const Bytes& expected) {
  const Encoded encoded = Encode(text, 100, expected.size() + 2);
  EXPECT_EQ(encoded.count, count);
  EXPECT_EQ(encoded.out, Concat(expected, {0x5A, 0x5A})) << "no terminator either";
}

TEST(UnicodeToGbk, AsciiIsWrittenButNotCounted) {
  ExpectEncoded({0x41, 0x4E00}, 2, {0x41, 0xD2, 0xBB});
  ExpectEncoded({'a', 'b', 0x7F}, 0, {'a', 'b', 0x7F});
}

TEST(UnicodeToGbk, FirstAndLastIdeographsAreWrittenHighByteFirst) {
  ExpectEncoded({0x4E00, 0x9FA5}, 4, {0xD2, 0xBB, 0xFD, 0x9B});
}

TEST(UnicodeToGbk, EveryOtherCharacterIsDropped) {
  ExpectEncoded({0x3002}, 0, {});
  ExpectEncoded({0x80, 0xFF, 0x4DFF, 0x9FA6, 0xFF01, 0xFFFF, 'x'}, 0, {'x'});
}

TEST(UnicodeToGbk, EmptyTextIs0) {
  ExpectEncoded({}, 0, {});
}

TEST(UnicodeToGbk, CapacityLimitsIdeographsAloneAndIsRoundedUpToWholePairs) {
  const Characters text = {0x4E00, 0x4E00, 0x4E00};
  const Bytes pairs = {0xD2, 0xBB, 0xD2, 0xBB, 0xD2, 0xBB};
  for (int cap = 0; cap <= 7; ++cap) {
    const int expected = std::min(6, (cap + 1) / 2 * 2);
    const Encoded encoded = Encode(text, cap, static_cast<std::size_t>(expected));
    EXPECT_EQ(encoded.count, expected) << cap;
    EXPECT_EQ(encoded.out, Bytes(pairs.begin(), pairs.begin() + expected)) << cap;
  }
}

TEST(UnicodeToGbk, AsciiBeforeTheLimitIsNotLimitedAndBehindItIsLeft) {
  const Encoded encoded = Encode({'a', 'b', 'c', 0x4E00, 'd'}, 2, 6);
  EXPECT_EQ(encoded.count, 2);
  EXPECT_EQ(encoded.out, (Bytes{'a', 'b', 'c', 0xD2, 0xBB, 0x5A}));
}

TEST(UnicodeToGbk, NegativeCapacityWritesNothing) {
  EXPECT_EQ(Encode({'a', 0x4E00}, -1, 0).count, 0);
}

TEST(UnicodeToGbk, NullIsMinus1) {
  const unsigned short text[] = {'a', 0};
  unsigned char out = 7;
  EXPECT_EQ(UnicodeToGbk(nullptr, &out, 1), -1);
  EXPECT_EQ(UnicodeToGbk(text, nullptr, 1), -1);
  EXPECT_EQ(out, 7);
}

TEST(Ucs2, RandomTextOfIdeographsAndAsciiIsIconvsAndComesBack) {
  const Iconv to_gbk("UCS-2LE", "GBK");
  std::mt19937 random(1);
  for (int round = 0; round < 300; ++round) {
    Characters text(random() % 60);
    int pairs = 0;
    for (unsigned short& c : text) {
      const bool ascii = random() % 3 == 0;
      c = static_cast<unsigned short>(ascii ? 1 + random() % 0x7F : 0x4E00 + random() % 20902);
      pairs += ascii ? 0 : 1;
    }
    const std::string ucs2(reinterpret_cast<const char*>(text.data()), 2 * text.size());
    const Bytes gbk = BytesOf(to_gbk(ucs2).value());
    const Encoded encoded = Encode(text, 200, gbk.size());
    ASSERT_EQ(encoded.count, 2 * pairs);
    ASSERT_EQ(encoded.out, gbk);
    const Decoded decoded = Decode(gbk, static_cast<int>(text.size()) + 1);
    ASSERT_EQ(decoded.count, static_cast<int>(text.size()));
    ASSERT_EQ(Characters(decoded.out.begin(), decoded.out.end() - 1), text);
  }
}

}  // namespace
}  // namespace gwq::test
