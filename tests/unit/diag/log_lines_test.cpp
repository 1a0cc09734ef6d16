// SPDX-License-Identifier: MIT
// What one call writes to the log.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>
#include <cstring>

#include <array>
#include <cerrno>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include <gwq/diag/log.h>
#include <gwq/extra.h>
#include "diag/internal/clock_text.h"
#include "support/as_user.h"
#include "support/log_capture.h"
#include "support/temp_dir.h"

namespace gwq::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

const std::string kStamp = R"(\d\d:\d\d:\d\d\(\d\d\d\)  )";

void ExpectWhole(const std::string& log, const std::string& pattern) {
  EXPECT_TRUE(std::regex_match(log, std::regex(pattern))) << testing::PrintToString(log);
}

TEST(LogLine, IsTheStampTwoBlanksTheMessageAndCrLf) {
  const LogCapture log;
  ICC_DPrintLogToFile("nRet=%d %s", -14, "text");
  ExpectWhole(log.Raw(), kStamp + "nRet=-14 text\r\n");
}

TEST(LogLine, CarriesTheLocalWallClockTime) {
  const LogCapture log;
  const ClockText before = TimeStamp();
  ICC_DPrintLogToFile("x");
  const ClockText after = TimeStamp();
  const std::string stamp = log.Raw().substr(0, 13);
  const bool over_midnight = std::string(after.data()) < before.data();
  EXPECT_TRUE(over_midnight || (before.data() <= stamp && stamp <= after.data()))
      << before.data() << " " << stamp << " " << after.data();
}

TEST(LogLine, IsAppended) {
  const LogCapture log;
  ICC_DPrintLogToFile("one");
  ICC_DPrintLogToFile("two");
  ExpectWhole(log.Raw(), kStamp + "one\r\n" + kStamp + "two\r\n");
}

TEST(LogLine, KeepsBytesThatAreNotAscii) {
  const LogCapture log;
  ICC_DPrintLogToFile("\xB4\xF2\xBF\xAA%s", "\xCA\xA7\xB0\xDC");
  EXPECT_THAT(log.Messages(), ElementsAre("\xB4\xF2\xBF\xAA\xCA\xA7\xB0\xDC"));
}

TEST(LogLine, ACutMessageKeepsItsFirst4095Characters) {
  const LogCapture log;
  std::string text;
  for (int i = 0; text.size() < 5000; ++i) text += static_cast<char>('a' + i % 26);
  for (const std::size_t length : {4094U, 4095U, 4096U, 5000U}) {
    ICC_DPrintLogToFile("%s", text.substr(0, length).c_str());
  }
  EXPECT_THAT(log.Messages(), ElementsAre(text.substr(0, 4094), text.substr(0, 4095), text.substr(0, 4095),
                                          text.substr(0, 4095)));
  EXPECT_EQ(log.Raw().substr(log.Raw().size() - 2), "\r\n");
}

TEST(LogLine, AnEmptyMessageIsALineOfItsOwn) {
  const LogCapture log;
  ICC_DPrintLogToFile("%s", "");
  ExpectWhole(log.Raw(), kStamp + "\r\n");
}

TEST(LogLine, IsOnDiskWhenTheCallReturnsAndNoFileStaysOpen) {
  const LogCapture log;
  const auto open_files = [] {
    return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
  };
  const auto before = open_files();
  for (int i = 0; i < 50; ++i) {
    ICC_DPrintLogToFile("%d", i);
    ICC_DPrintDataHexToFile("hex", nullptr, 0);
  }
  EXPECT_EQ(open_files(), before);
  EXPECT_EQ(log.Messages().size(), 100U);
}

TEST(HexLine, IsLabelLengthAndUpperCaseDigits) {
  const LogCapture log;
  const unsigned char data[] = {0x1B, 0x5B, 0x30};
  ICC_DPrintDataHexToFile("Send", data, 3);
  ExpectWhole(log.Raw(), kStamp + "Send  LEN=3   HEX: 1B5B30\r\n");
}

