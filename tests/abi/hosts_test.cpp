// SPDX-License-Identifier: MIT
// Hosts of other kinds: written in C and linked against the library, or with names that collide with its own.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>

#include "abi/programs.h"
#include "support/temp_dir.h"

namespace gwq::test {
namespace {

namespace fs = std::filesystem;

// The host's own lines, without those of the load and unload hooks.
std::string OwnLines(const std::string& output) {
  std::string own;
  for (const std::string& line : Lines(output)) {
    const bool is_hook =
        line.starts_with("openfile [") || line.starts_with("sz") || line.starts_with("------");
    if (!is_hook) own += line + "\n";
  }
  return own;
}

std::string CountOf(const char* table) {
  return std::to_string(Lines(ReadFile(fs::path(GWQ_TABLES) / table)).size());
}

TEST(HostInC, NamesEverythingAndSharesTheData) {
  const Outcome outcome = RunHost({HOST_IN_C});
  EXPECT_EQ(outcome.exit_status, 0);
  EXPECT_EQ(OwnLines(outcome.standard_output), "functions " + CountOf("c_functions.txt") + " data " +
                                                   CountOf("c_data.txt") +
                                                   "\nversion " GWQ_VERSION
                                                   "\nMerge 1 47\ng_CancelWrite 0\ng_CancelWrite 1\n"
                                                   "status GWQ_NO_FILE: 文件不存在。\nCheckDeviceId 1\n");
}

TEST(HostInCxx, NamesWhatOnlyCxxCanCall) {
  const Outcome outcome = RunHost({HOST_IN_CXX});
  EXPECT_EQ(outcome.exit_status, 0);
  EXPECT_EQ(OwnLines(outcome.standard_output),
            "functions " + CountOf("cxx_function_table.h") + "\nmin -2\nAsciiToHexStr 2 4f\n");
}

TEST(HostInC, SeesTheLibraryLoadBeforeItRunsAndUnloadAfterwards) {
  const auto lines = Lines(RunHost({HOST_IN_C}).standard_output);
  const auto at = [&lines](const std::string& line) { return std::find(lines.begin(), lines.end(), line); };
  ASSERT_NE(at("------dlopen OK------"), lines.end());
  EXPECT_LT(at("------dlopen OK------"), at("CheckDeviceId 1"));
  ASSERT_FALSE(lines.empty());
  EXPECT_EQ(lines.back(), "------dlclose OK------");
}

TEST(HostOfCjson, HasItFromThisLibraryAlone) {
  const Outcome outcome = RunHost({HOST_OF_CJSON});
  EXPECT_EQ(outcome.exit_status, 0);
  const std::string used = "last 3 text {\"rating\":[1,2,3]}\n";
  EXPECT_EQ(OwnLines(outcome.standard_output),
            used + "without hooks none\n" + used +
                "own names counted\nthe library counted\nlibcjson counted\n" + used +
                "hooks taken back none\n");
}

TEST(HostWithTheSameNames, DoesNotDisturbTheLibrary) {
  const TempDir directory;
  const fs::path library = directory / "libgwq.so";
  fs::copy_file(GWQ_LIBRARY, library);
  WriteFile(directory / "GWQ_LOG.ini", "[Gwq]\nLog=1\n");
  const Outcome outcome = RunHost({HOST_WITH_SAME_NAMES, library});
  EXPECT_EQ(outcome.exit_status, 0);
  const std::string& output = outcome.standard_output;
  const std::string load = "DelOutTimeLogFile\nszIniPath=" + (directory / "GWQ_LOG.ini").string() +
                           "\nszLogFlag=1\n------dlopen OK------\nlog in " +
                           (directory / "Log/Gwq_Volkarn/VK_").string();
  EXPECT_EQ(output.substr(0, load.size()), load);
  const std::string use =
      "BCDToHex 2 :;\nHexAsc1Merge 1 57\nSplitChar 2 57\nTransProc -3\nDEV_CommCall -3 VOLK\ncJSON_Print "
      "[1]\n"
      "------dlclose OK------\nintrusions 0\nthe host's Merge was called\n";
  EXPECT_EQ(output.substr(output.find("BCDToHex")), use);
}

}  // namespace
}  // namespace gwq::test
