// SPDX-License-Identifier: MIT
// PIN blocks: deciphered here with the same key by other means, they must give
// back the PIN.
#include "device/pad/pin_block.h"

#include <gtest/gtest.h>

#include <set>

#include "unit/terminal/device/rig.h"

namespace gwq::terminal::test {

using namespace device;
namespace {

constexpr std::string_view kSingle = "133457799BBCDFF1";
constexpr std::string_view kDouble = "A1B2C3D4E5F60718293A4B5C6D7E8F90";
constexpr std::string_view kTriple = "A1B2C3D4E5F60718293A4B5C6D7E8F900F1E2D3C4B5A6978";

// The clear block in an answer frame, as hex; checks the frame on the way.
std::string ClearBlock(const std::string& answer, std::string_view key) {
  if (answer.size() != 20 || answer.front() != '\x02' || answer.back() != '\x03')
    return "no block: " + answer;
  const auto merged = Unsplit(std::string_view(answer).substr(1, 18));
  EXPECT_EQ(merged[0], 0x10);
  return ToHex(PlainDes(FromHex(key), std::span<const std::uint8_t>(merged).subspan(1), false));
}

std::string AskBlock(Rig& rig, std::string_view command, std::string pin) {
  rig.customer.actions.push_back(Keys(std::move(pin)));
  rig.Send(command);
  EXPECT_EQ(rig.Answer(), "(none)") << "an answer before the customer did anything";
  rig.Wait(100ms);
  return rig.Answer();
}

TEST(DesBlock, GivesThePinUnderEveryKeyLength) {
  for (const std::string_view key : {kSingle, kDouble, kTriple}) {
    Rig rig;
    LoadKeys(rig, key);
    const std::string clear = ClearBlock(AskBlock(rig, "\033F00\r\n", "123456"), key);
    ASSERT_EQ(clear.size(), 16U) << clear;
    EXPECT_EQ(clear.substr(0, 8), "16123456");
  }
}

TEST(DesBlock, OfTheSamePinDiffersEachTime) {
  Rig rig;
  LoadKeys(rig, kDouble);
  std::set<std::string> blocks;
  for (int i = 0; i < 20; ++i) blocks.insert(AskBlock(rig, "\033F00\r\n", "1234"));
  EXPECT_EQ(blocks.size(), 20U);
}

TEST(AnsiBlock, GivesThePinAndTheAccount) {
  for (const std::string_view key : {kSingle, kDouble, kTriple}) {
    Rig rig;
    LoadKeys(rig, key);
    const std::string answer = AskBlock(rig, "\033I004321987654321098\r\n", "1234");
    EXPECT_EQ(ClearBlock(answer, key), "04122D789ABCDEF6");
  }
}

TEST(AnsiBlock, TakesZerosForAnAccountThatIsMissing) {
  Rig rig;
  LoadKeys(rig, kDouble);
  EXPECT_EQ(ClearBlock(AskBlock(rig, "\033I00000000\r\n", "1234"), kDouble), "041234FFFFFFFFFF");
  EXPECT_EQ(ClearBlock(AskBlock(rig, "\033I00\r\n", "1234"), kDouble), "041234FFFFFFFFFF");
}

TEST(AnsiBlock, FillsAShortAccountOnTheLeft) {
  Rig rig;
  LoadKeys(rig, kDouble);
  EXPECT_EQ(ClearBlock(AskBlock(rig, "\033I001234567\r\n", "1234"), kDouble), "041234FFFFEDCBA9");
}

TEST(AnsiBlock, OfAnAccountThatIsNoNumberIsRefused) {
  Rig rig;
  LoadKeys(rig, kDouble);
  EXPECT_EQ(rig.Ask("\033I0012345678901234X\r\n"), wire::kRefused);
  EXPECT_TRUE(rig.customer.requests.empty());
}

TEST(Block, HoldsPinsOfEveryLength) {
  const std::string digits = "12345678901234";
  for (std::size_t size = 1; size <= digits.size(); ++size) {
    const auto pin = ToBytes(digits.substr(0, size));
    const auto with = PinBlockWithAccount(pin, "");
    const auto without = PinBlockWithoutAccount(pin);
    ASSERT_TRUE(with && without);
    constexpr std::string_view kLengths = "0123456789ABCDE";
    const std::string tail = kLengths[size] + digits.substr(0, size);
    EXPECT_EQ(ToHex(*with), "0" + tail + std::string(14 - size, 'F'));
    EXPECT_EQ(ToHex(*without).substr(0, size + 2), "1" + tail);
  }
}

TEST(Block, CannotHoldAnythingElse) {
  for (const char* pin : {"", "123456789012345", "12a4"}) {
    EXPECT_FALSE(PinBlockWithAccount(ToBytes(pin), "")) << pin;
    EXPECT_FALSE(PinBlockWithoutAccount(ToBytes(pin))) << pin;
  }
  EXPECT_FALSE(PinBlockWithAccount(ToBytes("1234"), "12x4"));
}

TEST(Block, IsRefusedWithoutAnActiveKey) {
  Rig rig;
  EXPECT_EQ(rig.Ask("\033F00\r\n"), wire::kRefused);
  EXPECT_EQ(rig.Ask("\033I00000000\r\n"), wire::kRefused);
  EXPECT_TRUE(rig.customer.requests.empty());
}

TEST(Block, IsRefusedWhenTheKeyGoesWhileTheCustomerKeys) {
  Rig rig;
  LoadKeys(rig, kDouble);
  rig.customer.actions = {Keys("1234")};
  rig.Send("\033F00\r\n");
  ASSERT_EQ(rig.Ask(wire::kResetKeys), wire::kKeyAccepted);
  rig.Wait(100ms);
  EXPECT_EQ(rig.Answer(), wire::kRefused);
}

TEST(Block, ByTripleDesOnlyIsRefusedUnderASingleKey) {
  Rig rig;
  LoadKeys(rig, kSingle);
  EXPECT_EQ(rig.Ask("\033F10\r\n"), wire::kRefused);
  EXPECT_EQ(rig.Ask("\033I10000000\r\n"), wire::kRefused);
}

TEST(Block, ByTripleDesOnlyIsMadeUnderALongerKey) {
  Rig rig;
  LoadKeys(rig, kDouble);
  EXPECT_EQ(ClearBlock(AskBlock(rig, "\033I10000000\r\n", "1234"), kDouble), "041234FFFFFFFFFF");
}

TEST(Block, TheSecondDigitSetsThePrompt) {
  for (int digit = 0; digit < 4; ++digit) {
    Rig rig;
    LoadKeys(rig, kDouble);
    AskBlock(rig, "\033F0" + std::to_string(digit) + "\r\n", "1234");
    ASSERT_EQ(rig.customer.requests.size(), 1U);
    EXPECT_EQ(rig.customer.requests[0].again, digit == 1 || digit == 3) << digit;
    EXPECT_EQ(rig.customer.requests[0].ends_when_full, digit >= 2) << digit;
  }
}

TEST(Block, OtherDigitsAreRefused) {
  Rig rig;
  LoadKeys(rig, kDouble);
  EXPECT_EQ(rig.Ask("\033F20\r\n"), wire::kRefused);
  EXPECT_EQ(rig.Ask("\033F04\r\n"), wire::kRefused);
  EXPECT_EQ(rig.Ask("\033I04000000\r\n"), wire::kRefused);
}

TEST(Block, IsTheOneOfTheKeyThatWasActivatedLast) {
  Rig rig;
  LoadKeys(rig, kDouble);
  const auto second = PlainDes(FromHex(kMasterHex), FromHex(kTriple), true);
  ASSERT_EQ(rig.Ask(WorkingKeyCommand(3, 8, ToHex(second))), wire::kKeyAccepted);
  EXPECT_EQ(ClearBlock(AskBlock(rig, "\033I00\r\n", "1234"), kDouble), "041234FFFFFFFFFF");
  ASSERT_EQ(rig.Ask(ActivateCommand(3, 8)), wire::kKeyAccepted);
  EXPECT_EQ(ClearBlock(AskBlock(rig, "\033I00\r\n", "1234"), kTriple), "041234FFFFFFFFFF");
}

TEST(Block, IsTracedWithoutThePin) {
  Rig rig;
  LoadKeys(rig, kDouble);
  const std::size_t before = rig.Trace().size();
  AskBlock(rig, "\033I014321987654321098\r\n", "123456");
  EXPECT_EQ(rig.Trace().substr(before),
            "host: ANSI PIN block, 0 1, 30 s\n"
            "customer: keys a PIN (6 digits, masked)\n"
            "terminal: answer: PIN block (8 bytes)\n");
}

}  // namespace
}  // namespace gwq::terminal::test