TEST(HexLine, LeavesOutAMissingLabelAndItsBlanks) {
  const LogCapture log;
  const unsigned char data[] = {0xFF, 0x00, 0xAB};
  ICC_DPrintDataHexToFile(nullptr, data, 3);
  ExpectWhole(log.Raw(), kStamp + "LEN=3   HEX: FF00AB\r\n");
}

TEST(HexLine, KeepsTheBlanksOfAnEmptyLabel) {
  const LogCapture log;
  const unsigned char byte = 7;
  ICC_DPrintDataHexToFile("", &byte, 1);
  EXPECT_THAT(log.Messages(), ElementsAre("  LEN=1   HEX: 07"));
}

TEST(HexLine, WritesNoDigitsForLengthZeroAndBelow) {
  const LogCapture log;
  const unsigned char byte = 7;
  ICC_DPrintDataHexToFile("L", &byte, 0);
  ICC_DPrintDataHexToFile(nullptr, &byte, 0);
  ICC_DPrintDataHexToFile("L", &byte, -5);
  EXPECT_THAT(log.Messages(), ElementsAre("L  LEN=0   HEX: ", "LEN=0   HEX: ", "L  LEN=-5   HEX: "));
}

TEST(HexLine, WritesNoDigitsForNullData) {
  const LogCapture log;
  ICC_DPrintDataHexToFile("L", nullptr, 0);
  ICC_DPrintDataHexToFile("L", nullptr, 3);
  EXPECT_THAT(log.Messages(), ElementsAre("L  LEN=0   HEX: ", "L  LEN=3   HEX: "));
}

TEST(HexLine, TakesFormatCharactersInTheLabelAsText) {
  const LogCapture log;
  ICC_DPrintDataHexToFile("%s%n%d", nullptr, 0);
  EXPECT_THAT(log.Messages(), ElementsAre("%s%n%d  LEN=0   HEX: "));
}

