// SPDX-License-Identifier: MIT
// PINs, keys and PIN blocks stay neither on the stack nor in released heap blocks once a call has returned.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string_view>

#include <gwq/frame/transaction.h>
#include <gwq/pinpad/counter.h>
#include "support/log_capture.h"
#include "support/scripted_usb.h"
#include "support/test_clock.h"
#include "unit/pinpad/secret_search.h"
#include "wire/frames.h"

namespace gwq::test {
namespace {

const Bytes kPin = BytesOf("83917264");

__attribute__((noinline)) void LeaveOnStack() {
  std::uint8_t local[16];
  std::copy(kPin.begin(), kPin.end(), local);
  asm volatile("" : : "r"(local) : "memory");
}

TEST(Search, FindsWhatIsLeftOnTheStack) {
  EXPECT_EQ(SearchFor({kPin}, &LeaveOnStack).on_stack.size(), 1U);
  EXPECT_EQ(SearchFor({kPin}, [] {}).on_stack.size(), 0U);
}

TEST(Search, FindsWhatIsLeftInAReleasedBlock) {
  EXPECT_EQ(SearchFor({kPin},
                      [] {
                        void* const block = std::malloc(64);
                        std::copy(kPin.begin(), kPin.end(), static_cast<std::uint8_t*>(block) + 30);
                        asm volatile("" : : "r"(block) : "memory");
                        std::free(block);
                      })
                .in_released_blocks,
            1);
}

// With the log off and on: the line that holds the secret is the library's own block.
class CounterSecrets : public testing::TestWithParam<bool> {
 protected:
  CounterSecrets() {
    SetTime(1'700'000'000);
    usb_.PlugTerminal();
    if (GetParam()) log_ = std::make_unique<LogCapture>();
  }

  ScriptedUsb usb_;
  std::unique_ptr<LogCapture> log_;
};

INSTANTIATE_TEST_SUITE_P(Log, CounterSecrets, testing::Bool(),
                         [](const auto& each) { return each.param ? "On" : "Off"; });

TEST_P(CounterSecrets, ClearPinIsWiped) {
  usb_.ExpectCommand(wire::kEntryOptions)
      .ExpectCommand(wire::kEntryTimeout30)
      .ExpectCommand(wire::kEntryMode0);
  usb_.Answer("83917264\r").ExpectCommand(wire::kLeaveEntry);
  const auto pin = std::make_unique<char[]>(16);
  int result = 1;
  ExpectClean(SearchFor({kPin}, [&] { result = GWQ_ReadPin(0, 0, 0, 30, pin.get(), 15); }));
  EXPECT_EQ(result, 0);
  EXPECT_EQ(std::string_view(pin.get()), "83917264");
}

TEST_P(CounterSecrets, ClearPinIsWipedWhenTheBufferIsTooSmall) {
  usb_.ExpectCommand(wire::kEntryOptions)
      .ExpectCommand(wire::kEntryTimeout30)
      .ExpectCommand(wire::kEntryMode0);
  usb_.Answer("83917264\r").ExpectCommand(wire::kLeaveEntry);
  const auto pin = std::make_unique<char[]>(16);
  int result = 1;
  ExpectClean(SearchFor({kPin}, [&] { result = GWQ_ReadPin(0, 0, 0, 30, pin.get(), 3); }));
  EXPECT_EQ(result, -24);
}

TEST_P(CounterSecrets, ClearPinIsWipedWhenTheAnswerStaysIncomplete) {
  usb_.ExpectCommand(wire::kEntryOptions)
      .ExpectCommand(wire::kEntryTimeout1)
      .ExpectCommand(wire::kEntryMode0);
  usb_.Answer("83917264").ExpectCommand(wire::kLeaveEntry);
  const auto pin = std::make_unique<char[]>(16);
  int result = 1;
  ExpectClean(SearchFor({kPin}, [&] { result = GWQ_ReadPin(0, 0, 0, 1, pin.get(), 15); }));
  EXPECT_EQ(result, -11);
}

// Nothing runs behind the exchange that could write over what it left.
TEST_P(CounterSecrets, AnswerIsWipedFromTheLinksReport) {
  usb_.AnswerReport("83917264F");
  const auto answer = std::make_unique<char[]>(64 + 1024);
  int length = 64;
  int result = 1;
  ExpectClean(SearchFor({kPin}, [&] { result = TransProcOnlyRead(0, 0, answer.get(), &length, 1000); }));
  EXPECT_EQ(result, 0);
}

TEST_P(CounterSecrets, CommandIsWipedFromTheReportItWasSentIn) {
  usb_.ExpectCommand("83917264");
  const auto command = std::make_unique<char[]>(16);
  std::string_view("83917264").copy(command.get(), 8);
  int result = 1;
  ExpectClean(SearchFor({kPin}, [&] { result = TransProcOnlySend(0, 0, command.get(), 8, 1000); }));
  EXPECT_EQ(result, 0);
}

TEST_P(CounterSecrets, PinThatWasDrainedIsWiped) {
  usb_.Answer("83917264\rF").ExpectCommand(wire::kPinLength14);
  int result = 1;
  ExpectClean(SearchFor({kPin}, [&] { result = GWQ_SetPinLen(0, 0, 14); }));
  EXPECT_EQ(result, 0);
}

TEST_P(CounterSecrets, PinBlockIsWipedInAllItsForms) {
  usb_.ExpectCommand(wire::kEntryTimeout30).ExpectCommand(wire::kAnsiBlock).Answer(wire::kBlock8);
  usb_.ExpectCommand(wire::kLeaveEntry);
  const std::string account = "6222021234567890";
  const auto account_text = std::make_unique<char[]>(32);
  account.copy(account_text.get(), account.size());
  const auto block = std::make_unique<char[]>(1025);
  int result = 1;
  const std::vector<Bytes> secrets = {BytesOf(wire::kBlock8.substr(3, 16)),
                                      BytesOf(wire::kBlock8Hex),
                                      {0x5B, 0x3D, 0xFB, 0x9E, 0xD0, 0x26, 0x9E, 0xD0},
                                      BytesOf(account)};
  ExpectClean(
      SearchFor(secrets, [&] { result = GWQ_ReadPinAnsi(0, 0, 1, 2, 30, account_text.get(), block.get()); }));
  EXPECT_EQ(result, 0);
  EXPECT_EQ(std::string_view(block.get()), wire::kBlock8Hex);
}

TEST_P(CounterSecrets, KeysAreWipedInAllTheirForms) {
  usb_.ExpectCommand(
          "\x1BM03"
          ";1>29=4<8757610?"
          "1:;2<3=4>5?60718"
          "\r\n")
      .Answer(wire::kKeyAccepted);
  const auto old_key = std::make_unique<char[]>(32);
  const auto new_key = std::make_unique<char[]>(32);
  std::string_view("B1E29D4C8757610F").copy(old_key.get(), 31);
  std::string_view("1AB2C3D4E5F60718").copy(new_key.get(), 31);
  int result = 1;
  const std::vector<Bytes> secrets = {{0xB1, 0xE2, 0x9D, 0x4C, 0x87, 0x57, 0x61, 0x0F},
                                      {0x1A, 0xB2, 0xC3, 0xD4, 0xE5, 0xF6, 0x07, 0x18},
                                      BytesOf(";1>29=4<8757610?"),
                                      BytesOf("1:;2<3=4>5?60718"),
                                      BytesOf("B1E29D4C8757610F"),
                                      BytesOf("1AB2C3D4E5F60718")};
  ExpectClean(SearchFor(secrets, [&] { result = GWQ_UpdateMKey(0, 0, 3, new_key.get(), old_key.get()); }));
  EXPECT_EQ(result, 0);
}

TEST_P(CounterSecrets, WorkingKeyIsWipedInAllItsForms) {
  usb_.ExpectCommand(
          "\x1BS0102"
          ";1>29=4<8757610?"
          "\r\n")
      .Answer("\x55");
  const auto key = std::make_unique<char[]>(32);
  std::string_view("B1E29D4C8757610F").copy(key.get(), 31);
  int result = 1;
  const std::vector<Bytes> secrets = {{0xB1, 0xE2, 0x9D, 0x4C, 0x87, 0x57, 0x61, 0x0F},
                                      BytesOf(";1>29=4<8757610?"),
                                      BytesOf("B1E29D4C8757610F")};
  ExpectClean(SearchFor(secrets, [&] { result = GWQ_DownLoadWKey(0, 0, 1, 2, key.get()); }));
  EXPECT_EQ(result, -14);
}

}  // namespace
}  // namespace gwq::test
