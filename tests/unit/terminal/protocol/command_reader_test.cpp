// SPDX-License-Identifier: MIT
// How the host's bytes are cut into commands, however they arrive.
#include "protocol/command_reader.h"

#include <gtest/gtest.h>

#include "unit/terminal/device/rig.h"

namespace gwq::terminal::test {

using namespace protocol;
namespace {

// Everything that a reader made of what it was fed, one word for each command.
class ReaderRig {
 public:
  explicit ReaderRig(Line line)
      : reader_(line, [this](Command&& command) { commands.push_back(Describe(command)); }) {}

  void Feed(std::string_view bytes) { reader_.Feed(ToBytes(bytes), now); }
  void Wait(Time time) { reader_.Advance(now += time); }

  std::vector<std::string> commands;
  Time now{0};

 private:
  static std::string Describe(const Command& command) {
    if (command.kind == Command::Kind::kNoise) return "noise " + std::to_string(command.noise_size);
    const std::string kind = command.kind == Command::Kind::kText ? "text " : "frame ";
    return kind + ToText(command.bytes);
  }

  CommandReader reader_;
};

using Commands = std::vector<std::string>;

// So many reports are more than any command.
constexpr std::size_t kEndless = CommandReader::kMaxCommand / kReport + 100;

// Each with the word the reader makes of it.
const std::vector<std::pair<std::string, std::string>>& EveryShape() {
  static const std::vector<std::pair<std::string, std::string>> shapes{
      {"\033[0GETVERSION", "text \033[0GETVERSION"},
      {"\033[1;6L", "text \033[1;6L"},
      {"\033[0BJPOSTSETSN\x02st_12345678\x03", "text \033[0BJPOSTSETSN\x02st_12345678\x03"},
      {"\033[4H\x02\xD5\xC5\xC8\xFD|\x81\x82\x83|1\x03",
       "text \033[4H\x02\xD5\xC5\xC8\xFD|\x81\x82\x83|1\x03"},
      {"\033M0:;<\r\n", "text \033M0:;<\r\n"},
      {"\033R\r\n", "text \033R\r\n"},
      {"\0020002301828\x03", "frame \0020002301828\x03"},
      {"\x81", "text \x81"},
      {"\x82", "text \x82"},
      {"\x83", "text \x83"}};
  return shapes;
}

TEST(Reader, TakesEveryShapeFromOnePaddedReport) {
  for (const auto& [command, expected] : EveryShape()) {
    ReaderRig rig(Line::kUsb);
    rig.Feed(PaddedReports(command));
    EXPECT_EQ(rig.commands, Commands{expected});
    rig.Wait(10s);
    EXPECT_EQ(rig.commands.size(), 1U);
  }
}

TEST(Reader, TakesEveryShapeFromAReportWithoutPadding) {
  for (const auto& [command, expected] : EveryShape()) {
    ReaderRig rig(Line::kUsb);
    rig.Feed(command);
    EXPECT_EQ(rig.commands, Commands{expected});
  }
}

TEST(Reader, TakesEveryShapeFromSerialCutAtEveryPlace) {
  for (const auto& [command, expected] : EveryShape()) {
    for (std::size_t cut = 0; cut <= command.size(); ++cut) {
      ReaderRig rig(Line::kSerial);
      rig.Feed(command.substr(0, cut));
      rig.Wait(19ms);
      rig.Feed(command.substr(cut));
      rig.Wait(20ms);
      EXPECT_EQ(rig.commands, Commands{expected}) << "cut at " << cut;
    }
  }
}

TEST(Reader, TakesEveryShapeFromSerialByteByByte) {
  for (const auto& [command, expected] : EveryShape()) {
    ReaderRig rig(Line::kSerial);
    for (const char byte : command) {
      rig.Feed(std::string(1, byte));
      rig.Wait(5ms);
    }
    rig.Wait(20ms);
    EXPECT_EQ(rig.commands, Commands{expected});
  }
}

TEST(Reader, TellsCommandsApartThatFollowEachOtherWithoutSilence) {
  std::string all;
  Commands expected;
  for (const auto& [command, word] : EveryShape()) {
    all += command;
    expected.push_back(word);
  }
  ReaderRig rig(Line::kSerial);
  rig.Feed(all);
  EXPECT_EQ(rig.commands, expected);
}

TEST(Reader, EndsAnUnmarkedWordAtTheNextCommand) {
  ReaderRig rig(Line::kSerial);
  rig.Feed("\033[1;0X\033[1;30T\x82");
  EXPECT_EQ(rig.commands, (Commands{"text \033[1;0X", "text \033[1;30T", "text \x82"}));
}

TEST(Reader, JoinsACommandThatSpansReports) {
  for (const std::size_t size : {1023U, 1024U, 1025U, 2047U, 2048U, 2049U, 5000U}) {
    const std::string command = "\033[2A\x02" + std::string(size - 6, '0') + "\x03";
    ASSERT_EQ(command.size(), size);
    ReaderRig rig(Line::kUsb);
    const std::string reports = PaddedReports(command);
    for (std::size_t i = 0; i < reports.size(); i += kReport) rig.Feed(reports.substr(i, kReport));
    ASSERT_EQ(rig.commands.size(), 1U) << size;
    EXPECT_EQ(rig.commands[0], "text " + command);
  }
}

TEST(Reader, JoinsReportsThatComeSlowly) {
  const std::string command = "\033[2A\x02" + std::string(2000, '0') + "\x03";
  const std::string reports = PaddedReports(command);
  ReaderRig rig(Line::kUsb);
  rig.Feed(reports.substr(0, kReport));
  rig.Wait(999ms);
  rig.Feed(reports.substr(kReport));
  EXPECT_EQ(rig.commands, Commands{"text " + command});
}

TEST(Reader, TakesTheZerosOfAWholeWorkBufferForPadding) {
  ReaderRig rig(Line::kUsb);
  std::string buffer = "\033[0GETFILELIST\0022\x03";
  buffer.resize(4096, '\0');
  for (std::size_t i = 0; i < buffer.size(); i += kReport) rig.Feed(buffer.substr(i, kReport));
  EXPECT_EQ(rig.commands, Commands{"text \033[0GETFILELIST\0022\x03"});
}

TEST(Reader, EndsAWordThatFillsItsReportWhereTheLineFallsSilent) {
  const std::string command = "\033[" + std::string(kReport - 2, 'A');
  ReaderRig rig(Line::kUsb);
  rig.Feed(command);
  EXPECT_TRUE(rig.commands.empty());
  rig.Wait(20ms);
  EXPECT_EQ(rig.commands, Commands{"text " + command});
}

TEST(Reader, GivesUpWaitingForAnEndMark) {
  for (const std::string begun : {"\033[0X\002abc", "\033M012", "\0020002", "\033"}) {
    ReaderRig rig(Line::kSerial);
    rig.Feed(begun);
    rig.Wait(999ms);
    EXPECT_TRUE(rig.commands.empty()) << begun;
    rig.Wait(1ms);
    ASSERT_EQ(rig.commands.size(), 1U) << begun;
    rig.Feed("\x82");
    EXPECT_EQ(rig.commands.back(), "text \x82");
  }
}

TEST(Reader, PaddingCutsAnUnfinishedCommandOff) {
  for (const std::string begun : {"\033[0X\002abc", "\033M012", "\0020002"}) {
    ReaderRig rig(Line::kUsb);
    rig.Feed(PaddedReports(begun));
    ASSERT_EQ(rig.commands.size(), 1U) << begun;
    rig.Feed(PaddedReports("\x82"));
    EXPECT_EQ(rig.commands.back(), "text \x82");
  }
}

TEST(Reader, ANewCommandCutsAFrameOff) {
  ReaderRig rig(Line::kSerial);
  rig.Feed("\0020002\033R\r\n");
  EXPECT_EQ(rig.commands, (Commands{"frame \0020002", "text \033R\r\n"}));
}

TEST(Reader, ReportsNoiseInOnePieceAndFindsTheCommandBehindIt) {
  ReaderRig rig(Line::kSerial);
  rig.Feed("garbage\r\n\xFF\033R\r\n");
  EXPECT_EQ(rig.commands, (Commands{"noise 10", "text \033R\r\n"}));
}

TEST(Reader, ReportsAnEndlessCommandOnceAndGoesOnBehindItsEnd) {
  ReaderRig rig(Line::kSerial);
  rig.Feed("\033[2A\x02");
  for (std::size_t i = 0; i < kEndless; ++i) rig.Feed(std::string(kReport, '0'));
  ASSERT_EQ(rig.commands.size(), 1U);
  EXPECT_EQ(rig.commands[0], "noise " + std::to_string(CommandReader::kMaxCommand + 1));
  rig.Feed("\x03\033R\r\n");
  EXPECT_EQ(rig.commands, (Commands{rig.commands[0], "text \033R\r\n"}));
}

TEST(Reader, TakesACommandOfTheGreatestSize) {
  const std::string start = "\033[2A\x02";
  const std::string command =
      start + std::string(CommandReader::kMaxCommand - start.size() - 1, '0') + "\x03";
  ReaderRig rig(Line::kSerial);
  rig.Feed(command);
  ASSERT_EQ(rig.commands.size(), 1U);
  EXPECT_TRUE(rig.commands[0] == "text " + command);
}

TEST(Reader, AnEndlessWordWithoutDataIsReportedOnceToo) {
  ReaderRig rig(Line::kUsb);
  rig.Feed("\033[" + std::string(kReport - 2, 'A'));
  for (std::size_t i = 0; i < kEndless; ++i) rig.Feed(std::string(kReport, 'A'));
  EXPECT_EQ(rig.commands.size(), 1U);
  rig.Feed(PaddedReports("AAA"));
  rig.Feed(PaddedReports("\x82"));
  ASSERT_EQ(rig.commands.size(), 2U);
  EXPECT_EQ(rig.commands[1], "text \x82");
}

}  // namespace
}  // namespace gwq::terminal::test