TEST(HexLine, IsNotCut) {
  const LogCapture log;
  const std::string label(5000, 'l');
  const std::vector<unsigned char> data(100'000, 0xE7);
  ICC_DPrintDataHexToFile(label.c_str(), data.data(), static_cast<int>(data.size()));
  std::string expected = label + "  LEN=100000   HEX: ";
  for (std::size_t i = 0; i < data.size(); ++i) expected += "E7";
  ASSERT_EQ(log.Messages().size(), 1U);
  EXPECT_EQ(log.Messages()[0], expected);
}

TEST(LogSwitch, OffTouchesNothing) {
  { const LogCapture on_and_off_again; }
  ICC_DPrintLogToFile("x %d", 1);
  ICC_DPrintDataHexToFile("x", reinterpret_cast<const unsigned char*>("x"), 1);
  EXPECT_FALSE(fs::exists(ModuleDirectory() / "Log"));
}

TEST(LogSwitch, AnyOtherValueThanZeroIsOn) {
  const LogCapture log;
  for (const unsigned flag : {1U, 2U, 0x80000000U, 0U, 0xFFFFFFFFU}) {
    SetDebugFlag(flag);
    ICC_DPrintLogToFile("%x", flag);
  }
  EXPECT_THAT(log.Messages(), ElementsAre("1", "2", "80000000", "ffffffff"));
}

TEST(LogDirectories, AreMadeAgainForTheNextLine) {
  const LogCapture log;
  ICC_DPrintLogToFile("one");
  fs::remove_all(LogDirectory());
  ICC_DPrintLogToFile("two");
  EXPECT_THAT(log.Messages(), ElementsAre("two"));
  fs::remove_all(LogDirectory().parent_path());
  ICC_DPrintDataHexToFile("three", nullptr, 0);
  EXPECT_THAT(log.Messages(), ElementsAre("three  LEN=0   HEX: "));
}

TEST(LogDirectories, AFileInTheirPlaceDropsTheLine) {
  const LogCapture log;
  WriteFile(ModuleDirectory() / "Log", "mine");
  ICC_DPrintLogToFile("dropped");
  ICC_DPrintDataHexToFile("dropped", nullptr, 0);
  EXPECT_EQ(ReadFile(ModuleDirectory() / "Log"), "mine");
  fs::remove(ModuleDirectory() / "Log");
  ICC_DPrintLogToFile("written");
  EXPECT_THAT(log.Messages(), ElementsAre("written"));
}

TEST(LogDirectories, OnesThatMayNotBeWrittenDropTheLine) {
  const LogCapture log;
  fs::permissions(ModuleDirectory(), fs::perms(0555));
  {
    const AsOrdinaryUser user;
    ASSERT_TRUE(user.Holds());
    ICC_DPrintLogToFile("dropped");
  }
  fs::permissions(ModuleDirectory(), fs::perms::owner_all);
  EXPECT_FALSE(fs::exists(ModuleDirectory() / "Log"));
}

TEST(LogDirectories, APathTooLongForItsBufferDropsTheLine) {
  const LogCapture log;
  const std::size_t room = 245 - ModuleDirectory().string().size();
  PretendModuleIs((ModuleDirectory() / std::string(room, 'd') / "libgwq.so").string());
  ICC_DPrintLogToFile("dropped");
  ICC_DPrintDataHexToFile("dropped", nullptr, 0);
  PretendModuleIs("");
  EXPECT_TRUE(fs::is_empty(ModuleDirectory()));
  ICC_DPrintLogToFile("written");
  EXPECT_THAT(log.Messages(), ElementsAre("written"));
}

TEST(LogOfThreads, LinesNeverMix) {
  constexpr int kThreads = 8;
  constexpr int kLines = 50;
  const LogCapture log;
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([t] {
      const std::string text(300, static_cast<char>('A' + t));
      const std::vector<unsigned char> data(200, static_cast<unsigned char>(t));
      for (int i = 0; i < kLines; ++i) {
        ICC_DPrintLogToFile("%d %s", i, text.c_str());
        ICC_DPrintDataHexToFile(text.c_str(), data.data(), 200);
      }
    });
  }
  for (auto& thread : threads) thread.join();
  const std::regex line(kStamp + R"((\d+ ([A-H])\2{299}|([A-H])\3{299}  LEN=200   HEX: (0[0-7])\4{199})\r)");
  std::ifstream file(fs::directory_iterator(LogDirectory())->path());
  int count = 0;
  for (std::string text; std::getline(file, text); ++count) {
    ASSERT_TRUE(std::regex_match(text, line)) << text;
  }
  EXPECT_EQ(count, 2 * kThreads * kLines);
}

TEST(LogOfThreads, TheSwitchMayBeTurnedWhileOthersWrite) {
  const LogCapture log;
  std::thread writer([] {
    for (int i = 0; i < 200; ++i) ICC_DPrintLogToFile("%d", i);
  });
  for (unsigned i = 0; i < 200; ++i) SetDebugFlag(i % 2);
  writer.join();
  for (const std::string& message : log.Messages()) {
    EXPECT_TRUE(std::regex_match(message, std::regex(R"(\d{1,3})"))) << message;
  }
}

