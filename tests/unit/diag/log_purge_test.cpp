// SPDX-License-Identifier: MIT
// The removal of old log files. The order in which a directory is read matters here, so this program's
// readdir follows a script when there is one.
#include <dirent.h>
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <string>
#include <vector>

#include <gwq/diag/log.h>
#include "support/log_capture.h"
#include "support/temp_dir.h"
#include "support/test_clock.h"

namespace gwq::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

struct ScriptedEntry {
  std::string name;
  unsigned char type = DT_REG;
};

std::vector<ScriptedEntry> g_script;
std::size_t g_next = 0;

dirent* NextScripted() {
  static dirent s_entry;
  if (g_next == g_script.size()) return nullptr;
  const ScriptedEntry& entry = g_script[g_next++];
  s_entry = {};
  s_entry.d_type = entry.type;
  s_entry.d_name[entry.name.copy(s_entry.d_name, sizeof s_entry.d_name - 1)] = '\0';
  return &s_entry;
}

}  // namespace
}  // namespace gwq::test

extern "C" __attribute__((visibility("default"))) dirent* readdir(DIR* directory) {
  if (!gwq::test::g_script.empty()) return gwq::test::NextScripted();
  using Function = dirent* (*)(DIR*);
  static const auto s_pNext = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "readdir"));
  return s_pNext(directory);
}

namespace gwq::test {
namespace {

class LogPurge : public testing::Test {
 protected:
  LogPurge() {
    SetDebugFlag(0);
    fs::create_directories(LogDirectory());
  }
  ~LogPurge() override { ResetClock(); }

  static void Today(int year, int month, int day) {
    std::tm noon{};
    noon.tm_year = year - 1900;
    noon.tm_mon = month - 1;
    noon.tm_mday = day;
    noon.tm_hour = 12;
    noon.tm_isdst = -1;
    SetTime(std::mktime(&noon));
  }

  static std::vector<std::string> Left() {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(LogDirectory())) names.push_back(entry.path().filename());
    return names;
  }

  static std::string Purge() {
    testing::internal::CaptureStdout();
    DelOutTimeLogFile();
    return testing::internal::GetCapturedStdout();
  }

  // What a purge leaves of these files when the directory is read in this order.
  static std::vector<std::string> LeftOf(const std::vector<std::string>& names) {
    std::vector<ScriptedEntry> entries{{".", DT_DIR}, {"..", DT_DIR}};
    for (const std::string& name : names) {
      WriteFile(LogDirectory() / name, "x");
      entries.push_back({name});
    }
    PurgeInOrder(entries);
    return Left();
  }

  static void PurgeInOrder(const std::vector<ScriptedEntry>& entries) {
    g_script = entries;
    g_next = 0;
    Purge();
    EXPECT_EQ(g_next, entries.size()) << "not all entries were read";
    g_script.clear();
  }

