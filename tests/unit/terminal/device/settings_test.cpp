// SPDX-License-Identifier: MIT
// Version, the settings of a PIN entry, and what is no command at all.
#include <gtest/gtest.h>

#include "unit/terminal/device/rig.h"

namespace gwq::terminal::test {

using namespace device;
namespace {

TEST(Version, IsAnsweredBetweenStxAndEtx) {
  Rig rig;
  EXPECT_EQ(rig.Ask(wire::kGetVersion), "\x02V1.0.0|20240615\x03");
}

TEST(Version, IsWhatTheSettingsSay) {
  Rig rig(Line::kUsb, {"V9.9", "20231113"});
  EXPECT_EQ(rig.Ask(wire::kGetVersion), "\x02V9.9|20231113\x03");
}

TEST(Version, IsAnsweredOverSerialOnceTheLineFallsSilent) {
  Rig rig(Line::kSerial);
  rig.Feed(wire::kGetVersion);
  EXPECT_EQ(rig.Answer(), "(none)");
  ASSERT_EQ(rig.device().NextDeadline(), 20ms);
  rig.Wait(19ms);
  EXPECT_EQ(rig.Answer(), "(none)");
  rig.Wait(1ms);
  EXPECT_EQ(rig.Answer(), "\x02V1.0.0|20240615\x03");
  EXPECT_EQ(rig.device().NextDeadline(), std::nullopt);
}

TEST(EntrySettings, AreNotAnswered) {
  Rig rig;
  EXPECT_EQ(rig.Ask("\033[1;6L"), "(none)");
  EXPECT_EQ(rig.Ask(wire::kEntryOptions), "(none)");
  EXPECT_EQ(rig.Ask(wire::kEntryTimeout30), "(none)");
}

TEST(EntrySettings, OfImpossibleValueAreRefused) {
  Rig rig;
  for (const char* command :
       {"\033[1;0L", "\033[1;15L", "\033[1;999999L", "\033[1;1X", "\033[1;0T", "\033[1;1000T"}) {
    EXPECT_EQ(rig.Ask(command), wire::kRefused) << command;
  }
}

TEST(EntrySettings, WithoutANumberOrWithOneTooLongAreNoCommand) {
  Rig rig;
  for (const char* command : {"\033[1;L", "\033[1;-6L", "\033[1;6", "\033[1;6LL", "\033[1;9999999L"}) {
    EXPECT_EQ(rig.Ask(command), wire::kRefused) << command;
  }
}

TEST(EntrySettings, ReachTheCustomer) {
  Rig rig;
  rig.customer.actions = {WalksAway()};
  rig.Send("\033[1;8L");
  rig.Send("\033[1;45T");
  rig.Send("\x82");
  ASSERT_EQ(rig.customer.requests.size(), 1U);
  EXPECT_EQ(rig.customer.requests[0].min_digits, 4);
  EXPECT_EQ(rig.customer.requests[0].max_digits, 8);
  EXPECT_EQ(rig.customer.requests[0].time_left, 45s);
}

TEST(EntrySettings, RefusedOnesChangeNothing) {
  Rig rig;
  rig.customer.actions = {WalksAway()};
  rig.Send("\033[1;8L");
  rig.Send("\033[1;15L");
  rig.Send("\033[1;45T");
  rig.Send("\033[1;0T");
  rig.Send("\x82");
  EXPECT_EQ(rig.customer.requests.at(0).max_digits, 8);
  EXPECT_EQ(rig.customer.requests.at(0).time_left, 45s);
}

TEST(EntrySettings, AShortPinLengthLowersTheLeastToo) {
  Rig rig;
  rig.customer.actions = {WalksAway()};
  rig.Send("\033[1;2L");
  rig.Send("\x82");
  EXPECT_EQ(rig.customer.requests.at(0).min_digits, 2);
  EXPECT_EQ(rig.customer.requests.at(0).max_digits, 2);
}

TEST(Unknown, CommandsAreRefused) {
  for (const Line line : {Line::kUsb, Line::kSerial}) {
    Rig rig(line);
    for (const char* command :
         {"\033[0NOSUCHWORD", "\033[0NOSUCHWORD\x02with data\x03", "\033[", "\033X1\r\n", "\033R \r\n",
          "\033F0\r\n", "\033F0a\r\n", "\033[0GETVERSION\x02\x03"}) {
      EXPECT_EQ(rig.Ask(command), wire::kRefused) << command;
    }
  }
}

TEST(Unknown, NoiseIsRefusedOnce) {
  for (const Line line : {Line::kUsb, Line::kSerial}) {
    Rig rig(line);
    EXPECT_EQ(rig.Ask("hello, terminal"), wire::kRefused);
    EXPECT_EQ(rig.Trace(), "host: noise (15 bytes)\nterminal: answer: refusal\n");
  }
}

TEST(Unknown, ZerosAndNothingAreNotAnswered) {
  Rig rig;
  rig.Feed(std::string(kReport, '\0'));
  rig.Feed(std::string(3, '\0'));
  rig.Feed("");
  rig.Wait(10s);
  EXPECT_EQ(rig.Answer(), "(none)");
  EXPECT_EQ(rig.Trace(), "");
  EXPECT_EQ(rig.device().NextDeadline(), std::nullopt);
}

TEST(Trace, NamesCommandsAndAnswers) {
  Rig rig;
  rig.Send(wire::kGetVersion);
  rig.Send("\033[1;6L");
  rig.Send(wire::kEntryTimeout30);
  rig.Send(wire::kEntryOptions);
  rig.Send("\033[4NOSUCHWORD\x02secret\x03");
  EXPECT_EQ(rig.Trace(),
            "host: GETVERSION\n"
            "terminal: answer: version V1.0.0|20240615\n"
            "host: PIN length 6\n"
            "host: PIN entry time-out 30 s\n"
            "host: PIN display style 0\n"
            "host: unknown command \"\\e[4NOSUCHWORD\" (21 bytes)\n"
            "terminal: answer: refusal\n");
}

TEST(Trace, TellsTheTimeAtWhichThingsHappened) {
  ListedCustomer customer;
  customer.actions = {WalksAway()};
  std::vector<Time> times;
  Device device(Line::kSerial, customer, {}, [&](const TraceEvent& event) { times.push_back(event.time); });
  device.Receive(ToBytes("\033[1;5T"), 1000ms);
  device.Receive(ToBytes("\x82"), 1010ms);
  device.Advance(60s);
  EXPECT_EQ(times, (std::vector<Time>{1010ms, 1010ms, 6010ms}));
}

TEST(Answers, ThatNobodyTakesAreBounded) {
  Rig rig;
  for (int i = 0; i < 5000; ++i) rig.Send(wire::kGetVersion);
  int count = 0;
  while (rig.Answer() != "(none)") ++count;
  EXPECT_EQ(count, 256);
}

TEST(Device, GoesOnAfterItWasMoved) {
  ListedCustomer customer;
  customer.actions = {Keys("1234")};
  Device first(Line::kUsb, customer);
  first.Receive(ToBytes("\x82"), 0ms);
  Device second(std::move(first));
  second.Advance(100ms);
  EXPECT_EQ(second.TakeAnswer(), ToBytes("1234\r"));
}

TEST(Device, TakesATimeThatGoesBackwardsForNow) {
  Rig rig;
  rig.customer.actions = {Keys("1234")};
  rig.Wait(10s);
  rig.now = 0ms;
  rig.Send("\x82");
  EXPECT_EQ(rig.device().NextDeadline(), 10100ms);
}

}  // namespace
}  // namespace gwq::terminal::test
