// SPDX-License-Identifier: MIT
// Looking up one value in an INI file.
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include <gwq/diag/Rwini.h>
#include "support/temp_dir.h"

namespace gwq::test {
namespace {

constexpr const char* kBefore = "before";

class Ini : public testing::Test {
 protected:
  // The value, or nothing when the result was -1; then the buffer must be untouched.
  std::optional<std::string> Lookup(const std::string& content, const char* section = "Gwq",
                                    const char* key = "Log") {
    WriteFile(directory_ / "test.ini", content);
    char value[100] = "before";
    const int result = GetProfileString((directory_ / "test.ini").c_str(), section, key, value);
    if (result == 0) return value;
    EXPECT_EQ(result, -1);
    EXPECT_STREQ(value, kBefore);
    return std::nullopt;
  }

  TempDir directory_;
};

using Value = std::optional<std::string>;

TEST_F(Ini, FindsAValueAndTrimsIt) {
  EXPECT_EQ(Lookup("[Gwq]\nLog=1\n"), Value("1"));
  EXPECT_EQ(Lookup("[Gwq]\nLog = 1\n"), Value("1"));
  EXPECT_EQ(Lookup("[Gwq]\nLog\t=\t1 \v\f\n"), Value("1"));
  EXPECT_EQ(Lookup("[Gwq]\nLog= a b\tc \n"), Value("a b\tc"));
}

TEST_F(Ini, NeedsNoLineEndAtTheEnd) {
  EXPECT_EQ(Lookup("[Gwq]\nLog=1"), Value("1"));
}

TEST_F(Ini, TakesCrLfLineEnds) {
  EXPECT_EQ(Lookup("[Gwq]\r\n\r\nOther=2\r\nLog=1\r\n"), Value("1"));
}

TEST_F(Ini, SkipsLeadingBlanksAndEmptyLines) {
  EXPECT_EQ(Lookup("\n \t\n  [Gwq]\n\n\t \n \t Log=1\n"), Value("1"));
}

TEST_F(Ini, LooksInTheNamedSectionOnly) {
  EXPECT_EQ(Lookup("[Other]\nLog=1\n[Gwq]\nOther=2\n"), std::nullopt);
  EXPECT_EQ(Lookup("[Other]\nLog=1\n[Gwq]\nLog=0\n"), Value("0"));
  EXPECT_EQ(Lookup("Log=1\n[Gwq]\n"), std::nullopt);
}

TEST_F(Ini, StopsAtTheNextSection) {
  EXPECT_EQ(Lookup("[Gwq]\n[Next]\nLog=1\n"), std::nullopt);
  EXPECT_EQ(Lookup("[Gwq]\nA=1\n  [Next]\n[Gwq]\nLog=1\n"), std::nullopt);
}

TEST_F(Ini, StopsAtTheSameSectionAgain) {
  EXPECT_EQ(Lookup("[Gwq]\n[Gwq]\nLog=1\n"), std::nullopt);
}

TEST_F(Ini, TakesCommentsInTheSection) {
  EXPECT_EQ(Lookup("[Gwq]\n#Log=1\nLog=0\n"), Value("0"));
  EXPECT_EQ(Lookup("[Gwq]\n  # Log=1\n"), std::nullopt);
  EXPECT_EQ(Lookup("[Gwq]\n#Log=1\n", "Gwq", "#Log"), std::nullopt);
}

TEST_F(Ini, TakesNoSemicolonAsAComment) {
  EXPECT_EQ(Lookup("[Gwq]\n;Log=1\n", "Gwq", ";Log"), Value("1"));
  EXPECT_EQ(Lookup("[Gwq]\nLog=1;2\n"), Value("1;2"));
}

TEST_F(Ini, TakesNoCommentBeforeTheSection) {
  EXPECT_EQ(Lookup("#[Gwq]\nLog=1\n"), std::nullopt);
}

TEST_F(Ini, TakesASectionFollowedByARemark) {
  EXPECT_EQ(Lookup("[Gwq] ; the driver\nLog=1\n"), Value("1"));
  EXPECT_EQ(Lookup("[Gwq]x\nLog=1\n"), Value("1"));
}

TEST_F(Ini, WantsTheWholeSectionNameInItsCase) {
  EXPECT_EQ(Lookup("[Gwqx]\nLog=1\n"), std::nullopt);
  EXPECT_EQ(Lookup("[xGwq]\nLog=1\n"), std::nullopt);
  EXPECT_EQ(Lookup("[Gw]\nLog=1\n"), std::nullopt);
  EXPECT_EQ(Lookup("[gwq]\nLog=1\n"), std::nullopt);
  EXPECT_EQ(Lookup("[ Gwq ]\nLog=1\n"), std::nullopt);
  EXPECT_EQ(Lookup("Gwq\nLog=1\n"), std::nullopt);
}

TEST_F(Ini, WantsTheWholeKeyInItsCase) {
  EXPECT_EQ(Lookup("[Gwq]\nlog=1\nLogs=2\nLo=3\nxLog=4\n"), std::nullopt);
}

TEST_F(Ini, EndsAKeyAtBarCaretBlankAndTab) {
  EXPECT_EQ(Lookup("[Gwq]\nLog|x=1\n"), Value("1"));
  EXPECT_EQ(Lookup("[Gwq]\nLog^x=1\n"), Value("1"));
  EXPECT_EQ(Lookup("[Gwq]\nLog x=1\n"), Value("1"));
  EXPECT_EQ(Lookup("[Gwq]\nLog\tx=1\n"), Value("1"));
}

TEST_F(Ini, SkipsLinesWithoutAnEqualsSign) {
  EXPECT_EQ(Lookup("[Gwq]\nLog\nLog 1\nLog=2\n"), Value("2"));
}

TEST_F(Ini, TakesTheFirstOfSeveralAndAllBehindTheFirstEqualsSign) {
  EXPECT_EQ(Lookup("[Gwq]\nLog=1\nLog=2\n"), Value("1"));
  EXPECT_EQ(Lookup("[Gwq]\nLog=a=b=c\n"), Value("a=b=c"));
}

TEST_F(Ini, AnEmptyValueIsFoundAndLeavesTheBuffer) {
  EXPECT_EQ(Lookup("[Gwq]\nLog=\n"), Value(kBefore));
  EXPECT_EQ(Lookup("[Gwq]\nLog="), Value(kBefore));
}

TEST_F(Ini, AValueOfBlanksStaysAsItIs) {
  EXPECT_EQ(Lookup("[Gwq]\nLog= \t \n"), Value(" \t "));
  EXPECT_EQ(Lookup("[Gwq]\r\nLog=\r\n"), Value("\r"));
}

TEST_F(Ini, TakesASectionNameOf29Characters) {
  const std::string name(29, 's');
  EXPECT_EQ(Lookup("[" + name + "]\nLog=1\n", name.c_str()), Value("1"));
  EXPECT_EQ(Lookup("[" + name + "s]\nLog=1\n", name.c_str()), std::nullopt);
}

TEST_F(Ini, NeverFindsASectionNameOf30Characters) {
  const std::string name(30, 's');
  EXPECT_EQ(Lookup("[" + name + "]\nLog=1\n", name.c_str()), std::nullopt);
}

TEST_F(Ini, TakesAKeyOf31Characters) {
  const std::string key(31, 'k');
  EXPECT_EQ(Lookup("[Gwq]\n" + key + "k=0\n" + key + "=1\n", "Gwq", key.c_str()), Value("1"));
}

TEST_F(Ini, NeverFindsAKeyOf32Characters) {
  const std::string key(32, 'k');
  EXPECT_EQ(Lookup("[Gwq]\n" + key + "=1\n", "Gwq", key.c_str()), std::nullopt);
}

TEST_F(Ini, ReadsALongLineInPiecesOf99Characters) {
  EXPECT_EQ(Lookup("[Gwq]\nLog=" + std::string(95, 'v') + "\n"), Value(std::string(95, 'v')));
  EXPECT_EQ(Lookup("[Gwq]\nLog=" + std::string(96, 'v') + "\n"), Value(std::string(95, 'v')));
  EXPECT_EQ(Lookup("[Gwq]\nLog=" + std::string(3000, 'v') + "\n"), Value(std::string(95, 'v')));
}

TEST_F(Ini, TakesEachPieceAsALine) {
  EXPECT_EQ(Lookup("[Gwq]\n#" + std::string(98, '-') + "Log=1\n"), Value("1"));
  EXPECT_EQ(Lookup("[Gwq]\n#" + std::string(97, '-') + "Log=1\n"), std::nullopt);
  EXPECT_EQ(Lookup(std::string(99, 'x') + "[Gwq]\n" + std::string(198, ' ') + "Log=1\n"), Value("1"));
}

TEST_F(Ini, FindsNothingInAnEmptyFileOrADirectory) {
  EXPECT_EQ(Lookup(""), std::nullopt);
  char value[100] = "before";
  EXPECT_EQ(GetProfileString(directory_.Path().c_str(), "Gwq", "Log", value), -1);
  EXPECT_STREQ(value, kBefore);
}

TEST_F(Ini, PrintsNothingForAFileThatIsThere) {
  testing::internal::CaptureStdout();
  Lookup("[Gwq]\nLog=1\n");
  Lookup("nothing");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST_F(Ini, PrintsWhyAFileCannotBeOpened) {
  const std::string path = (directory_ / "missing.ini").string();
  char value[100] = "before";
  testing::internal::CaptureStdout();
  EXPECT_EQ(GetProfileString(path.c_str(), "Gwq", "Log", value), -1);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "openfile [" + path + "] error [No such file or directory]\n");
  EXPECT_STREQ(value, kBefore);
}

TEST_F(Ini, SurvivesBinaryGarbage) {
  std::string garbage;
  for (int i = 0; i < 20'000; ++i) garbage += static_cast<char>((i * 7919) >> 3);
  EXPECT_EQ(Lookup(garbage), std::nullopt);
  EXPECT_EQ(Lookup("[Gwq]\n" + garbage), std::nullopt);
}

}  // namespace
}  // namespace gwq::test
