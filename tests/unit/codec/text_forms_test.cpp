// SPDX-License-Identifier: MIT
// Conversions between bytes, hexadecimal text and split form: the cases one writes by hand.
#include <gwq/codec/text_forms.h>

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

#include <gwq/frame/transaction.h>
#include "unit/codec/buffers.h"

namespace gwq::test {
namespace {

using ToText = int (*)(const unsigned char*, int, char*, int);
using ToBytesFunction = int (*)(const char*, int, unsigned char*, int);
using TextToText = int (*)(const char*, int, char*, int);

// The output for a capacity of twice the input, or "" and a failure when the count does not match it.
std::string Text(ToText convert, const ByteVector& bytes) {
  ExactBuffer in(bytes);
  ExactBuffer out(2 * bytes.size());
  EXPECT_EQ(convert(in.Bytes(), in.Size(), out.Chars(), out.Size()), out.Size());
  return out.Text();
}

ByteVector Joined(ToBytesFunction convert, std::string_view text) {
  ExactBuffer in(text);
  ExactBuffer out((text.size() + 1) / 2);
  EXPECT_EQ(convert(in.Chars(), in.Size(), out.Bytes(), out.Size()), out.Size());
  return out.Content();
}

std::string Recoded(TextToText convert, std::string_view text) {
  ExactBuffer in(text);
  ExactBuffer out((text.size() + 1) / 2 * 2);
  EXPECT_EQ(convert(in.Chars(), in.Size(), out.Chars(), out.Size()), out.Size());
  return out.Text();
}

TEST(GetHexString, WritesUpperCaseHighNibbleFirst) {
  EXPECT_EQ(Text(GetHexString, {0x00, 0xAB, 0xFF}), "00ABFF");
  EXPECT_EQ(Text(GetHexString, {0x09, 0x9A, 0xA9, 0x10}), "099AA910");
}

TEST(GetHexString, ExceedsAnOddCapacityByOneCharacter) {
  ExactBuffer in(ByteVector{0x12, 0x34, 0x56});
  ExactBuffer out(4);
  EXPECT_EQ(GetHexString(in.Bytes(), 3, out.Chars(), 3), 4);
  EXPECT_EQ(out.Text(), "1234");
}

TEST(AsciiToHexStr, WritesUpperCaseForMutableInput) {
  char in[] = {'\x00', '\xAB', '\xFF'};
  ExactBuffer out(6);
  EXPECT_EQ(AsciiToHexStr(in, 3, out.Chars(), 6), 6);
  EXPECT_EQ(out.Text(), "00ABFF");
}

TEST(AsciiToHexStr, WritesLowerCaseAndATerminatorForConstantInput) {
  const char in[] = {'\x00', '\xAB', '\xFF'};
  ExactBuffer out(7);
  EXPECT_EQ(AsciiToHexStr(in, 3, out.Chars(), 6), 6);
  EXPECT_EQ(out.Text(), std::string("00abff\0", 7));
}

TEST(AsciiToHexStr, WritesNoTerminatorWhenNothingIsConverted) {
  const char in[] = {'\x11'};
  ExactBuffer out(1);
  EXPECT_EQ(AsciiToHexStr(in, 1, out.Chars(), 0), 0);
  EXPECT_EQ(AsciiToHexStr(in, 0, out.Chars(), 1), 0);
  EXPECT_EQ(out.Content(), ByteVector{kUntouched});
}

TEST(CxxLinkage, OverloadPairAndMinCanBeNamedByTheirTypes) {
  using Mutable = int (*)(char*, int, char*, int);
  using Constant = int (*)(const char*, int, char*, int);
  const Mutable upper = &AsciiToHexStr;
  const Constant lower = &AsciiToHexStr;
  EXPECT_NE(reinterpret_cast<void*>(upper), reinterpret_cast<void*>(lower));
  const auto minimum = static_cast<int (*)(int, int)>(&::min);
  EXPECT_EQ(minimum(-3, 2), -3);
  EXPECT_EQ(minimum(2, -3), -3);
  EXPECT_EQ(minimum(7, 7), 7);
}

TEST(GetHexStr, WritesEachNibblePlus0x30) {
  EXPECT_EQ(Text(GetHexStr, {0xAB}), ":;");
  EXPECT_EQ(Text(GetHexStr, {0x01, 0x23, 0x45, 0x67, 0x89, 0xCD, 0xEF}), "0123456789<=>?");
}

TEST(HexAsc1Split, ConvertsAllOrNothing) {
  ExactBuffer in(ByteVector{1, 2, 3});
  for (const auto convert : {&HexAsc1Split, &SplitChar}) {
    ExactBuffer out(6);
    EXPECT_EQ(convert(in.Bytes(), 3, out.Chars(), 5), 0);
    EXPECT_EQ(out.Content(), ByteVector(6, kUntouched));
    EXPECT_EQ(convert(in.Bytes(), 3, out.Chars(), 6), 6);
    EXPECT_EQ(out.Text(), "010203");
  }
}

TEST(HexAsc1Split, RefusesNull) {
  ExactBuffer in(ByteVector{1});
  ExactBuffer out(2);
  for (const auto convert : {&HexAsc1Split, &SplitChar}) {
    EXPECT_EQ(convert(nullptr, 1, out.Chars(), 2), 0);
    EXPECT_EQ(convert(in.Bytes(), 1, nullptr, 2), 0);
  }
  EXPECT_EQ(out.Content(), ByteVector(2, kUntouched));
}

TEST(GetAsciStr, JoinsPairsOfSplitForm) {
  EXPECT_EQ(Joined(GetAsciStr, ":;"), ByteVector{0xAB});
  EXPECT_EQ(Joined(GetAsciStr, "0123456789<=>?"), (ByteVector{0x01, 0x23, 0x45, 0x67, 0x89, 0xCD, 0xEF}));
}

TEST(GetAsciStr, PairsTheLastCharacterOfAnOddLengthWithAZero) {
  EXPECT_EQ(Joined(GetAsciStr, "012"), (ByteVector{0x01, 0xF0}));
}

TEST(HexAsc1Merge, TakesTheSecondCharacterAsADifference) {
  EXPECT_EQ(Joined(HexAsc1Merge, "4G"), ByteVector{0x57});
}

TEST(Merge, TakesLowNibblesOnly) {
  EXPECT_EQ(Joined(Merge, "4G"), ByteVector{0x47});
  EXPECT_EQ(Joined(Merge, "tW\xF1\xE2"), (ByteVector{0x47, 0x12}));
}

TEST(HexAsc1Merge, RefusesNullAndTooSmallAnOutput) {
  ExactBuffer in("010203");
  for (const auto convert : {&HexAsc1Merge, &Merge}) {
    ExactBuffer out(3);
    EXPECT_EQ(convert(nullptr, 6, out.Bytes(), 3), 0);
    EXPECT_EQ(convert(in.Chars(), 6, nullptr, 3), 0);
    EXPECT_EQ(convert(in.Chars(), 6, out.Bytes(), 2), 0);
    EXPECT_EQ(convert(in.Chars(), 5, out.Bytes(), 2), 0);
    EXPECT_EQ(out.Content(), ByteVector(3, kUntouched));
    EXPECT_EQ(convert(in.Chars(), 6, out.Bytes(), 3), 3);
    EXPECT_EQ(out.Content(), (ByteVector{1, 2, 3}));
  }
}

TEST(HexStrToAscii, TakesEitherCase) {
  EXPECT_EQ(Joined(HexStrToAscii, "00abFFaBc9"), (ByteVector{0x00, 0xAB, 0xFF, 0xAB, 0xC9}));
  EXPECT_EQ(Joined(GetAsciString, "00abFFaBc9"), (ByteVector{0x00, 0xAB, 0xFF, 0xAB, 0xC9}));
}

TEST(HexStrToAscii, LastDigitOfAnOddLengthGivesDigitTimes16Minus0x30) {
  EXPECT_EQ(Joined(HexStrToAscii, "121"), (ByteVector{0x12, 0xE0}));
  EXPECT_EQ(Joined(HexStrToAscii, "9"), ByteVector{0x60});
  EXPECT_EQ(Joined(HexStrToAscii, "f"), ByteVector{0xC0});
}

TEST(HexToBCD, TurnsSplitFormIntoUpperCaseHexadecimal) {
  EXPECT_EQ(Recoded(HexToBCD, ":;"), "AB");
  EXPECT_EQ(Recoded(HexToBCD, "<=0?"), "CD0F");
  EXPECT_EQ(Recoded(HexToBCD, ""), "");
}

TEST(BCDToHex, TurnsHexadecimalIntoSplitForm) {
  EXPECT_EQ(Recoded(BCDToHex, "ab"), ":;");
  EXPECT_EQ(Recoded(BCDToHex, "CD0f"), "<=0?");
  EXPECT_EQ(Recoded(BCDToHex, "1"), ">0");
}

TEST(HexToAscii, WritesUpperCaseAndATerminator) {
  ExactBuffer in(ByteVector{0x00, 0xAB, 0xFF});
  ExactBuffer out(7);
  EXPECT_EQ(HexToAscii(in.Bytes(), 3, out.Chars()), 6);
  EXPECT_EQ(out.Text(), std::string("00ABFF\0", 7));
}

TEST(HexToAscii, WritesATerminatorAloneForNoInput) {
  ExactBuffer in(std::size_t{0});
  ExactBuffer out(1);
  EXPECT_EQ(HexToAscii(in.Bytes(), 0, out.Chars()), 0);
  EXPECT_EQ(out.Content(), ByteVector{0});
}

struct StopCase {
  const char* text;
  ByteVector bytes;
};

TEST(AsciiToHex, StopsAtTheFirstCharacterThatIsNoDigit) {
  const StopCase cases[] = {{"12zz34", {0x12}},
                            {"123z45", {0x12}},
                            {"z234", {}},
                            {"1", {}},
                            {"12aBcD", {0x12, 0xAB, 0xCD}},
                            {"12:034", {0x12}},
                            {"12@034", {0x12}},
                            {"12G034", {0x12}},
                            {"12`034", {0x12}},
                            {"12g034", {0x12}},
                            {"12/034", {0x12}},
                            {"123", {0x12}},
                            {"", {}}};
  for (const StopCase& test : cases) {
    SCOPED_TRACE(test.text);
    ExactBuffer in{std::string_view(test.text)};
    ExactBuffer out(in.Content().size() / 2);
    EXPECT_EQ(AsciiToHex(in.Chars(), in.Size(), out.Bytes()), static_cast<int>(test.bytes.size()));
    EXPECT_EQ(out.Content(), WithRestUntouched(test.bytes, in.Content().size() / 2));
  }
}

TEST(GetXorValue, FoldsTheBytesIntoTheSeed) {
  const unsigned char data[] = {0x01, 0x02, 0x03};
  EXPECT_EQ(GetXorValue(0, data, 3), 0);
  EXPECT_EQ(GetXorValue(0xFF, data, 3), 0xFF);
  EXPECT_EQ(GetXorValue(0x10, data, 1), 0x11);
  EXPECT_EQ(GetXorValue(0x42, data, 0), 0x42);
  EXPECT_EQ(GetXorValue(0x42, nullptr, 0), 0x42);
}

TEST(SplitData, CopiesWhatPrecedesTheDelimiterAndReturnsTheDelimiter) {
  const char src[] = "AB|CD|EF";
  ExactBuffer dst(2);
  EXPECT_EQ(SplitData(src, dst.Chars(), "|"), src + 2);
  EXPECT_EQ(dst.Text(), "AB");
}

TEST(SplitData, FindsADelimiterOfSeveralCharacters) {
  const char src[] = "A#B##C";
  ExactBuffer dst(3);
  EXPECT_EQ(SplitData(src, dst.Chars(), "##"), src + 3);
  EXPECT_EQ(dst.Text(), "A#B");
}

TEST(SplitData, CopiesAllAndReturnsTheTextWithoutADelimiter) {
  const char src[] = "ABCD";
  ExactBuffer dst(5);
  EXPECT_EQ(SplitData(src, dst.Chars(), "|"), src);
  EXPECT_EQ(dst.Text(), std::string("ABCD\0", 5));
}

TEST(SplitData, CopiesNothingForADelimiterAtTheStart) {
  const char src[] = "|CD";
  ExactBuffer dst(3);
  EXPECT_EQ(SplitData(src, dst.Chars(), "|"), src);
  EXPECT_EQ(dst.Content(), ByteVector(3, kUntouched));
}

TEST(SplitData, OnlyFindsWithoutADestination) {
  const char src[] = "AB|CD";
  EXPECT_EQ(SplitData(src, nullptr, "|"), src + 2);
  EXPECT_EQ(SplitData(src, nullptr, "!"), src);
}

TEST(SplitData, WalksThroughAListOfFields) {
  const char* rest = "1|22||4";
  std::vector<std::string> fields;
  for (;;) {
    char field[16] = {};
    const char* found = SplitData(rest, field, "|");
    fields.emplace_back(field);
    if (found == rest && *rest != '|') break;
    rest = found + 1;
  }
  EXPECT_EQ(fields, (std::vector<std::string>{"1", "22", "", "4"}));
}

}  // namespace
}  // namespace gwq::test
