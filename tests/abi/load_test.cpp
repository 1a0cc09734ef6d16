// SPDX-License-Identifier: MIT
// Loading and unloading the built library, by a host that tells what it sees.
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <optional>
#include <regex>
#include <string>
#include <vector>

#include "abi/programs.h"
#include "support/named.h"
#include "support/temp_dir.h"

namespace gwq::test {
namespace {

namespace fs = std::filesystem;

struct IniCase {
  const char* name;
  std::optional<std::string> content;
  std::string value;  // as it is printed
  bool log_is_on;
};

class Load : public testing::Test {
 protected:
  Load() { fs::copy_file(GWQ_LIBRARY, library_); }

  [[nodiscard]] std::string IniPath() const { return (directory_ / "GWQ_LOG.ini").string(); }
  [[nodiscard]] fs::path Logs() const { return directory_ / "Log/Gwq_Volkarn"; }

  void WriteIni(const std::string& content) const { WriteFile(IniPath(), content); }

  // What the host and the library print for one time, and the lines of a log that is on.
  [[nodiscard]] static std::string Printed(const std::string& ini_path, const IniCase& ini) {
    std::string text;
    if (!ini.content) text += "openfile [" + ini_path + "] error [No such file or directory]\n";
    if (ini.log_is_on) text += "DelOutTimeLogFile\n";
    text += "szIniPath=" + ini_path + "\n";
    text += "szLogFlag=" + ini.value + "\n";
    text += "libusb_init of the default context\n------dlopen OK------\nloaded\ncJSON parses\n";
    text += "libusb_exit of the default context\n------dlclose OK------\nunloaded\n";
    return text;
  }

  [[nodiscard]] std::string LogText() const {
    std::string text;
    for (const auto& entry : fs::directory_iterator(Logs())) text += ReadFile(entry.path());
    return text;
  }

