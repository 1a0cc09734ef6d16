// SPDX-License-Identifier: MIT
// The library file itself: names, links, what it needs, and what it gives away.
#include <gtest/gtest.h>

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

// One range check that the compiler keeps would bring it in, with an initialiser that runs after
// the load hook.
TEST(LibraryFile, HoldsNothingOfTheCxxRuntime) {
  if (!GWQ_FORTIFIED) GTEST_SKIP() << "in an optimised build only";
  const std::string symbols = Readelf("--symbols", GWQ_LIBRARY);
  ASSERT_NE(symbols.find("OnLoad"), std::string::npos);
  EXPECT_EQ(symbols.find("__cxa_throw"), std::string::npos);
}

// Compiled as the library is: the C library grants level 3 only to compilers that can measure
// buffers at run time.
#if GWQ_FORTIFIED
static_assert(__USE_FORTIFY_LEVEL == 3);
#endif

TEST(LibraryFile, HoldsNoPathOfTheBuildingMachine) {
  if (GWQ_SANITIZED) GTEST_SKIP() << "a sanitizer's messages name source files";
  const std::string content = ReadFile(GWQ_LIBRARY);
  ASSERT_GT(content.size(), 10'000U);
  EXPECT_EQ(content.find(GWQ_SOURCE_DIR), std::string::npos);
  EXPECT_EQ(content.find(GWQ_BINARY_DIR), std::string::npos);
}

}  // namespace
}  // namespace gwq::test
