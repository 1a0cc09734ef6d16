// SPDX-License-Identifier: MIT
#include "faults/hostility.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <vector>

#include "faults/fault_rates.h"
#include "faults/faulty_line.h"
#include "unit/terminal/device/rig.h"

namespace gwq::terminal::test {

using namespace device;
using namespace faults;
namespace {

constexpr Time kNever{1'000'000};
const Bytes kAnswer = ToBytes(
    "\x02"
    "V1.0.0|20240615"
    "\x03");

Hostility Certain(const std::string& fault) {
  return {ParseRates("seed=1," + fault + "=100"), 0};
}

// All that arrives of `count` answers.
std::vector<Bytes> Arrivals(Hostility hostility, int count = 1, Time until = kNever) {
  for (int i = 0; i < count; ++i) hostility.Send(kAnswer, Time{0});
  std::vector<Bytes> arrived;
  while (const auto bytes = hostility.Take(until)) arrived.push_back(*bytes);
  return arrived;
}

std::size_t Differences(const Bytes& bytes) {
  std::size_t count = 0;
  for (std::size_t i = 0; i < bytes.size(); ++i) count += bytes[i] != kAnswer[i] ? 1U : 0U;
  return count;
}

TEST(FaultRates, ASeedAloneHasEveryFaultNowAndThen) {
  const FaultRates rates = ParseRates("seed=7");
  EXPECT_EQ(rates.seed, 7U);
  EXPECT_TRUE(
      std::all_of(rates.percent.begin(), rates.percent.end(), [](double p) { return p > 0 && p < 5; }));
}

TEST(FaultRates, NamedFaultsAreTheOnlyOnes) {
  const FaultRates rates = ParseRates("drop=2.5,seed=7,unplug=100");
  EXPECT_EQ(rates.seed, 7U);
  EXPECT_EQ(rates.PercentOf(Fault::kDrop), 2.5);
  EXPECT_EQ(rates.PercentOf(Fault::kUnplug), 100);
  EXPECT_EQ(std::count(rates.percent.begin(), rates.percent.end(), 0), 9);
}

TEST(FaultRates, IsReadBackFromItsText) {
  const FaultRates rates = ParseRates("seed=18446744073709551615,flip=0.125,stall=3");
  const FaultRates again = ParseRates(RatesText(rates));
  EXPECT_EQ(again.seed, rates.seed);
  EXPECT_EQ(again.percent, rates.percent);
}

TEST(FaultRates, WithoutASeedThereIsANewOneEachTime) {
  EXPECT_NE(ParseRates("drop=1").seed, ParseRates("drop=1").seed);
}

TEST(FaultRates, NonsenseIsRefused) {
  for (const char* text : {"seed", "seed=", "seed=-1", "drop=101", "drop=-1", "drop=1x", "drop=nan", "rain=1",
                           "7", "seed=18446744073709551616"})
    EXPECT_THROW(static_cast<void>(ParseRates(text)), std::runtime_error) << text;
}

TEST(Hostility, LetsEverythingPassWhenNoFaultHappens) {
  Hostility hostility(ParseRates("seed=1,drop=0"), 0);
  EXPECT_EQ(hostility.NextOut().fate, TransferFate::kPasses);
  EXPECT_EQ(hostility.NextIn().fate, TransferFate::kPasses);
  EXPECT_EQ(Arrivals(std::move(hostility), 2, Time{0}), (std::vector<Bytes>{kAnswer, kAnswer}));
}

TEST(Hostility, DropsAnswers) {
  EXPECT_TRUE(Arrivals(Certain("drop"), 10).empty());
}

TEST(Hostility, DelaysAnswersAndSaysUntilWhen) {
  Hostility hostility = Certain("delay");
  hostility.Send(kAnswer, 100ms);
  const auto arrival = hostility.NextArrival();
  ASSERT_TRUE(arrival);
  EXPECT_GT(*arrival, 100ms);
  EXPECT_FALSE(hostility.Take(*arrival - 1ms));
  EXPECT_EQ(hostility.Take(*arrival), kAnswer);
  EXPECT_FALSE(hostility.NextArrival());
}

TEST(Hostility, CutsAnswersAtTheirEnd) {
  for (const Bytes& bytes : Arrivals(Certain("cut"), 20)) {
    EXPECT_LT(bytes.size(), kAnswer.size());
    EXPECT_EQ(Differences(bytes), 0U);
  }
}

TEST(Hostility, RepeatsAnswers) {
  EXPECT_EQ(Arrivals(Certain("repeat")), (std::vector<Bytes>{kAnswer, kAnswer}));
}

TEST(Hostility, FlipsABit) {
  const auto arrived = Arrivals(Certain("flip"), 20);
  ASSERT_EQ(arrived.size(), 20U);
  for (const Bytes& bytes : arrived) {
    ASSERT_EQ(bytes.size(), kAnswer.size());
    EXPECT_EQ(Differences(bytes), 1U);
  }
}

TEST(Hostility, SpoilsBytesWhereLengthsStand) {
  const auto arrived = Arrivals(Certain("length"), 20);
  ASSERT_EQ(arrived.size(), 20U);
  for (const Bytes& bytes : arrived) {
    ASSERT_EQ(bytes.size(), kAnswer.size());
    EXPECT_GE(Differences(bytes), 1U);
    EXPECT_TRUE(std::equal(bytes.begin() + 11, bytes.end(), kAnswer.begin() + 11));
  }
}

TEST(Hostility, SpoilsAByteWhereChecksumsStand) {
  const auto arrived = Arrivals(Certain("checksum"), 20);
  ASSERT_EQ(arrived.size(), 20U);
  for (const Bytes& bytes : arrived) {
    ASSERT_EQ(bytes.size(), kAnswer.size());
    EXPECT_EQ(Differences(bytes), 1U);
    EXPECT_TRUE(std::equal(bytes.begin() + 3, bytes.end() - 3, kAnswer.begin() + 3));
  }
}

TEST(Hostility, SendsGarbageInAnAnswersPlace) {
  const auto arrived = Arrivals(Certain("garbage"), 20);
  ASSERT_EQ(arrived.size(), 20U);
  EXPECT_TRUE(std::any_of(arrived.begin(), arrived.end(), [](const Bytes& b) { return b.size() > 2048; }));
  EXPECT_EQ(std::count(arrived.begin(), arrived.end(), kAnswer), 0);
}

TEST(Hostility, FallsSilentForSeveralAnswers) {
  const FaultRates rates = ParseRates("seed=5,silence=20");
  std::string heard;
  for (Hostility hostility(rates, 0); heard.size() < 200;) {
    hostility.Send(kAnswer, Time{0});
    heard += hostility.Take(kNever) ? 'x' : '.';
  }
  EXPECT_NE(heard.find("x...x"), std::string::npos) << heard;
  EXPECT_NE(heard.find("xx"), std::string::npos) << heard;
}

TEST(Hostility, StallsTransfersInTwoWays) {
  Hostility hostility = Certain("stall");
  int hung = 0;
  for (int i = 0; i < 100; ++i) {
    const Transfer transfer = hostility.NextOut();
    ASSERT_NE(transfer.fate, TransferFate::kPasses);
    EXPECT_TRUE(transfer.part >= 0 && transfer.part < 1);
    hung += transfer.fate == TransferFate::kHangs ? 1 : 0;
  }
  EXPECT_TRUE(hung > 20 && hung < 80) << hung;
}

TEST(Hostility, UnplugsItself) {
  Hostility hostility = Certain("unplug");
  EXPECT_EQ(hostility.NextOut().fate, TransferFate::kUnplugs);
  EXPECT_EQ(hostility.NextIn().fate, TransferFate::kUnplugs);
}

TEST(Hostility, IsTheSameForTheSameSeedAndLineOnly) {
  const FaultRates rates = ParseRates("seed=42,flip=50,cut=20,drop=20");
  const auto first = Arrivals(Hostility(rates, 0), 50);
  EXPECT_EQ(first, Arrivals(Hostility(rates, 0), 50));
  EXPECT_NE(first, Arrivals(Hostility(rates, 1), 50));
  EXPECT_NE(first, Arrivals(Hostility(ParseRates("seed=43,flip=50,cut=20,drop=20"), 0), 50));
}

TEST(Hostility, TransfersDoNotChangeWhatBecomesOfAnswers) {
  const FaultRates rates = ParseRates("seed=42,flip=50,stall=50");
  Hostility busy(rates, 0);
  for (int i = 0; i < 7; ++i) static_cast<void>(busy.NextOut());
  EXPECT_EQ(Arrivals(std::move(busy), 20), Arrivals(Hostility(rates, 0), 20));
}

TEST(Hostility, ItsRatesCanBeChanged) {
  Hostility hostility = Certain("silence");
  hostility.Send(kAnswer, Time{0});
  EXPECT_FALSE(hostility.Take(kNever));
  hostility.SetRates(ParseRates("drop=0"));
  hostility.Send(kAnswer, Time{0});
  EXPECT_EQ(hostility.Take(kNever), kAnswer);
  EXPECT_EQ(hostility.NextOut().fate, TransferFate::kPasses);
}

TEST(FaultyLine, CanBecomeHostileAndAgreeableAgain) {
  ListedCustomer customer;
  Device unit(Line::kUsb, customer);
  FaultyLine line(unit);
  const auto asks = [&line](Time now) {
    line.Receive(ToBytes(PaddedReports(wire::kGetVersion)), now);
    return line.TakeAnswer();
  };
  EXPECT_EQ(asks(10ms), kAnswer);
  line.SetRates(ParseRates("drop=100,stall=100"));
  EXPECT_FALSE(asks(20ms));
  EXPECT_NE(line.NextOut().fate, TransferFate::kPasses);
  line.SetRates(ParseRates("drop=0"));
  EXPECT_EQ(asks(30ms), kAnswer);
  EXPECT_EQ(line.NextIn().fate, TransferFate::kPasses);
}

TEST(FaultyLine, AnswersLateWhenItsLineDelays) {
  ListedCustomer customer;
  Device unit(Line::kUsb, customer);
  FaultyLine line(unit, Certain("delay"));
  line.Receive(ToBytes(PaddedReports(wire::kGetVersion)), 10ms);
  EXPECT_FALSE(line.TakeAnswer());
  const auto deadline = line.NextDeadline();
  ASSERT_TRUE(deadline);
  line.Advance(*deadline);
  EXPECT_EQ(line.TakeAnswer(), kAnswer);
}

TEST(FaultyLine, TakesBackWhatIsOnItsWay) {
  ListedCustomer customer;
  Device unit(Line::kUsb, customer);
  FaultyLine line(unit, Certain("delay"));
  line.Receive(ToBytes(PaddedReports(wire::kGetVersion)), 10ms);
  line.Receive(ToBytes(PaddedReports(wire::kCloseProgram)), 20ms);
  EXPECT_TRUE(line.TakeWithdrawal());
  EXPECT_FALSE(line.TakeWithdrawal());
  line.Advance(10s);
  EXPECT_NE(line.TakeAnswer(), kAnswer);
}

}  // namespace
}  // namespace gwq::terminal::test
