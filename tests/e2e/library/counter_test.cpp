// SPDX-License-Identifier: MIT
// The counter commands against the virtual terminal, with keys and blocks really computed on both sides.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdlib>

#include "bank_keys.h"
#include "e2e/library/library.h"

namespace gwq::test {
namespace {

constexpr int kBaud = 115200;
constexpr int kSerialPort = 78;
constexpr char kAccount[] = "6225880123456789";

bool HoldsZeroByte(const std::string& hex) {
  for (std::size_t i = 0; i < hex.size(); i += 2) {
    if (hex.compare(i, 2, "00") == 0) return true;
  }
  return false;
}

struct Keys {
  example::Key master = example::NewKey();
  example::Key working = example::NewKey();

  // A zero byte in the enciphered key would cut it short on the way.
  std::string WorkingUnderMaster() {
    std::string sent = example::Hex(example::Encipher(working, master));
    while (HoldsZeroByte(sent)) {
      working = example::NewKey();
      sent = example::Hex(example::Encipher(working, master));
    }
    return sent;
  }
};

class Counter : public testing::Test {
 protected:
  int Update(int index, std::string new_key, std::string old_key) {
    return lib.update_master_key(port, kBaud, index, new_key.data(), old_key.data());
  }

  void LoadKeys() {
    std::string old_key;
    for (int i = 0; i < 16; ++i) old_key += "31";
    ASSERT_EQ(0, lib.reset_key(port, kBaud));
    ASSERT_EQ(0, Update(0, example::Hex(keys.master), old_key));
    std::string sent = keys.WorkingUnderMaster();
    ASSERT_EQ(0, lib.load_working_key(port, kBaud, 0, 15, sent.data()));
    ASSERT_EQ(0, lib.activate_working_key(port, kBaud, 0, 15));
  }

  std::string PinInBlock(const std::string& block, const std::string& account) {
    const auto clear = example::Decipher(block, keys.working);
    return clear ? example::PinIn(*clear, account).value_or("") : "";
  }

  void ExpectWholeSession() {
    LoadKeys();
    ASSERT_EQ(0, lib.set_pin_len(port, kBaud, 6));
    std::array<char, 16> pin{};
    EXPECT_EQ(0, lib.read_pin(port, kBaud, 0, 30, pin.data(), 15));
    EXPECT_STREQ("123456", pin.data());
    std::array<char, 1025> block{};
    EXPECT_EQ(0, lib.read_pin_des(port, kBaud, 1, 0, 30, block.data()));
    EXPECT_EQ("123456", PinInBlock(block.data(), ""));
    block.fill(0);
    std::string account = kAccount;
    EXPECT_EQ(0, lib.read_pin_ansi(port, kBaud, 0, 1, 30, account.data(), block.data()));
    EXPECT_EQ("123456", PinInBlock(block.data(), kAccount));
  }

  Library lib;
  int port = 0;
  Keys keys;
};

using CounterOnUsb = Counter;
using SecondIdentity = Counter;
using NoTerminal = Counter;
using CustomerCancels = Counter;
using CustomerWalksAway = Counter;

class CounterOnSerial : public Counter {
 protected:
  CounterOnSerial() { port = kSerialPort; }
};

TEST_F(CounterOnUsb, LoadsKeysAndRecoversThePinFromBothBlocks) {
  ExpectWholeSession();
}

TEST_F(CounterOnSerial, LoadsKeysAndRecoversThePinFromBothBlocks) {
  ExpectWholeSession();
}

TEST_F(CounterOnUsb, ReadsTheBuildDateWhateverThePort) {
  std::array<char, 9> date{};
  EXPECT_EQ(0, lib.build_date(5, 'x', kBaud, date.data()));
  EXPECT_STREQ("20240615", date.data());
  EXPECT_EQ(1, lib.takes_utf8());
}

TEST_F(CounterOnUsb, AWrongOldKeyIsRefused) {
  std::string zeros_free_key = example::Hex(keys.master);
  EXPECT_EQ(GWQ_REFUSED, Update(1, zeros_free_key, example::Hex(example::NewKey())));
}

TEST_F(CounterOnUsb, APinBlockWithoutAnActiveKeyIsRefusedAndTheBufferHoldsZeros) {
  ASSERT_EQ(0, lib.reset_key(port, kBaud));
  std::array<char, 1025> block{};
  EXPECT_EQ(GWQ_REFUSED, lib.read_pin_des(port, kBaud, 0, 0, 30, block.data()));
  EXPECT_EQ(std::string(1024, '0'), block.data());
}

TEST_F(CounterOnUsb, APinLongerThanTheBufferGivesTooSmallAndTheNextEntryWorks) {
  ASSERT_EQ(0, lib.set_pin_len(port, kBaud, 6));
  std::array<char, 16> pin{};
  EXPECT_EQ(GWQ_TOO_SMALL, lib.read_pin(port, kBaud, 1, 30, pin.data(), 5));
  EXPECT_STREQ("", pin.data());
  EXPECT_EQ(0, lib.read_pin(port, kBaud, 1, 30, pin.data(), 6));
  EXPECT_STREQ("123456", pin.data());
}

TEST_F(CounterOnUsb, CommandsOfTwoAndThreeReportsReachTheTerminalAsOneEach) {
  for (const std::size_t length :
       {std::size_t{1023}, std::size_t{1024}, std::size_t{1025}, std::size_t{2048}, std::size_t{2049}}) {
    std::string command = "\x1B[9UNKNOWN\x02";
    command.resize(length - 1, 'x');
    command += '\x03';
    std::string answer(2048, '\0');
    int answer_length = 1024;
    EXPECT_EQ(0, lib.trans_proc(0, kBaud, command.data(), static_cast<int>(command.size()), answer.data(),
                                &answer_length, 2000));
    EXPECT_STREQ("\x02U\x03", answer.c_str()) << length << " bytes";
    // Nothing may be left over from it.
    std::array<char, 9> date{};
    EXPECT_EQ(0, lib.build_date(0, 0, kBaud, date.data()));
    EXPECT_STREQ("20240615", date.data());
  }
}

TEST_F(SecondIdentity, IsFoundWhenTheFirstIsNotThere) {
  std::array<char, 9> date{};
  EXPECT_EQ(0, lib.build_date(0, 0, kBaud, date.data()));
  EXPECT_STREQ("20240615", date.data());
}

TEST_F(NoTerminal, GivesNotOpenedOnUsbAndOnAPortThatIsNotThere) {
  std::array<char, 9> date{};
  EXPECT_EQ(GWQ_NOT_OPENED, lib.build_date(0, 0, kBaud, date.data()));
  EXPECT_STREQ("", date.data());
  EXPECT_EQ(0, lib.takes_utf8());
  EXPECT_EQ(GWQ_NOT_OPENED, lib.set_pin_len(200, kBaud, 6));
}

TEST_F(CustomerCancels, ABlockReadIsRefused) {
  LoadKeys();
  std::array<char, 1025> block{};
  EXPECT_EQ(GWQ_REFUSED, lib.read_pin_des(port, kBaud, 0, 0, 30, block.data()));
}

TEST_F(CustomerWalksAway, TheReadEndsWithItsTimeOut) {
  std::array<char, 16> pin{};
  EXPECT_EQ(GWQ_READ_FAILED, lib.read_pin(port, kBaud, 0, 1, pin.data(), 15));
  EXPECT_STREQ("", pin.data());
}

}  // namespace
}  // namespace gwq::test
