// SPDX-License-Identifier: MIT
// Trimming white space, and what the trim functions insist on.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include <gwq/diag/Rwini.h>
#include "support/bytes.h"
#include "support/named.h"

namespace gwq::test {
namespace {

struct TrimCase {
  const char* input;
  const char* left;
  const char* right;
  const char* both;
};

std::string NameOf(const TrimCase& each) {
  return Readable(BytesOf(each.input));
}

class Trim : public testing::TestWithParam<TrimCase> {
 protected:
  using Function = char* (*)(char*, const char*);

  static void Expect(Function trim, const char* expected) {
    char out[64];
    std::memset(out, 'x', sizeof out);
    EXPECT_EQ(trim(out, GetParam().input), out);
    EXPECT_STREQ(out, expected);
    EXPECT_EQ(out[std::strlen(GetParam().input) + 1], 'x') << "written too far";
  }
};

TEST_P(Trim, CutsWhatItIsNamedFor) {
  Expect(&l_trim, GetParam().left);
  Expect(&r_trim, GetParam().right);
  Expect(&a_trim, GetParam().both);
}

INSTANTIATE_TEST_SUITE_P(Rwini, Trim,
                         testing::Values(TrimCase{"", "", "", ""}, TrimCase{"a", "a", "a", "a"},
                                         TrimCase{"  a b  ", "a b  ", "  a b", "a b"},
                                         TrimCase{" \t\r\n\v\fx\f\v\n\r\t ", "x\f\v\n\r\t ", " \t\r\n\v\fx",
                                                  "x"},
                                         TrimCase{"   ", "", "", ""}, TrimCase{"\n", "", "", ""},
                                         TrimCase{"\xA0 \x85", "\xA0 \x85", "\xA0 \x85", "\xA0 \x85"}),
                         [](const auto& each) { return "Case" + std::to_string(each.index); });

// Each line: the function, the arguments, the assertion that must fail first.
TEST(TrimDeathTest, LeftTrimInsistsOnInputThenOutputThenTwoBuffers) {
  char out[8] = "";
  EXPECT_DEATH(l_trim(out, nullptr), "Rwini.*l_trim.*szInput != NULL");
  EXPECT_DEATH(l_trim(nullptr, nullptr), "Rwini.*l_trim.*szInput != NULL");
  EXPECT_DEATH(l_trim(nullptr, "x"), "Rwini.*l_trim.*szOutput != NULL");
  EXPECT_DEATH(l_trim(out, out), "Rwini.*l_trim.*szOutput != szInput");
}

TEST(TrimDeathTest, RightTrimInsistsOnInputThenOutputThenTwoBuffers) {
  char out[8] = "";
  EXPECT_DEATH(r_trim(out, nullptr), "Rwini.*r_trim.*szInput != NULL");
  EXPECT_DEATH(r_trim(nullptr, nullptr), "Rwini.*r_trim.*szInput != NULL");
  EXPECT_DEATH(r_trim(nullptr, "x"), "Rwini.*r_trim.*szOutput != NULL");
  EXPECT_DEATH(r_trim(out, out), "Rwini.*r_trim.*szOutput != szInput");
}

TEST(TrimDeathTest, TrimInsistsOnInputThenOutput) {
  char out[8] = "";
  EXPECT_DEATH(a_trim(out, nullptr), "Rwini.*a_trim.*szInput != NULL");
  EXPECT_DEATH(a_trim(nullptr, nullptr), "Rwini.*a_trim.*szInput != NULL");
  EXPECT_DEATH(a_trim(nullptr, "x"), "Rwini.*a_trim.*szOutput != NULL");
  // It has no check of its own that the two differ, but begins with l_trim.
  EXPECT_DEATH(a_trim(out, out), "Rwini.*l_trim.*szOutput != szInput");
}

TEST(TrimDeathTest, TheMessageIsTheStandardOne) {
  EXPECT_DEATH(l_trim(nullptr, nullptr), "Rwini[^:]*:[0-9]+: .*l_trim.*: Assertion `szInput != NULL' failed");
}

}  // namespace
}  // namespace gwq::test