TEST(ClockText, FullStampIsDateAndTime) {
  const std::string text = FullTimeStamp();
  EXPECT_TRUE(std::regex_match(text, std::regex(R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\(\d\d\d\))"))) << text;
  const std::string time = TimeStamp().data();
  EXPECT_TRUE(std::regex_match(time, std::regex(R"(\d\d:\d\d:\d\d\(\d\d\d\))"))) << time;
}

TEST(ScratchText, IsTheSame512BytesZeroedAtEachCall) {
  char* scratch = ScratchText();
  std::memset(scratch, 'x', 512);
  EXPECT_EQ(ScratchText(), scratch);
  EXPECT_EQ(std::string(scratch, 512), std::string(512, '\0'));
}

// ------------------------------------------------------------------ what ends a message

TEST(LogLine, EndsAtAZeroByte) {
  const LogCapture log;
  ICC_DPrintLogToFile("before%cbehind", 0);
  EXPECT_THAT(log.Messages(), ElementsAre("before"));
}

TEST(LogLine, KeepsWhatCameBeforeAValueThatCannotBeConverted) {
  const LogCapture log;
  const wchar_t unknown[] = {static_cast<wchar_t>(0x7FFFFFFF), 0};
  ICC_DPrintLogToFile("nRet=%d %ls", 7, unknown);
  EXPECT_THAT(log.Messages(), ElementsAre("nRet=7 "));
}

// ------------------------------------------------------------------ whose file it is

fs::path TodaysFile() {
  return fs::directory_iterator(LogDirectory())->path();
}

unsigned ModeOf(const fs::path& file) {
  struct stat status {};
  EXPECT_EQ(stat(file.c_str(), &status), 0);
  return status.st_mode & 07777U;
}

TEST(LogFile, IsItsOwnersAloneWhateverTheMask) {
  const LogCapture log;
  const mode_t mask = umask(0);
  ICC_DPrintLogToFile("x");
  umask(mask);
  EXPECT_EQ(ModeOf(TodaysFile()), 0600U);
}

TEST(LogFile, ThatOthersMayReadIsClosedToThem) {
  const LogCapture log;
  ICC_DPrintLogToFile("one");
  ASSERT_EQ(chmod(TodaysFile().c_str(), 0666), 0);
  ICC_DPrintLogToFile("two");
  EXPECT_EQ(ModeOf(TodaysFile()), 0600U);
  EXPECT_THAT(log.Messages(), ElementsAre("one", "two"));
}

TEST(LogFile, IsNotWrittenThroughALink) {
  const LogCapture log;
  const TempDir elsewhere;
  WriteFile(elsewhere / "target", "precious");
  ICC_DPrintLogToFile("x");
  const fs::path today = TodaysFile();
  fs::remove(today);
  fs::create_symlink(elsewhere / "target", today);
  GWQ_GetLogFailure();
  ICC_DPrintLogToFile("dropped");
  EXPECT_EQ(ReadFile(elsewhere / "target"), "precious");
  EXPECT_EQ(GWQ_GetLogFailure(), ELOOP);
  fs::remove(today);
}

TEST(LogFile, IsNotAPipeThatHoldsUpTheCaller) {
  const LogCapture log;
  ICC_DPrintLogToFile("x");
  const fs::path today = TodaysFile();
  fs::remove(today);
  ASSERT_EQ(mkfifo(today.c_str(), 0600), 0);
  ICC_DPrintLogToFile("dropped");
  fs::remove(today);
}

TEST(LogFile, OfAnotherUserIsNotWrittenTo) {
  if (geteuid() != 0) return;  // it takes two users
  const LogCapture log;
  ICC_DPrintLogToFile("x");
  const fs::path today = TodaysFile();
  ASSERT_EQ(chown(today.c_str(), 65534, 65534), 0);
  GWQ_GetLogFailure();
  ICC_DPrintLogToFile("a PIN");
  EXPECT_EQ(ReadFile(today).find("a PIN"), std::string::npos);
  EXPECT_EQ(GWQ_GetLogFailure(), EACCES);
}

TEST(LogFailure, IsToldOnce) {
  const LogCapture log;
  GWQ_GetLogFailure();
  WriteFile(ModuleDirectory() / "Log", "in the directory's place");
  ICC_DPrintLogToFile("dropped");
  ICC_DPrintLogToFile("dropped");
  fs::remove(ModuleDirectory() / "Log");
  EXPECT_EQ(GWQ_GetLogFailure(), ENOTDIR);
  EXPECT_EQ(GWQ_GetLogFailure(), 0);
  ICC_DPrintLogToFile("written");
  EXPECT_EQ(GWQ_GetLogFailure(), 0);
}

}  // namespace
}  // namespace gwq::test
