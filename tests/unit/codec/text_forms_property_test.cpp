// SPDX-License-Identifier: MIT
// The conversions against plain loops over one byte after the other, on random input and for every capacity.
#include <gtest/gtest.h>

#include <cstring>

#include <algorithm>
#include <cctype>
#include <string>

#include <gwq/codec/packet.h>
#include <gwq/codec/text_forms.h>
#include "support/named.h"
#include "unit/codec/buffers.h"

namespace gwq::test {
namespace {

constexpr std::string_view kUpper = "0123456789ABCDEF";
constexpr std::string_view kLower = "0123456789abcdef";
constexpr std::string_view kSplit = "0123456789:;<=>?";

ByteVector PairsWhileRoom(const ByteVector& in, int capacity, std::string_view digits) {
  ByteVector out;
  for (std::size_t i = 0; i < in.size() && static_cast<int>(out.size()) < capacity; ++i) {
    out.push_back(static_cast<std::uint8_t>(digits[in[i] / 16]));
    out.push_back(static_cast<std::uint8_t>(digits[in[i] % 16]));
  }
  return out;
}

template <typename JoinPair>
ByteVector JoinedWhileRoom(const ByteVector& in, int capacity, JoinPair join) {
  ByteVector out;
  for (std::size_t i = 0; i < in.size() && static_cast<int>(out.size()) < capacity; i += 2) {
    out.push_back(join(in[i], i + 1 < in.size() ? in[i + 1] : 0));
  }
  return out;
}

std::uint8_t SplitPair(int c0, int c1) {
  return static_cast<std::uint8_t>(c0 % 16 * 16 + (c1 - 0x30));
}

std::uint8_t NibblePair(int c0, int c1) {
  return static_cast<std::uint8_t>(c0 % 16 * 16 + c1 % 16);
}

std::uint8_t HexPair(int c0, int c1) {
  c0 = std::toupper(c0);
  c1 = std::toupper(c1);
  const int high = (c0 < 'A' ? c0 : c0 + 9) % 16;
  const int low = c1 < 'A' ? c1 - 0x30 : c1 - 0x37;
  return static_cast<std::uint8_t>(high * 16 + low);
}

int EvenRoom(const ByteVector&, int capacity) {
  return capacity < 0 ? 0 : (capacity + 1) / 2 * 2;
}

int ExactRoom(const ByteVector&, int capacity) {
  return capacity < 0 ? 0 : capacity;
}

int Half(const ByteVector& in) {
  return (static_cast<int>(in.size()) + 1) / 2;
}

// One conversion: how to call it, what a plain loop makes of the input, and how much it may touch of the
// output.
struct Conversion {
  const char* name;
  int (*call)(ExactBuffer& in, ExactBuffer& out, int capacity);
  ByteVector (*expected)(const ByteVector& in, int capacity);
  int (*room)(const ByteVector& in, int capacity);
  int (*count)(const ByteVector& written);
};

int AllBytes(const ByteVector& written) {
  return static_cast<int>(written.size());
}

int AllButTheTerminator(const ByteVector& written) {
  return written.empty() ? 0 : static_cast<int>(written.size()) - 1;
}

template <auto kFunction>
int FromBytes(ExactBuffer& in, ExactBuffer& out, int capacity) {
  return kFunction(in.Bytes(), in.Size(), out.Chars(), capacity);
}

template <auto kFunction>
int ToBytesFrom(ExactBuffer& in, ExactBuffer& out, int capacity) {
  return kFunction(in.Chars(), in.Size(), out.Bytes(), capacity);
}

template <auto kFunction>
int TextToText(ExactBuffer& in, ExactBuffer& out, int capacity) {
  return kFunction(in.Chars(), in.Size(), out.Chars(), capacity);
}

ByteVector ExpectedHex(const ByteVector& in, int capacity) {
  return PairsWhileRoom(in, capacity, kUpper);
}

ByteVector ExpectedSplit(const ByteVector& in, int capacity) {
  return PairsWhileRoom(in, capacity, kSplit);
}

ByteVector ExpectedSplitOrNothing(const ByteVector& in, int capacity) {
  return capacity < 2 * static_cast<int>(in.size()) ? ByteVector{} : ExpectedSplit(in, capacity);
}

ByteVector ExpectedLowerTerminated(const ByteVector& in, int capacity) {
  ByteVector out = PairsWhileRoom(in, capacity, kLower);
  if (!out.empty()) out.push_back(0);
  return out;
}

ByteVector ExpectedJoined(const ByteVector& in, int capacity) {
  return JoinedWhileRoom(in, capacity, SplitPair);
}

ByteVector ExpectedJoinedOrNothing(const ByteVector& in, int capacity) {
  return capacity < Half(in) ? ByteVector{} : ExpectedJoined(in, capacity);
}

ByteVector ExpectedMerged(const ByteVector& in, int capacity) {
  return capacity < Half(in) ? ByteVector{} : JoinedWhileRoom(in, capacity, NibblePair);
}

ByteVector ExpectedFromHex(const ByteVector& in, int capacity) {
  return JoinedWhileRoom(in, capacity, HexPair);
}

ByteVector ExpectedHexToBcd(const ByteVector& in, int capacity) {
  return PairsWhileRoom(ExpectedJoined(in, Half(in)), capacity, kUpper);
}

ByteVector ExpectedBcdToHex(const ByteVector& in, int capacity) {
  return PairsWhileRoom(ExpectedFromHex(in, Half(in)), capacity, kSplit);
}

int RoomWithTerminator(const ByteVector& in, int capacity) {
  return EvenRoom(in, capacity) + 1;
}

using MutableInput = int (*)(char*, int, char*, int);
using ConstantInput = int (*)(const char*, int, char*, int);

const Conversion kConversions[] = {
    {"GetHexString", FromBytes<GetHexString>, ExpectedHex, EvenRoom, AllBytes},
    {"GetHexStr", FromBytes<GetHexStr>, ExpectedSplit, EvenRoom, AllBytes},
    {"HexAsc1Split", FromBytes<HexAsc1Split>, ExpectedSplitOrNothing, ExactRoom, AllBytes},
    {"SplitChar", FromBytes<SplitChar>, ExpectedSplitOrNothing, ExactRoom, AllBytes},
    {"AsciiToHexStrMutable", TextToText<static_cast<MutableInput>(AsciiToHexStr)>, ExpectedHex, EvenRoom,
     AllBytes},
    {"AsciiToHexStrConstant", TextToText<static_cast<ConstantInput>(AsciiToHexStr)>, ExpectedLowerTerminated,
     RoomWithTerminator, AllButTheTerminator},
    {"GetAsciStr", ToBytesFrom<GetAsciStr>, ExpectedJoined, ExactRoom, AllBytes},
    {"HexAsc1Merge", ToBytesFrom<HexAsc1Merge>, ExpectedJoinedOrNothing, ExactRoom, AllBytes},
    {"Merge", ToBytesFrom<Merge>, ExpectedMerged, ExactRoom, AllBytes},
    {"HexStrToAscii", ToBytesFrom<HexStrToAscii>, ExpectedFromHex, ExactRoom, AllBytes},
    {"GetAsciString", ToBytesFrom<GetAsciString>, ExpectedFromHex, ExactRoom, AllBytes},
    {"HexToBCD", TextToText<HexToBCD>, ExpectedHexToBcd, EvenRoom, AllBytes},
    {"BCDToHex", TextToText<BCDToHex>, ExpectedBcdToHex, EvenRoom, AllBytes},
};

class EachConversion : public testing::TestWithParam<Conversion> {
 protected:
  static void Check(const ByteVector& bytes, int capacity) {
    const Conversion& conversion = GetParam();
    SCOPED_TRACE(testing::Message() << "input of " << bytes.size() << ", capacity " << capacity);
    const auto room = static_cast<std::size_t>(conversion.room(bytes, capacity));
    ExactBuffer in(bytes);
    ExactBuffer out(room);
    const ByteVector expected = conversion.expected(bytes, capacity);
    EXPECT_EQ(conversion.call(in, out, capacity), conversion.count(expected));
    ASSERT_EQ(out.Content(), WithRestUntouched(expected, room));
    ASSERT_EQ(in.Content(), bytes) << "the input was changed";
  }
};

TEST_P(EachConversion, DoesAsAPlainLoopForEveryCapacity) {
  Random random(1);
  for (int length = 0; length <= 80; ++length) {
    const ByteVector bytes = random.Bytes(length);
    for (int capacity = -1; capacity <= 2 * length + 3; ++capacity) Check(bytes, capacity);
  }
}

TEST_P(EachConversion, DoesAsAPlainLoopOnHexadecimalText) {
  Random random(2);
  for (int length = 0; length <= 40; ++length) {
    Check(random.Of("0123456789ABCDEFabcdef", length), 2 * length + 2);
  }
}

TEST_P(EachConversion, DoesAsAPlainLoopOnSplitForm) {
  Random random(3);
  for (int length = 0; length <= 40; ++length) Check(random.Of(kSplit, length), 2 * length + 2);
}

TEST_P(EachConversion, DoesAsAPlainLoopOnEveryPairOfCharacters) {
  for (int c0 = 0; c0 < 256; ++c0) {
    for (int c1 = 0; c1 < 256; ++c1) {
      Check({static_cast<std::uint8_t>(c0), static_cast<std::uint8_t>(c1)}, 4);
    }
  }
}

TEST_P(EachConversion, DoesAsAPlainLoopForEveryCharacterAtEveryPlace) {
  Random random(8);
  for (int place = 0; place < 72; ++place) {
    ByteVector bytes = random.Of("0123456789ABCDEFabcdef", 72);
    for (int c = 0; c < 256; ++c) {
      bytes[static_cast<std::size_t>(place)] = static_cast<std::uint8_t>(c);
      Check(bytes, 144);
    }
  }
}

TEST_P(EachConversion, DoesAsAPlainLoopOnLongInput) {
  Random random(4);
  for (const int length : {2047, 2048, 2049, 65536}) Check(random.Bytes(length), 2 * length);
}

INSTANTIATE_TEST_SUITE_P(Codec, EachConversion, testing::ValuesIn(kConversions), kByName);

TEST(RoundTrip, HexadecimalTextBackToBytes) {
  Random random(5);
  for (int length = 0; length <= 100; ++length) {
    const ByteVector bytes = random.Bytes(length);
    ExactBuffer in(bytes);
    ExactBuffer text(2 * bytes.size() + 1);
    ASSERT_EQ(HexToAscii(in.Bytes(), length, text.Chars()), 2 * length);
    ExactBuffer out(bytes.size());
    ASSERT_EQ(AsciiToHex(text.Chars(), 2 * length, out.Bytes()), length);
    ASSERT_EQ(out.Content(), bytes);
  }
}

TEST(RoundTrip, SplitFormBackToBytes) {
  Random random(6);
  for (int length = 0; length <= 100; ++length) {
    const ByteVector bytes = random.Bytes(length);
    ExactBuffer in(bytes);
    ExactBuffer text(2 * bytes.size());
    ASSERT_EQ(SplitChar(in.Bytes(), length, text.Chars(), 2 * length), 2 * length);
    ExactBuffer out(bytes.size());
    ASSERT_EQ(Merge(text.Chars(), 2 * length, out.Bytes(), length), length);
    ASSERT_EQ(out.Content(), bytes);
  }
}

// Texts are joined where they stand, too.
template <auto kFunction>
void ExpectJoinedInPlace(std::string_view alphabet) {
  Random random(9);
  for (int length = 0; length <= 200; ++length) {
    const ByteVector text = random.Of(alphabet, length);
    ExactBuffer in(text);
    ExactBuffer expected(text);
    ExactBuffer apart(static_cast<std::size_t>(length));
    const int count = kFunction(in.Chars(), length, apart.Bytes(), length);
    std::copy_n(apart.Bytes(), count, expected.Bytes());
    ASSERT_EQ(kFunction(in.Chars(), length, in.Bytes(), length), count);
    ASSERT_EQ(in.Content(), expected.Content()) << "length " << length;
  }
}

TEST(JoiningInPlace, IsAsJoiningElsewhere) {
  ExpectJoinedInPlace<GetAsciStr>(kSplit);
  ExpectJoinedInPlace<HexAsc1Merge>(kSplit);
  ExpectJoinedInPlace<Merge>(kSplit);
  ExpectJoinedInPlace<HexStrToAscii>(kUpper);
}

TEST(XorFolds, AreAPlainLoopForEveryLength) {
  Random random(10);
  for (int length = 0; length <= 400; ++length) {
    const ByteVector bytes = random.Bytes(length);
    const std::uint8_t seed = random.Byte();
    std::uint8_t folded = 0;
    for (const std::uint8_t byte : bytes) folded = static_cast<std::uint8_t>(folded ^ byte);
    ExactBuffer in(bytes);
    ASSERT_EQ(GetXorValue(seed, in.Bytes(), length), folded ^ seed);
    ASSERT_EQ(GetDataLRC(in.Bytes(), length), folded);
    ASSERT_EQ(getLRC(in.Bytes(), length), folded);
  }
}

TEST(AsciiToHexOnRandomText, StopsWhereAPlainLoopStops) {
  Random random(7);
  for (int round = 0; round < 6000; ++round) {
    const std::string digits = "0123456789ABCDEFabcdef0123456789ABCDEFabcdef";
    ByteVector text = random.Of(digits + (round % 2 == 0 ? "gG:@`" : ""), random.Between(0, 120));
    if (!text.empty())
      text[static_cast<std::size_t>(random.Between(0, static_cast<int>(text.size()) - 1))] = random.Byte();
    ByteVector expected;
    for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
      if (std::isxdigit(text[i]) == 0 || std::isxdigit(text[i + 1]) == 0) break;
      const std::string pair{static_cast<char>(text[i]), static_cast<char>(text[i + 1])};
      expected.push_back(static_cast<std::uint8_t>(std::stoi(pair, nullptr, 16)));
    }
    ExactBuffer in(text);
    ExactBuffer out(text.size() / 2);
    ASSERT_EQ(AsciiToHex(in.Chars(), in.Size(), out.Bytes()), static_cast<int>(expected.size()));
    ASSERT_EQ(out.Content(), WithRestUntouched(expected, text.size() / 2));
  }
}

// Any overlap: the text is read before anything is written.
TEST(JoiningHex, IsRightForEveryOverlap) {
  std::string digits;
  for (int i = 0; i < 97; ++i) digits += "0123456789abcdefABCDEF"[i * 7 % 22];
  for (int (*const join)(const char*, int, unsigned char*, int) : {&HexStrToAscii, &GetAsciString}) {
    for (int length = 0; length <= 97; ++length) {
      std::array<unsigned char, 64> expected{};
      const int count = join(digits.data(), length, expected.data(), 64);
      for (int shift = -40; shift <= 100; ++shift) {
        std::array<char, 320> room{};
        digits.copy(room.data() + 100, static_cast<std::size_t>(length));
        auto* out = reinterpret_cast<unsigned char*>(room.data() + 100 + shift);
        ASSERT_EQ(join(room.data() + 100, length, out, 64), count);
        ASSERT_TRUE(std::equal(out, out + count, expected.begin())) << length << " digits, " << shift;
      }
    }
  }
}

TEST(SplitData, MayCutItsOwnText) {
  for (const char* text : {"abc|def", "|abc", "abc", ""}) {
    std::array<char, 16> room{};
    std::string_view(text).copy(room.data(), room.size() - 1);
    std::array<char, 16> expected = room;
    std::array<char, 16> cut{};
    SplitData(expected.data(), cut.data(), "|");
    SplitData(room.data(), room.data(), "|");
    EXPECT_EQ(room, expected) << "the text before the delimiter stands there already";
    std::array<char, 16> shifted{};
    std::string_view(text).copy(shifted.data(), shifted.size() - 2);
    SplitData(shifted.data(), shifted.data() + 1, "|");
    EXPECT_STREQ(std::string(shifted.data() + 1).substr(0, std::strlen(cut.data())).c_str(), cut.data());
  }
}

}  // namespace
}  // namespace gwq::test