  TempDir directory_;
  const fs::path library_ = directory_ / "libgwq.so";
};

class LoadWithIni : public Load, public testing::WithParamInterface<IniCase> {};

TEST_P(LoadWithIni, PrintsAndSwitchesTheLogAsTheIniFileSays) {
  if (GetParam().content) WriteIni(*GetParam().content);
  const Outcome outcome = RunHost({HOST_THAT_LOADS, library_});
  EXPECT_EQ(outcome.exit_status, 0);
  EXPECT_EQ(outcome.standard_output, Printed(IniPath(), GetParam()));
  if (!GetParam().log_is_on) {
    EXPECT_FALSE(fs::exists(directory_ / "Log"));
    return;
  }
  const std::string text = LogText();
  EXPECT_TRUE(std::regex_match(text, std::regex(R"(\d\d:\d\d:\d\d\(\d{3}\)  line of the host\r\n)"))) << text;
}

INSTANTIATE_TEST_SUITE_P(
    Each, LoadWithIni,
    testing::Values(
        IniCase{"One", "[Gwq]\nLog=1\n", "1", true},
        IniCase{"OneBetweenBlanks", "[Gwq]\nLog = 1 \n", "1", true},
        IniCase{"Ten", "[Gwq]\nLog=10\n", "10", true}, IniCase{"OneAndText", "[Gwq]\nLog=1st\n", "1st", true},
        IniCase{"CrLf", "[Gwq]\r\nLog=1\r\n", "1", true}, IniCase{"NoLineEnd", "[Gwq]\nLog=1", "1", true},
        IniCase{"Zero", "[Gwq]\nLog=0\n", "0", false}, IniCase{"ZeroOne", "[Gwq]\nLog=01\n", "01", false},
        IniCase{"Yes", "[Gwq]\nLog=yes\n", "yes", false}, IniCase{"Minus", "[Gwq]\nLog=-1\n", "-1", false},
        IniCase{"NoFile", std::nullopt, "", false}, IniCase{"EmptyFile", "", "", false},
        IniCase{"EmptyValue", "[Gwq]\nLog=\n", "", false}, IniCase{"NoKey", "[Gwq]\nlog=1\n", "", false},
        IniCase{"OtherSection", "[Other]\nLog=1\n[Gwq]\n", "", false},
        IniCase{"NextSection", "[Gwq]\n[Next]\nLog=1\n", "", false},
        IniCase{"Comment", "[Gwq]\n#Log=1\n", "", false}, IniCase{"Malformed", "[Gwq\nLog=1\n", "", false},
        IniCase{"Garbage", "\x01\xFF]]][=\n=\n==1", "", false}),
    kByName);

TEST_F(Load, WorksTwentyTimesInOneProcess) {
  const IniCase ini{"", "[Gwq]\nLog=1\n", "1", true};
  WriteIni(*ini.content);
  const Outcome outcome = RunHost({HOST_THAT_LOADS, library_, "20"});
  EXPECT_EQ(outcome.exit_status, 0);
  std::string expected;
  for (int i = 0; i < 20; ++i) expected += Printed(IniPath(), ini);
  EXPECT_EQ(outcome.standard_output, expected);
  EXPECT_EQ(Lines(LogText()).size(), 20U);
}

TEST_F(Load, LooksBesideTheLibraryWhenItIsNamedRelatively) {
  WriteIni("[Gwq]\nLog=1\n");
  const Outcome outcome = RunHost({HOST_THAT_LOADS, "./libgwq.so"}, directory_.Path());
  EXPECT_EQ(outcome.exit_status, 0);
  EXPECT_EQ(outcome.standard_output, Printed("./GWQ_LOG.ini", {"", "", "1", true}));
  EXPECT_EQ(Lines(LogText()).size(), 1U);
}

// What moves about in the file system afterwards does not take the log with it.
TEST_F(Load, NamedRelativelyKeepsItsDirectoryWhenTheProcessMoves) {
  WriteIni("[Gwq]\nLog=1\n");
  const TempDir elsewhere;
  const Outcome outcome = RunHost({HOST_THAT_LOADS, "./libgwq.so", "1", elsewhere.Path()}, directory_.Path());
  EXPECT_EQ(outcome.exit_status, 0);
  EXPECT_EQ(Lines(LogText()).size(), 1U);
  EXPECT_TRUE(fs::is_empty(elsewhere.Path()));
}

std::string LogNameOfDaysAgo(int days) {
  using std::chrono::floor;
  const auto today = floor<std::chrono::days>(std::chrono::system_clock::now());
  const std::chrono::year_month_day date{today - std::chrono::days(days)};
  char name[32];
  std::snprintf(name, sizeof name, "VK_%04d%02u%02u.log", static_cast<int>(date.year()),
                static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
  return name;
}

TEST_F(Load, RemovesOldLogsWhenItSwitchesTheLogOn) {
  fs::create_directories(Logs());
  WriteFile(Logs() / "VK_20200101.log", "old");
  WriteFile(Logs() / LogNameOfDaysAgo(30), "old");
  WriteFile(Logs() / LogNameOfDaysAgo(10), "new");
  WriteIni("[Gwq]\nLog=1\n");
  EXPECT_EQ(RunHost({HOST_THAT_LOADS, library_}).exit_status, 0);
  EXPECT_FALSE(fs::exists(Logs() / "VK_20200101.log"));
  EXPECT_FALSE(fs::exists(Logs() / LogNameOfDaysAgo(30)));
  EXPECT_EQ(ReadFile(Logs() / LogNameOfDaysAgo(10)), "new");
}

TEST_F(Load, KeepsOldLogsWhileTheLogStaysOff) {
  fs::create_directories(Logs());
  WriteFile(Logs() / "VK_20200101.log", "old");
  WriteIni("[Gwq]\nLog=0\n");
  EXPECT_EQ(RunHost({HOST_THAT_LOADS, library_}).exit_status, 0);
  EXPECT_EQ(ReadFile(Logs() / "VK_20200101.log"), "old");
}

TEST_F(Load, IsNotHinderedByALogDirectoryThatCannotBeMade) {
  WriteFile(directory_ / "Log", "in the way");
  WriteIni("[Gwq]\nLog=1\n");
  const Outcome outcome = RunHost({HOST_THAT_LOADS, library_});
  EXPECT_EQ(outcome.exit_status, 0);
  EXPECT_EQ(outcome.standard_output, Printed(IniPath(), {"", "", "1", true}));
  EXPECT_EQ(ReadFile(directory_ / "Log"), "in the way");
}

}  // namespace
}  // namespace gwq::test
