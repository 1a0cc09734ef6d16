// SPDX-License-Identifier: MIT
// What the library exports: the library file, the headers and the baseline agree.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <regex>
#include <set>
#include <string>

#include "abi/programs.h"
#include "support/temp_dir.h"

namespace gwq::test {
namespace {

namespace fs = std::filesystem;
using Names = std::set<std::string>;

const fs::path kSource = fs::path(GWQ_SOURCE_DIR) / "src";

Names Without(const Names& left, const Names& right) {
  Names rest;
  std::set_difference(left.begin(), left.end(), right.begin(), right.end(), std::inserter(rest, rest.end()));
  return rest;
}

void ExpectSame(const Names& expected, const std::string& expected_in, const Names& actual,
                const std::string& actual_in) {
  EXPECT_FALSE(actual.empty());
  for (const auto& name : Without(expected, actual)) {
    ADD_FAILURE() << "- " << name << "  is in " << expected_in << ", not in " << actual_in;
  }
  for (const auto& name : Without(actual, expected)) {
    ADD_FAILURE() << "+ " << name << "  is in " << actual_in << ", not in " << expected_in;
  }
}

// cJSON's functions are exported as well, whichever the libcjson at hand has.
Names WithoutCjson(Names names) {
  std::erase_if(names, [](const std::string& name) { return name.starts_with("cJSON_"); });
  return names;
}

// The list that is made from the headers, each signature of which the hosts' compilers confirm.
Names InHeaders() {
  const auto lines = Lines(ReadFile(GWQ_EXPORTS));
  return {lines.begin(), lines.end()};
}

// "0000000000004a10 T AsciiToHex"
Names DefinedIn(const char* library) {
  const Outcome nm = RunProgram({GWQ_NM, "-D", "--defined-only", "--demangle", library});
  EXPECT_EQ(nm.exit_status, 0);
  Names names;
  for (const std::string& line : Lines(nm.standard_output)) names.insert(line.substr(line.find(' ') + 3));
  return names;
}

// Mangled, and cJSON's.
Names InBaseline() {
  const std::string baseline = ReadFile(fs::path(GWQ_SOURCE_DIR) / "tests/abi/baseline.abi");
  const std::regex symbol("<elf-symbol name='([^']*)'");
  Names names;
  for (std::sregex_iterator at(baseline.begin(), baseline.end(), symbol); at != std::sregex_iterator();
       ++at) {
    names.insert((*at)[1]);
  }
  return names;
}

Names PublicHeaders() {
  Names headers;
  const std::string list = GWQ_HEADERS;
  const std::regex comma(",");
  for (std::sregex_token_iterator at(list.begin(), list.end(), comma, -1); at != std::sregex_token_iterator();
       ++at) {
    headers.insert(*at);
  }
  return headers;
}

TEST(Exports, OfTheLibraryAreWhatTheHeadersDeclare) {
  ExpectSame(InHeaders(), "the headers", WithoutCjson(DefinedIn(GWQ_LIBRARY)), "the library");
}

// Also where types are not compared with it (abi.keeps_what_the_baseline_promises).
TEST(Exports, HoldAllThatTheBaselinePromises) {
  const Outcome nm = RunProgram({GWQ_NM, "-D", "--defined-only", GWQ_LIBRARY});
  Names names;
  for (const std::string& line : Lines(nm.standard_output)) names.insert(line.substr(line.rfind(' ') + 1));
  const Names promised = InBaseline();
  EXPECT_GT(promised.size(), 200U);
  for (const auto& name : Without(promised, names)) ADD_FAILURE() << name << " is promised, but not exported";
}

TEST(Exports, HoldEveryFunctionOfLibcjsonAndNoOther) {
  const Names cjsons = DefinedIn(GWQ_CJSON_LIBRARY);
  EXPECT_GT(cjsons.size(), 70U);
  const Names all = DefinedIn(GWQ_LIBRARY);
  ExpectSame(cjsons, "libcjson", Without(all, WithoutCjson(all)), "the library");
}

TEST(Exports, HaveNoVersionAndNoUniqueOrWeakSymbol) {
  const Outcome nm = RunProgram({GWQ_NM, "-D", "--defined-only", GWQ_LIBRARY});
  for (const std::string& line : Lines(nm.standard_output)) {
    EXPECT_TRUE(std::regex_match(line, std::regex(R"([0-9a-f]+ [TBDR] \w+)"))) << line;
  }
}

TEST(Exports, HavePlainCNamesButForTheThreeOfCxxLinkage) {
  const Outcome nm = RunProgram({GWQ_NM, "-D", "--defined-only", GWQ_LIBRARY});
  Names mangled;
  for (const std::string& line : Lines(nm.standard_output)) {
    const std::string name = line.substr(line.rfind(' ') + 1);
    if (name.starts_with("_Z")) mangled.insert(name);
  }
  EXPECT_EQ(mangled, (Names{"_Z13AsciiToHexStrPKciPci", "_Z13AsciiToHexStrPciS_i", "_Z3minii"}));
}

TEST(PublicHeaders, AreAllThatDeclareSomethingExportedAndFourOthers) {
  Names declaring{"gwq.h", "links/end_of_read.h", "status.h", "status_codes.h"};
  for (const auto& entry : fs::recursive_directory_iterator(kSource)) {
    if (entry.path().extension() != ".h") continue;
    if (ReadFile(entry.path()).find("GWQ_API ") == std::string::npos) continue;
    declaring.insert(fs::relative(entry.path(), kSource).string());
  }
  ExpectSame(declaring, "src", PublicHeaders(), "GWQ_PUBLIC_HEADERS");
}

TEST(PublicHeaders, AreAllIncludedByTheUmbrellaButTheAdditions) {
  const std::string umbrella = ReadFile(kSource / "gwq.h");
  for (const std::string& header : PublicHeaders()) {
    if (header == "gwq.h" || header == "export.h" || header == "extra.h") continue;
    EXPECT_NE(umbrella.find("#include <gwq/" + header + ">"), std::string::npos) << header;
  }
}

TEST(PublicHeaders, IncludeNothingOfTheLibrarysOwnAffairs) {
  const Names headers = PublicHeaders();
  const std::regex include(R"re(#include (?:"|<gwq/)([^">]+)[">])re");
  for (const std::string& header : headers) {
    const std::string text = ReadFile(kSource / header);
    for (std::sregex_iterator at(text.begin(), text.end(), include); at != std::sregex_iterator(); ++at) {
      EXPECT_TRUE(headers.contains((*at)[1])) << header << " includes " << (*at)[1];
    }
  }
}

}  // namespace
}  // namespace gwq::test
