// SPDX-License-Identifier: MIT
// PIN entries in clear, and how entries end.
#include <gtest/gtest.h>

#include "unit/terminal/device/rig.h"

namespace gwq::terminal::test {
namespace {

TEST(ClearEntry, AnswersTheDigitsAndACrWhenTheCustomerIsDone) {
  for (const Line line : {Line::kUsb, Line::kSerial}) {
    Rig rig(line);
    rig.customer.actions = {Keys("123456", 300ms)};
    rig.Feed("\x82");
    EXPECT_EQ(rig.device().NextDeadline(), 300ms);
    rig.Wait(299ms);
    EXPECT_EQ(rig.Answer(), "(none)");
    rig.Wait(1ms);
    EXPECT_EQ(rig.Answer(), "123456\r");
    EXPECT_EQ(rig.device().NextDeadline(), std::nullopt);
  }
}

TEST(ClearEntry, FollowsTheSettingsOverSerialWithoutSilenceBetween) {
  Rig rig(Line::kSerial);
  rig.customer.actions = {Keys("123456789")};
  rig.Feed("\033[1;6L\033[1;0X\033[1;10T\x82");
  rig.Wait(100ms);
  EXPECT_EQ(rig.Answer(), "123456\r");
  EXPECT_EQ(rig.customer.requests.at(0).time_left, 10s);
}

TEST(ClearEntry, InMode1AsksOnceMore) {
  Rig rig;
  rig.customer.actions = {WalksAway(), WalksAway()};
  rig.Send("\x82");
  rig.Send("\x81");
  ASSERT_EQ(rig.customer.requests.size(), 2U);
  EXPECT_FALSE(rig.customer.requests[0].again);
  EXPECT_TRUE(rig.customer.requests[1].again);
}

TEST(ClearEntry, AnswersAtOnceWhenTheCustomerNeedsNoTime) {
  Rig rig;
  rig.customer.actions = {Keys("1234", 0ms), Keys("1234", -5ms)};
  EXPECT_EQ(rig.Ask("\x82"), "1234\r");
  EXPECT_EQ(rig.Ask("\x82"), "1234\r");
}

TEST(ClearEntry, TakesOnlyDigitsAndNoneTooMany) {
  Rig rig;
  rig.customer.actions = {Keys("1-2a3 4567\37789")};
  rig.Send("\033[1;5L");
  rig.Send("\x82");
  rig.Wait(100ms);
  EXPECT_EQ(rig.Answer(), "12345\r");
}

TEST(ClearEntry, OfTooFewDigitsWaitsForTheTimeout) {
  Rig rig;
  rig.customer.actions = {Keys("123")};
  rig.Send("\033[1;5T");
  rig.Send("\x82");
  EXPECT_EQ(rig.device().NextDeadline(), 5s);
  rig.Wait(5s);
  EXPECT_EQ(rig.Answer(), "(none)");
  EXPECT_EQ(rig.device().NextDeadline(), std::nullopt);
}

TEST(ClearEntry, IsTracedWithoutThePin) {
  Rig rig;
  rig.customer.actions = {Keys("987654")};
  rig.Send("\x81");
  rig.Wait(100ms);
  EXPECT_EQ(rig.Trace(),
            "host: PIN entry, mode 1, 30 s\n"
            "customer: keys a PIN (6 digits, masked)\n"
            "terminal: answer: PIN in clear (6 digits, masked)\n");
}

TEST(Entry, ACancelIsAnsweredByTheRefusal) {
  Rig rig;
  LoadKeys(rig, kMasterHex);
  for (const std::string command : {"\x82", "\x81", "\033F00\r\n", "\033I00000000\r\n"}) {
    rig.customer.actions = {Cancels(250ms)};
    rig.Send(command);
    rig.Wait(249ms);
    EXPECT_EQ(rig.Answer(), "(none)");
    rig.Wait(1ms);
    EXPECT_EQ(rig.Answer(), wire::kRefused);
    rig.Wait(100s);
    EXPECT_EQ(rig.Answer(), "(none)");
  }
}

TEST(Entry, OfACustomerWhoWalksAwayTimesOutWithoutAnAnswer) {
  Rig rig;
  LoadKeys(rig, kMasterHex);
  rig.Send("\033[1;7T");
  for (const std::string command : {"\x82", "\x81", "\033F00\r\n", "\033I00000000\r\n"}) {
    rig.customer.actions = {WalksAway()};
    rig.Send(command);
    EXPECT_EQ(rig.device().NextDeadline(), rig.now + 7s);
    rig.Wait(7s);
    EXPECT_EQ(rig.Answer(), "(none)");
    EXPECT_EQ(rig.device().NextDeadline(), std::nullopt);
  }
}

TEST(Entry, KeysAfterTheTimeoutAreLost) {
  Rig rig;
  rig.Send("\033[1;2T");
  for (const Time after : {Time(2s), Time(3s), Time::max()}) {
    rig.customer.actions = {Keys("1234", after)};
    rig.Send("\x82");
    EXPECT_EQ(rig.device().NextDeadline(), rig.now + 2s);
    rig.Wait(10s);
    EXPECT_EQ(rig.Answer(), "(none)");
  }
}

TEST(Entry, KeysJustBeforeTheTimeoutCount) {
  Rig rig;
  rig.Send("\033[1;2T");
  rig.customer.actions = {Keys("1234", 1999ms)};
  rig.Send("\x82");
  rig.Wait(10s);
  EXPECT_EQ(rig.Answer(), "1234\r");
}

TEST(Entry, IsEndedByTheEndByte) {
  Rig rig;
  rig.customer.actions = {Keys("1234")};
  rig.Send("\x82");
  EXPECT_EQ(rig.Ask("\x83"), "(none)");
  EXPECT_EQ(rig.device().NextDeadline(), std::nullopt);
  rig.Wait(60s);
  EXPECT_EQ(rig.Answer(), "(none)");
}

TEST(Entry, TheEndByteWithoutAnEntryIsNotAnswered) {
  Rig rig;
  EXPECT_EQ(rig.Ask("\x83"), "(none)");
  EXPECT_EQ(rig.Trace(), "host: end of PIN entry\n");
}

TEST(Entry, ANewOneEndsTheOneThatWaits) {
  Rig rig;
  rig.customer.actions = {Keys("1111", 500ms), Keys("2222", 900ms)};
  rig.Send("\x82");
  rig.Wait(100ms);
  rig.Send("\x82");
  rig.Wait(500ms);
  EXPECT_EQ(rig.Answer(), "(none)");
  rig.Wait(400ms);
  EXPECT_EQ(rig.Answer(), "2222\r");
  rig.Wait(60s);
  EXPECT_EQ(rig.Answer(), "(none)");
}

TEST(Entry, OtherCommandsGoOnMeanwhile) {
  Rig rig;
  rig.customer.actions = {Keys("1234")};
  rig.Send("\x82");
  EXPECT_EQ(rig.Ask(wire::kGetVersion), "\x02V1.0.0|20240615\x03");
  rig.Wait(100ms);
  EXPECT_EQ(rig.Answer(), "1234\r");
}

TEST(Entry, ANewTimeoutAppliesToTheNextEntryOnly) {
  Rig rig;
  rig.customer.actions = {WalksAway(), WalksAway()};
  rig.Send("\x82");
  rig.Send("\033[1;5T");
  EXPECT_EQ(rig.device().NextDeadline(), 30s);
  rig.Send("\x82");
  EXPECT_EQ(rig.device().NextDeadline(), 5s);
}

}  // namespace
}  // namespace gwq::terminal::test
