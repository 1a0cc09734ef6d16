// SPDX-License-Identifier: MIT
#include "recording/replayed_line.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "unit/terminal/recording/samples.h"

namespace gwq::terminal::test {

using namespace recording;
namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;

struct Replay {
  explicit Replay(std::vector<WireTransfer> transfers, bool fast = false)
      : line(std::move(transfers), fast, [this](const std::string& text) { reports.push_back(text); }) {}

  void Send(const std::string& text, Time now = 0ms) { line.Receive(ToBytes(text), now); }
  // All answers there are at that time.
  std::string Answers(Time now = 0ms) {
    line.Advance(now);
    std::string all;
    while (const auto answer = line.TakeAnswer()) all += ToText(*answer);
    return all;
  }

  std::vector<std::string> reports;
  ReplayedLine line;
};

std::vector<WireTransfer> Session() {
  return {Usb(1'000'000, false, "first"), Usb(1'250'000, true, "one"),     Usb(1'300'000, true, ""),
          Usb(1'350'000, true, "two"),    Usb(2'000'000, false, "second"), Usb(2'000'100, true, "three")};
}

TEST(ReplayedLine, AnswersAfterTheTimeItTook) {
  Replay replay(Session());
  EXPECT_EQ(replay.line.NextDeadline(), std::nullopt);
  replay.Send("first", 5000ms);
  EXPECT_EQ(replay.line.NextDeadline(), 5250ms);
  EXPECT_EQ(replay.Answers(5249ms), "");
  EXPECT_EQ(replay.Answers(5250ms), "one");
  EXPECT_EQ(replay.Answers(5349ms), "");
  EXPECT_EQ(replay.Answers(5350ms), "two");
  EXPECT_EQ(replay.line.NextDeadline(), std::nullopt);
  replay.Send("second", 9000ms);
  EXPECT_EQ(replay.Answers(9000ms), "three");
  EXPECT_TRUE(replay.line.Finish());
  EXPECT_EQ(replay.reports,
            (std::vector<std::string>{"replayed 2 of 2 transfers of the host, no difference"}));
}

TEST(ReplayedLine, AnswersAtOnceWhenItIsToBeFast) {
  Replay replay(Session(), true);
  replay.Send("first");
  EXPECT_EQ(replay.Answers(), "onetwo");
}

TEST(ReplayedLine, DoesNotCareHowTheHostCutsWhatItSends) {
  Replay replay(Session(), true);
  replay.Send("fi");
  EXPECT_EQ(replay.Answers(), "");
  replay.Send("rst");
  EXPECT_EQ(replay.Answers(), "onetwo");
  replay.Send("sec");
  replay.Send("ond");
  EXPECT_TRUE(replay.line.Finish());
}

TEST(ReplayedLine, GivesAHostThatGoesOnWhatStandsBefore) {
  Replay replay(Session());
  replay.Send("first");
  replay.Send("second");
  EXPECT_EQ(replay.Answers(), "onetwothree");
  EXPECT_TRUE(replay.line.Finish());
}

TEST(ReplayedLine, TellsTheFirstDifferenceAndFallsSilent) {
  Replay replay(Session());
  replay.Send("first");
  replay.Send("secret");
  EXPECT_EQ(
      replay.reports,
      (std::vector<std::string>{
          "the host differs from the recording in its transfer 2 of 2 (recorded at 1.000000 s), at byte 3:\n"
          "  expected: 6f 6e 64                                        |ond|\n"
          "  seen:     72 65 74                                        |ret|"}));
  replay.Answers();
  replay.Send("second");
  EXPECT_EQ(replay.Answers(100000ms), "");
  EXPECT_FALSE(replay.line.Finish());
  EXPECT_EQ(replay.reports.size(), 1U);
}

TEST(ReplayedLine, TellsAHostThatDoesMoreOrLess) {
  Replay more(Session());
  more.Send("firstsecondthird");
  ASSERT_EQ(more.reports.size(), 1U);
  EXPECT_EQ(more.reports[0].substr(0, 59), "the host goes on after the last of its 2 recorded transfers");
  EXPECT_FALSE(more.line.Finish());
  Replay less(Session());
  less.Send("first");
  EXPECT_FALSE(less.line.Finish());
  EXPECT_EQ(less.reports.at(0), "the host stopped before the end: 1 of 2 transfers of the host");
}

TEST(ReplayedLine, TakesAnythingForWhatIsMasked) {
  Replay replay({Usb(0, false, "\033S****\r\n", {{2, 4}})}, true);
  replay.Send("\033S0307\r\n");
  EXPECT_TRUE(replay.line.Finish());
}

TEST(ReplayedLine, ShowsNoSecretOfTheHost) {
  Replay replay({Usb(0, false, "\033S0307\r\n")}, true);
  replay.Send("\033S0308\r\n");
  ASSERT_EQ(replay.reports.size(), 1U);
  EXPECT_NE(replay.reports[0].find("at byte 5:\n"), std::string::npos);
  EXPECT_EQ(replay.reports[0].find("seen:     38"), std::string::npos);
}

TEST(ReplayedLine, MakesMaskedAnswersReadable) {
  const std::string frame = Frame("\0\0"s + "blocked!");
  std::string masked = frame;
  masked.replace(9, 18, std::string(18, '*'));
  Replay replay({Usb(0, true, "****\r", {{0, 4}}), Usb(0, true, "\x02********\x03", {{1, 8}}),
                 Usb(0, true, masked, {{9, 18}})},
                true);
  EXPECT_EQ(replay.Answers(),
            "0000\r"
            "\x02"
            "10000000\x03" +
                Frame("\0\0"s + "00000000"));
}

TEST(ReplayedLine, GivesWhatCameUnasked) {
  Replay replay({Usb(7'000'000, true, "hello")});
  EXPECT_EQ(replay.Answers(0ms), "hello");
  EXPECT_TRUE(replay.line.Finish());
}

}  // namespace
}  // namespace gwq::terminal::test
