// SPDX-License-Identifier: MIT
#include "recording/masks.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "unit/terminal/recording/samples.h"

namespace gwq::terminal::test {

using namespace recording;
namespace {

using namespace std::string_literals;

// Feeds a line, and gives back what a recording has of it.
class Feeder {
 public:
  std::string Host(const std::string& text) { return Masked(text, line_.FromHost(ToBytes(text))); }
  // In two pieces.
  std::string Host(const std::string& text, std::size_t cut) {
    const std::string first = Host(text.substr(0, cut));
    return first + Host(text.substr(cut));
  }
  std::string Terminal(const std::string& text) { return Masked(text, line_.ToHost(ToBytes(text))); }

 private:
  static std::string Masked(const std::string& text, const Masks& masks) {
    Bytes bytes = ToBytes(text);
    ApplyMasks(bytes, masks);
    return ToText(bytes);
  }
  LineMask line_;
};

std::string Stars(std::size_t count) {
  return std::string(count, '*');
}

std::string FrameOf(int code, const std::string& arguments) {
  return Frame(std::string{static_cast<char>(code >> 8), static_cast<char>(code & 0xFF)} + arguments);
}

TEST(Masks, HideKeyRecordsAndAccounts) {
  Feeder feed;
  EXPECT_EQ(feed.Host("\033M03" + Split("old and new") + "\r\n\0\0"s), "\033M" + Stars(24) + "\r\n\0\0"s);
  EXPECT_EQ(feed.Host("\033S0307" + Split("a key") + "\r\n"), "\033S" + Stars(14) + "\r\n");
  EXPECT_EQ(feed.Host("\033I10622588\r\n"), "\033I10******\r\n");
  EXPECT_EQ(feed.Host("\033[1GETENCDATA\x02"
                      "0|6|A1B2C3\x03"),
            "\033[1GETENCDATA\x02" + Stars(10) + "\x03");
}

TEST(Masks, HideWhatAnUnknownCommandCarries) {
  Feeder feed;
  EXPECT_EQ(feed.Host("\033[1GETENCDATB\x02"
                      "0|6|A1B2C3\x03\0"s),
            "\033[1GETENCDAT" + Stars(12) + "\x03\0"s);
  EXPECT_EQ(feed.Host("\033[9KEY 0123456789ABCDEF\0\0"s), "\033[" + Stars(21) + "\0\0"s);
  EXPECT_EQ(feed.Host("\033Q0123456789ABCDEF\r\n"), "\033Q" + Stars(16) + "\r\n");
  EXPECT_EQ(feed.Host("\033[0GETVERSION\0"s), "\033[0GETVERSION\0"s) << "the command after it";
}

TEST(Masks, KnowTheFrameBehindAWordWithoutData) {
  Feeder feed;
  const std::string frame = FrameOf(0x3004, "a key");
  EXPECT_EQ(feed.Host("\033[2C" + frame), "\033[2C" + frame.substr(0, 9) + Stars(frame.size() - 10) + "\x03");
}

TEST(Masks, LeaveOtherCommandsAlone) {
  Feeder feed;
  for (const std::string& command :
       {"\033[0GETVERSION"s, "\033R\r\n"s, "\033A0307\r\n"s, "\033F10\r\n"s, "\x82"s, "\033[1;6L"s,
        "\033[5GETINNO\x02"
        "30|11|0|<7>;\x03"s,
        "\033[0PULLFILE\x02/tmp/hw.png\x03"s, FrameOf(0x3002, "\x01\x80"), FrameOf(0x4030, "\x1Etext")}) {
    EXPECT_EQ(feed.Host(command + "\0\0"s), command + "\0\0"s);
  }
}

TEST(Masks, HideArgumentsAndCheckByteOfFramesThatMayHaveSecrets) {
  for (const int code : {0x3004, 0x3039, 0x3016, 0x3015, 0x3077}) {
    Feeder feed;
    const std::string frame = FrameOf(code, "secret");
    EXPECT_EQ(feed.Host(frame), frame.substr(0, 9) + Stars(14) + "\x03") << code;
  }
  Feeder feed;  // neither frame nor packet
  EXPECT_EQ(feed.Host("\x02secret\x03"), "\x02******\x03");
}

TEST(Masks, GoOnFromOneReportToTheNext) {
  const std::string command = "\033[1GETENCDATA\x02"s + "0|4000|" + std::string(4000, 'A') + "\x03";
  const std::string masked = "\033[1GETENCDATA\x02" + Stars(4007) + "\x03";
  for (const std::size_t size : {1U, 7U, 64U, 1024U, 5000U}) {
    Feeder feed;
    std::string seen;
    for (std::size_t at = 0; at < command.size(); at += size) seen += feed.Host(command.substr(at, size));
    EXPECT_EQ(seen, masked) << size;
  }
}

TEST(Masks, TakeKeyLoadsAsSuchWhereverTheyAreCut) {
  const std::string frame = FrameOf(0x3004, std::string(200, 'k'));
  const std::string line = "\033M" + Split(std::string(33, 'k')) + "\r\n";
  for (std::size_t cut = 0; cut <= line.size(); ++cut) {
    Feeder feed;
    EXPECT_EQ(feed.Host(line, cut), "\033M" + Stars(66) + "\r\n");
  }
  for (std::size_t cut = 0; cut <= frame.size(); ++cut) {
    Feeder feed;
    EXPECT_EQ(feed.Host(frame, cut), frame.substr(0, 9) + Stars(402) + "\x03");
  }
}

TEST(Masks, LeaveFilesAloneAndFindTheNextCommand) {
  Feeder feed;
  const std::string data = "\x02\x02\x55"s + "\0\x04\0"s + std::string(1024, 'x');
  EXPECT_EQ(feed.Host(data), data);
  EXPECT_EQ(feed.Host("\033S0307\r\n"), "\033S****\r\n");
  // a packet that is shorter than it says
  EXPECT_EQ(feed.Host("\x02\x02\x55\xFF\xFF\xFF"s + "few"), "\x02\x02\x55\xFF\xFF\xFF"s + "few");
  EXPECT_EQ(feed.Host("\033S0307\r\n"), "\033S****\r\n");
  EXPECT_EQ(feed.Host("\x02\x01\x55\xFF\xFF\xFF"s), "\x02\x01\x55\xFF\xFF\xFF"s);
  const std::string frame = FrameOf(0x3004, "secret");
  EXPECT_EQ(feed.Host(frame), frame.substr(0, 9) + Stars(14) + "\x03");
}

TEST(Masks, HidePinsBlocksAndNumbers) {
  Feeder feed;
  EXPECT_EQ(feed.Terminal("123456\r\0\0"s), "******\r\0\0"s);
  EXPECT_EQ(feed.Terminal("\x02"
                          "10"
                          "51:;?2\x03\0\0"s),
            "\x02********\x03\0\0"s);
  EXPECT_EQ(feed.Terminal("A42F\0"s), "A**F\0"s);
  EXPECT_EQ(feed.Terminal("B1F\0BokF"s), "B1F\0BokF"s);
  feed.Host(
      "\033[5GETINNO\x02"
      "30|11|0|<7>;\x03");
  EXPECT_EQ(feed.Terminal("B310115F\0"s), "B******F\0"s);
  EXPECT_EQ(feed.Terminal("B1F\0"s), "B1F\0"s);
}

TEST(Masks, HideWhatFramesAnswerUnlessItIsKnownToBeHarmless) {
  Feeder feed;
  const auto answer = [](const std::string& data) { return Frame("\0\0"s + data); };
  EXPECT_EQ(feed.Terminal(answer("blocked!")), answer("blocked!").substr(0, 9) + Stars(18) + "\x03");
  EXPECT_EQ(feed.Terminal(answer("")), answer(""));
  EXPECT_EQ(feed.Terminal(answer("\x01")), answer("\x01"));
  EXPECT_EQ(feed.Terminal(answer(std::string(64, 'p'))), answer(std::string(64, 'p')));
  EXPECT_EQ(feed.Terminal(answer("st_00000001")), answer("st_00000001").substr(0, 9) + Stars(24) + "\x03");
  feed.Host(FrameOf(0x3018, ""));
  EXPECT_EQ(feed.Terminal(answer("st_00000001")), answer("st_00000001"));
  EXPECT_EQ(feed.Terminal(answer("blocked!")), answer("blocked!").substr(0, 9) + Stars(18) + "\x03");
}

TEST(Masks, LeaveTextsAndFilesOfTheTerminalAlone) {
  Feeder feed;
  const std::string packet = "\x02\x02\x55"s + "\0\0\x08"s + "12345678";
  for (const std::string& answer :
       {"\x02V1.0.0|20240615\x03\0"s, "\x02"s + "1.0.0|x\x03\0"s, "\xAA\0"s, "\x55"s, "\x02U\x03\0"s,
        "\x01\x03\0"s, "\x02\xAA\x03\0"s, packet, "\x02\x03\0\0\0\0\0"s}) {
    EXPECT_EQ(feed.Terminal(answer), answer);
  }
}

// A host can give up, and find the PIN when it reads the answer to its next question.
TEST(Masks, HideAPinThatIsReadLate) {
  Feeder feed;
  feed.Host("\x82");
  feed.Host("\x83");
  feed.Host("\033[0GETVERSION\0"s);
  EXPECT_EQ(feed.Terminal(Padded("1234\r")), Padded("****\r"));
  EXPECT_EQ(feed.Terminal("\x02V1.0.0|1\x03"), "\x02V1.0.0|1\x03");
}

TEST(Masks, HideDamagedAnswersWhileASecretIsAwaited) {
  Feeder feed;
  feed.Host("\x82");
  EXPECT_EQ(feed.Terminal("x1234\r\0"s), "******\0"s);
  feed.Host("\033F10\r\n");
  EXPECT_EQ(feed.Terminal("\x02"
                          "10"
                          "51p:;\x03"),
            "\x02*******\x03");
}

}  // namespace
}  // namespace gwq::terminal::test