  const LogCapture log_;
};

TEST_F(LogPurge, PrintsItsName) {
  EXPECT_EQ(Purge(), "DelOutTimeLogFile\n");
}

TEST_F(LogPurge, KeepsFifteenDaysAndRemovesSixteen) {
  Today(2024, 1, 16);
  EXPECT_THAT(LeftOf({"VK_20240101.log"}), ElementsAre("VK_20240101.log"));
  Today(2024, 1, 17);
  EXPECT_THAT(LeftOf({"VK_20240101.log"}), IsEmpty());
}

TEST_F(LogPurge, CountsAcrossTheEndOfAYear) {
  Today(2025, 1, 2);
  EXPECT_THAT(LeftOf({"VK_20241217.log", "VK_20241218.log", "VK_20250102.log"}),
              UnorderedElementsAre("VK_20241218.log", "VK_20250102.log"));
}

TEST_F(LogPurge, CountsTheLeapDay) {
  Today(2024, 3, 10);
  EXPECT_THAT(LeftOf({"VK_20240223.log", "VK_20240224.log"}), ElementsAre("VK_20240224.log"));
  Today(2023, 3, 10);
  EXPECT_THAT(LeftOf({"VK_20230222.log", "VK_20230223.log", "VK_20240224.log"}),
              UnorderedElementsAre("VK_20230223.log", "VK_20240224.log"));
}

TEST_F(LogPurge, KeepsFilesOfTheFuture) {
  Today(2024, 1, 1);
  EXPECT_THAT(LeftOf({"VK_20991231.log"}), ElementsAre("VK_20991231.log"));
}

TEST_F(LogPurge, JudgesAHundredDaysByTheCalendar) {
  using std::chrono::days;
  using std::chrono::sys_days;
  using std::chrono::year_month_day;
  const sys_days today{std::chrono::year(2024) / std::chrono::March / 8};
  Today(2024, 3, 8);
  std::vector<std::string> names;
  std::vector<std::string> kept;
  for (int age = -5; age < 100; ++age) {
    const year_month_day date{today - days(age)};
    char name[32];
    std::snprintf(name, sizeof name, "VK_%04d%02u%02u.log", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
    names.emplace_back(name);
    if (age <= 15) kept.emplace_back(name);
  }
  EXPECT_THAT(LeftOf(names), testing::UnorderedElementsAreArray(kept));
}

TEST_F(LogPurge, RemovesAFileOfAnotherNameThatIsReadFirst) {
  Today(2024, 1, 16);
  EXPECT_THAT(LeftOf({"notes.txt", "VK_20240110.log"}), ElementsAre("VK_20240110.log"));
}

TEST_F(LogPurge, JudgesAFileOfAnotherNameByTheOneReadBefore) {
  Today(2024, 1, 16);
  EXPECT_THAT(LeftOf({"VK_20240110.log", "notes.txt", "VK_20230101.log", "more.txt", "last.txt"}),
              UnorderedElementsAre("VK_20240110.log", "notes.txt"));
}

TEST_F(LogPurge, TakesTheFieldsThatANameDoesNotGiveFromTheOneReadBefore) {
  Today(2024, 1, 16);
  // Read as 2024-01-10 for the first, then 2020-01-10, then 2024 and February of the same day.
  EXPECT_THAT(LeftOf({"VK_20240110.log", "VK_2020.log", "VK_202402.txt", "VK_"}),
              UnorderedElementsAre("VK_20240110.log", "VK_202402.txt", "VK_"));
}

TEST_F(LogPurge, ReadsTheDateOfANameThatGoesOnDifferently) {
  Today(2024, 1, 17);
  EXPECT_THAT(LeftOf({"VK_20240102.log.bak", "VK_20240101.txt"}), ElementsAre("VK_20240102.log.bak"));
}

TEST_F(LogPurge, RemovesAFileWhoseDateHoldsAZero) {
  Today(2024, 1, 16);
  EXPECT_THAT(LeftOf({"VK_00000101.log", "VK_20240010.log", "VK_20240100.log", "VK_20240101.log"}),
              ElementsAre("VK_20240101.log"));
}

TEST_F(LogPurge, NeverRemovesADirectory) {
  Today(2024, 1, 16);
  fs::create_directory(LogDirectory() / "VK_20200101.log");
  fs::create_directory(LogDirectory() / "notes");
  Purge();
  EXPECT_THAT(Left(), UnorderedElementsAre("VK_20200101.log", "notes"));
}

TEST_F(LogPurge, LeavesAnythingThatIsNotReportedAsARegularFile) {
  Today(2024, 1, 16);
  for (const char* name : {"VK_20200101.log", "VK_20200102.log", "VK_20240116.log", "notes.txt"}) {
    WriteFile(LogDirectory() / name, "x");
  }
  // A skipped entry's date is not inherited either.
  PurgeInOrder({{"VK_20200101.log", DT_UNKNOWN},
                {"VK_20240116.log", DT_REG},
                {"VK_20200102.log", DT_LNK},
                {"notes.txt", DT_REG}});
  EXPECT_THAT(Left(),
              UnorderedElementsAre("VK_20200101.log", "VK_20200102.log", "VK_20240116.log", "notes.txt"));
}

TEST_F(LogPurge, WorksInTheOrderOfTheRealDirectory) {
  Today(2024, 1, 16);
  for (const char* name : {"VK_20240116.log", "VK_20240101.log", "VK_20231231.log", "VK_20200229.log"}) {
    WriteFile(LogDirectory() / name, "x");
  }
  Purge();
  EXPECT_THAT(Left(), UnorderedElementsAre("VK_20240116.log", "VK_20240101.log"));
}

TEST_F(LogPurge, StaysOutOfTheDirectoryAbove) {
  Today(2024, 1, 16);
  WriteFile(LogDirectory().parent_path() / "VK_20200101.log", "x");
  Purge();
  EXPECT_TRUE(fs::exists(LogDirectory().parent_path() / "VK_20200101.log"));
}

TEST_F(LogPurge, MakesNoDirectoryAndWritesNothingWhileTheLogIsOff) {
  fs::remove_all(LogDirectory().parent_path());
  EXPECT_EQ(Purge(), "DelOutTimeLogFile\n");
  EXPECT_FALSE(fs::exists(LogDirectory().parent_path()));
}

TEST_F(LogPurge, LogsAMissingDirectoryWhenTheLogIsOn) {
  fs::remove_all(LogDirectory().parent_path());
  SetDebugFlag(1);
  Purge();
  EXPECT_THAT(log_.Messages(), ElementsAre("open dir error..."));
}

TEST_F(LogPurge, WorksInADirectoryOf259Characters) {
  Today(2024, 3, 5);
  const std::string logs = "Log/Gwq_Volkarn";
  const std::size_t room = 259 - logs.size() - ModuleDirectory().string().size() - 2;
  const fs::path module = ModuleDirectory() / std::string(room, 'd');
  fs::create_directories(module / logs);
  ASSERT_EQ((module / logs).string().size(), 259U);
  WriteFile(module / logs / "VK_20200101.log", "old");
  PretendModuleIs((module / "libgwq.so").string());
  Purge();
  PretendModuleIs("");
  EXPECT_TRUE(fs::is_empty(module / logs));
}

}  // namespace
}  // namespace gwq::test
