// SPDX-License-Identifier: MIT
// The two character tables and what is made of them, against the platform's own mapping.
#include <gtest/gtest.h>

#include <iterator>
#include <map>
#include <sstream>

#include <gwq/codec/encodings.h>
#include "codec/internal/gbk_text.h"
#include "support/iconv_text.h"

namespace gwq::test {
namespace {

constexpr unsigned kFirstPair = 0x8140;
constexpr unsigned kLastPair = 0xFE9F;

std::string Pair(unsigned code) {
  return {static_cast<char>(code >> 8U), static_cast<char>(code & 0xFFU)};
}

// The one UCS-2 character of a text in UCS-2, high byte first; 0 for anything else.
unsigned OneCharacter(const std::optional<std::string>& text) {
  if (!text || text->size() != 2) return 0;
  return static_cast<unsigned char>(text->at(0)) * 256U + static_cast<unsigned char>(text->at(1));
}

TEST(GbkTables, BoundsAndSizesAreThoseOfTheStandard) {
  EXPECT_EQ(gbk_first_code, 0x8140);
  EXPECT_EQ(gbk_last_code, 0xFE9F);
  EXPECT_EQ(unicode_buf_size, 32096);
  EXPECT_EQ(std::size(unicodeTables), 32096U);
  EXPECT_EQ(gbk_last_code - gbk_first_code + 1, unicode_buf_size);
  EXPECT_EQ(unicode_first_code, 0x4E00);
  EXPECT_EQ(unicode_last_code, 0x9FA5);
  EXPECT_EQ(gbk_buf_size, 20902);
  EXPECT_EQ(std::size(gbkTables), 20902U);
  EXPECT_EQ(unicode_last_code - unicode_first_code + 1, gbk_buf_size);
}

TEST(GbkTables, KnownCharactersStandWhereTheyBelong) {
  EXPECT_EQ(unicodeTables[0], 0x4E02);
  EXPECT_EQ(gbkTables[0], 0xD2BB) << "U+4E00";
  EXPECT_EQ(gbkTables[0x9FA5 - 0x4E00], 0xFD9B);
  EXPECT_EQ(unicodeTables[0xB0A1 - 0x8140], 0x554A) << "the first of the common characters";
  EXPECT_EQ(unicodeTables[0xA1A3 - 0x8140], 0x3002) << "the full stop";
}

TEST(GbkTables, EveryPairMeansWhatIconvSays) {
  const Iconv gbk("GBK", "UCS-2BE");
  const Iconv gb18030("GB18030", "UCS-2BE");
  for (unsigned code = kFirstPair; code <= kLastPair; ++code) {
    const unsigned in_gbk = OneCharacter(gbk(Pair(code)));
    const unsigned expected = in_gbk != 0 ? in_gbk : OneCharacter(gb18030(Pair(code)));
    ASSERT_EQ(unicodeTables[code - kFirstPair], expected) << std::hex << code;
  }
}

TEST(GbkTables, EveryIdeographHasIconvsPair) {
  const Iconv gbk("UCS-2BE", "GBK");
  const Iconv gb18030("UCS-2BE", "GB18030");
  for (unsigned point = 0x4E00; point <= 0x9FA5; ++point) {
    ASSERT_EQ(gbkTables[point - 0x4E00], OneCharacter(gbk(Pair(point)))) << std::hex << point;
    ASSERT_EQ(gbkTables[point - 0x4E00], OneCharacter(gb18030(Pair(point)))) << std::hex << point;
  }
}

TEST(GbkTables, IdeographsComeBackThroughBothTables) {
  for (unsigned point = 0x4E00; point <= 0x9FA5; ++point) {
    const unsigned code = gbkTables[point - 0x4E00];
    ASSERT_GE(code, kFirstPair) << std::hex << point;
    ASSERT_LE(code, kLastPair) << std::hex << point;
    ASSERT_EQ(unicodeTables[code - kFirstPair], point);
  }
}

// GB 18030 knows more pairs than GBK, but gives none of GBK's another meaning. What it adds is written to the
// test's record, for it grows with the platform.
TEST(GbkTables, Gb18030AddsPairsAndChangesNone) {
  const Iconv gbk("GBK", "UCS-2BE");
  const Iconv gb18030("GB18030", "UCS-2BE");
  std::map<unsigned, unsigned> changed;
  std::map<unsigned, unsigned> added;
  for (unsigned code = kFirstPair; code <= kLastPair; ++code) {
    const unsigned in_gbk = OneCharacter(gbk(Pair(code)));
    const unsigned in_gb18030 = OneCharacter(gb18030(Pair(code)));
    if (in_gbk != in_gb18030) (in_gbk != 0 ? changed : added)[code] = in_gb18030;
  }
  std::ostringstream list;
  list << std::hex << std::uppercase;
  for (const auto& [code, point] : added) list << code << '=' << point << ' ';
  RecordProperty("only_in_gb18030", list.str());
  RecordProperty("only_in_gb18030_count", static_cast<int>(added.size()));
  EXPECT_TRUE(changed.empty()) << "GBK " << std::hex << changed.begin()->first;
  EXPECT_EQ(added[0xA2E3], 0x20ACU) << "the euro sign";
  EXPECT_EQ(added[0xA8BF], 0x01F9U);
  EXPECT_EQ(unicodeTables[0xA2E3 - kFirstPair], 0x20AC);
}

TEST(GbkTables, PairsThatAreNoCharacterAreZero) {
  for (const unsigned code : {0x817FU, 0x81FFU, 0x8200U, 0x823FU, 0xFE3FU}) {
    EXPECT_EQ(unicodeTables[code - kFirstPair], 0) << std::hex << code;
  }
}

TEST(GbkText, IsWhatIconvMakesOfEveryTextOfTheLog) {
#define GWQ_EXPECT_SAME(text) EXPECT_EQ(std::string(Gbk(text).c_str()), InGbk(text)) << (text)
  GWQ_EXPECT_SAME("文件不存在");
  GWQ_EXPECT_SAME("[MP_DownHeadFile]文件不存在");
  GWQ_EXPECT_SAME("文件不存在 szFilePath = %s");
  GWQ_EXPECT_SAME("文件不存在 szFilePathUTF8 = %s");
  GWQ_EXPECT_SAME("升级包类型错误");
  GWQ_EXPECT_SAME("升级包下载失败 nRet=%d");
  GWQ_EXPECT_SAME("升级包下载成功");
  GWQ_EXPECT_SAME("路径格式异常");
  GWQ_EXPECT_SAME("");
  GWQ_EXPECT_SAME("ASCII %s");
  GWQ_EXPECT_SAME("标点，。：“”（）和全角ＡＢ１２");
#undef GWQ_EXPECT_SAME
}

TEST(GbkText, FirstWordOfTheLogIsTheseBytes) {
  EXPECT_STREQ(Gbk("文件不存在").c_str(), "\xCE\xC4\xBC\xFE\xB2\xBB\xB4\xE6\xD4\xDA");
}

}  // namespace
}  // namespace gwq::test
