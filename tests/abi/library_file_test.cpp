// The library file itself: names, links, what it needs, and what it gives away.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <regex>
#include <set>
#include <string>

#include "abi/programs.h"
#include "support/temp_dir.h"

namespace gwq::test {
namespace {

namespace fs = std::filesystem;
using Names = std::set<std::string>;

// The bracketed values of one kind of entry in the dynamic section.
Names Dynamic(const std::string& kind) {
  const Outcome readelf = RunProgram({GWQ_READELF, "-d", GWQ_LIBRARY});
  EXPECT_EQ(readelf.exit_status, 0);
  const std::regex entry("\\(" + kind + R"re(\).*\[(.*)\])re");
  Names values;
  for (const std::string& line : Lines(readelf.standard_output)) {
    std::smatch match;
    if (std::regex_search(line, match, entry)) values.insert(match[1]);
  }
  return values;
}

TEST(LibraryFile, IsFoundThroughItsLinks) {
  const fs::path link = GWQ_LINKER_NAME;
  ASSERT_EQ(link.filename(), "libgwq.so");
  ASSERT_TRUE(fs::is_symlink(link));
  EXPECT_EQ(fs::read_symlink(link), "libgwq.so.1");
  EXPECT_EQ(fs::read_symlink(link.parent_path() / "libgwq.so.1"), "libgwq.so." GWQ_VERSION);
  EXPECT_TRUE(fs::is_regular_file(link.parent_path() / "libgwq.so." GWQ_VERSION));
  EXPECT_FALSE(fs::is_symlink(link.parent_path() / "libgwq.so." GWQ_VERSION));
}

TEST(LibraryFile, CarriesItsMajorVersionAsSoname) {
  EXPECT_EQ(Dynamic("SONAME"), Names{"libgwq.so.1"});
}

TEST(LibraryFile, NeedsLibusbCjsonAndTheCLibraryOnly) {
  if (GWQ_SANITIZED) GTEST_SKIP() << "a sanitizer needs libraries of its own";
  Names needed = Dynamic("NEEDED");
  for (const char* name : {"libusb-1.0.so.0", "libcjson.so.1", "libc.so.6"}) {
    EXPECT_EQ(needed.erase(name), 1U) << name << " is missing";
  }
  std::erase_if(needed, [](const std::string& name) { return name.starts_with("ld-linux"); });
  EXPECT_EQ(needed, Names{});
}

TEST(LibraryFile, SearchesNoDirectoryOfItsOwn) {
  EXPECT_EQ(Dynamic("RUNPATH"), Names{});
  EXPECT_EQ(Dynamic("RPATH"), Names{});
}

// What readelf says of a file in all.
std::string Readelf(const std::string& option, const std::string& file) {
  const Outcome readelf = RunProgram({GWQ_READELF, "-W", option, file});
  EXPECT_EQ(readelf.exit_status, 0) << file;
  return readelf.standard_output;
}

// The line of a program header; empty when there is none.
std::string Segment(const std::string& file, const std::string& name) {
  for (const std::string& line : Lines(Readelf("-l", file))) {
    if (line.find(name + " ") != std::string::npos) return line;
  }
  return {};
}

class HardenedFile : public testing::TestWithParam<std::string> {};

TEST_P(HardenedFile, HasNoExecutableStack) {
  const std::string stack = Segment(GetParam(), "GNU_STACK");
  EXPECT_NE(stack.find(" RW "), std::string::npos) << stack;
  EXPECT_EQ(stack.find("RWE"), std::string::npos) << stack;
}

TEST_P(HardenedFile, HasItsTablesReadOnlyBeforeItRuns) {
  if (GWQ_SANITIZED) GTEST_SKIP() << "not in a sanitizer's build";
  EXPECT_NE(Segment(GetParam(), "GNU_RELRO"), "");
  EXPECT_NE(Readelf("-d", GetParam()).find("BIND_NOW"), std::string::npos);
}

TEST_P(HardenedFile, IsPositionIndependent) {
  EXPECT_NE(Readelf("-h", GetParam()).find("DYN ("), std::string::npos);
}

TEST_P(HardenedFile, GuardsItsStack) {
  if (GWQ_SANITIZED) GTEST_SKIP() << "not in a sanitizer's build";
  EXPECT_NE(Readelf("--dyn-syms", GetParam()).find("__stack_chk_fail"), std::string::npos);
}

TEST_P(HardenedFile, ChecksCopiesAgainstTheirBuffers) {
  if (!GWQ_FORTIFIED) GTEST_SKIP() << "in an optimised build only";
  EXPECT_TRUE(std::regex_search(Readelf("--dyn-syms", GetParam()), std::regex("__[a-z]+_chk@")));
}

// The mark of the whole file is lost by one object without it, such as the C library's start files; so the code is
// looked at.
TEST_P(HardenedFile, MarksWhereJumpsMayLand) {
  if (GWQ_SANITIZED) GTEST_SKIP() << "not in a sanitizer's build";
  const Outcome objdump = RunProgram({GWQ_OBJDUMP, "-d", "--section=.text", GetParam()});
  ASSERT_EQ(objdump.exit_status, 0);
  const std::regex landing("\\s(endbr64|paciasp|bti\\s+c)\\b");
  const auto lines = Lines(objdump.standard_output);
  const auto landings = std::count_if(
      lines.begin(), lines.end(), [&](const std::string& line) { return std::regex_search(line, landing); });
  EXPECT_GT(landings, 100);
}

INSTANTIATE_TEST_SUITE_P(, HardenedFile, testing::Values(GWQ_HARDENED_FILES),
                         [](const auto& file) { return file.index == 0 ? "Library" : "Terminal"; });

TEST(LibraryFile, HoldsNoPathOfTheBuildingMachine) {
  if (GWQ_SANITIZED) GTEST_SKIP() << "a sanitizer's messages name source files";
  const std::string content = ReadFile(GWQ_LIBRARY);
  ASSERT_GT(content.size(), 10'000U);
  EXPECT_EQ(content.find(GWQ_SOURCE_DIR), std::string::npos);
  EXPECT_EQ(content.find(GWQ_BINARY_DIR), std::string::npos);
}

}  // namespace
}  // namespace gwq::test
