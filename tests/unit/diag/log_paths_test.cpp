// SPDX-License-Identifier: MIT
// Where the library believes its files to be.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <string>

#include <gwq/diag/log.h>
#include "support/log_capture.h"
#include "support/test_clock.h"

namespace gwq::test {
namespace {

namespace fs = std::filesystem;

std::time_t LocalTime(int year, int month, int day, int hour, int minute, int second) {
  std::tm local{};
  local.tm_year = year - 1900;
  local.tm_mon = month - 1;
  local.tm_mday = day;
  local.tm_hour = hour;
  local.tm_min = minute;
  local.tm_sec = second;
  local.tm_isdst = -1;
  return std::mktime(&local);
}

class LogPaths : public testing::Test {
 protected:
  ~LogPaths() override {
    PretendModuleIs("");
    ResetClock();
  }

  static std::string ModulePath() {
    char path[256];
    std::memset(path, 'x', sizeof path);
    GetModuleCurPath(path);
    return path;
  }

  static std::string FullPath(const char* name) {
    char path[1024];
    std::memset(path, 'x', sizeof path);
    const int length = GetFullPath(name, path, 0);
    EXPECT_EQ(length, static_cast<int>(std::strlen(path)));
    return path;
  }

  const LogCapture log_;
};

TEST_F(LogPaths, ModulePathIsTheDirectoryOfTheLibrarysFileWithItsSlash) {
  EXPECT_EQ(ModulePath(), ModuleDirectory().string() + "/");
  PretendModuleIs("/opt/bank/lib/libgwq.so.1");
  EXPECT_EQ(ModulePath(), "/opt/bank/lib/");
  PretendModuleIs("./libgwq.so");
  EXPECT_EQ(ModulePath(), "./");
  PretendModuleIs("/libgwq.so");
  EXPECT_EQ(ModulePath(), "/");
}

TEST_F(LogPaths, ModulePathIsTheCurrentDirectoryWhenTheLoaderTellsNone) {
  PretendModuleIs("libgwq.so");
  EXPECT_EQ(ModulePath(), "./");
}

TEST_F(LogPaths, FullPathIsModulePathAndNameWhateverTheSize) {
  PretendModuleIs("/opt/bank/libgwq.so");
  EXPECT_EQ(FullPath("GWQ_LOG.ini"), "/opt/bank/GWQ_LOG.ini");
  EXPECT_EQ(FullPath("Log/Gwq_Volkarn"), "/opt/bank/Log/Gwq_Volkarn");
  EXPECT_EQ(FullPath(""), "/opt/bank/");
  EXPECT_EQ(FullPath("%s%d"), "/opt/bank/%s%d");
}

TEST_F(LogPaths, ADirectoryOf255CharactersFitsAndALongerOneGivesEmptyPaths) {
  const std::string fits = "/" + std::string(253, 'd') + "/";
  PretendModuleIs(fits + "libgwq.so");
  EXPECT_EQ(ModulePath(), fits);
  EXPECT_EQ(FullPath(""), fits);
  EXPECT_EQ(FullPath("x"), fits + "x");
  PretendModuleIs("/d" + fits + "libgwq.so");
  EXPECT_EQ(ModulePath(), "");
  EXPECT_EQ(FullPath("GWQ_LOG.ini"), "");
}

TEST_F(LogPaths, ANameIsNotCutWhateverItsLength) {
  const std::string directory = "/" + std::string(200, 'd') + "/";
  PretendModuleIs(directory + "libgwq.so");
  for (const std::size_t length : {53U, 54U, 700U}) {
    const std::string name(length, 'n');
    EXPECT_EQ(FullPath(name.c_str()), directory + name);
  }
}

TEST_F(LogPaths, NullGivesNothing) {
  char path[256] = "kept";
  EXPECT_EQ(GetFullPath(nullptr, path, 0), 0);
  EXPECT_EQ(GetFullPath("name", nullptr, 0), 0);
  EXPECT_STREQ(path, "kept");
  GetModuleCurPath(nullptr);
  GetTempPath(0, nullptr);
}

TEST_F(LogPaths, LogPathIsTodaysFileAndItsDirectoriesAreMade) {
  SetTime(LocalTime(2024, 3, 5, 9, 41, 7));
  EXPECT_EQ(std::string(pGetLogPath()), (LogDirectory() / "VK_20240305.log").string());
  EXPECT_TRUE(fs::is_directory(LogDirectory()));
  EXPECT_TRUE(fs::is_empty(LogDirectory()));
}

TEST_F(LogPaths, LogPathStandsInOneBufferThatEachCallRewrites) {
  SetTime(LocalTime(2024, 3, 5, 12, 0, 0));
  const char* first = pGetLogPath();
  SetTime(LocalTime(2031, 12, 31, 12, 0, 0));
  EXPECT_EQ(pGetLogPath(), first);
  EXPECT_EQ(std::string(first), (LogDirectory() / "VK_20311231.log").string());
}

TEST_F(LogPaths, TheFileChangesAtLocalMidnight) {
  SetTime(LocalTime(2024, 12, 31, 23, 59, 59));
  ICC_DPrintLogToFile("old year");
  AdvanceMs(1000);
  ICC_DPrintLogToFile("new year");
  EXPECT_TRUE(fs::exists(LogDirectory() / "VK_20241231.log"));
  EXPECT_TRUE(fs::exists(LogDirectory() / "VK_20250101.log"));
  EXPECT_EQ(log_.Messages(), (std::vector<std::string>{"old year", "new year"}));
}

TEST_F(LogPaths, TempPathIsWrittenWithItsTerminatorAndNoMore) {
  char path[6];
  std::memset(path, 'x', sizeof path);
  GetTempPath(-1, path);
  EXPECT_EQ(std::string(path, 6), std::string("/tmp\0x", 6));
}

}  // namespace
}  // namespace gwq::test
