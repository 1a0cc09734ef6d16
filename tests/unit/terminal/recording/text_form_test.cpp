// SPDX-License-Identifier: MIT
#include "recording/text_form.h"

#include <gtest/gtest.h>

#include <random>
#include <stdexcept>
#include <string>

#include "unit/terminal/recording/samples.h"

namespace gwq::terminal::test {

using namespace recording;
namespace {

using namespace std::string_literals;

void ExpectSame(const WireTransfer& one, const WireTransfer& other) {
  EXPECT_EQ(one.time_us, other.time_us);
  EXPECT_EQ(one.wire, other.wire);
  EXPECT_EQ(one.ToHost(), other.ToHost());
  EXPECT_EQ(one.status, other.status);
  EXPECT_EQ(one.setup, other.setup);
  EXPECT_EQ(one.data, other.data);
  EXPECT_EQ(one.masks, other.masks);
}

TEST(TextForm, IsALine) {
  EXPECT_EQ(LineOf(Usb(1'234'567, false, Padded("\033[0GETVERSION"))),
            "1.234567 usb out 02 1024 1b \"[0GETVERSION\" 00*1011");
  WireTransfer timed_out = Usb(2'000'000, true, "");
  timed_out.status = -2;
  EXPECT_EQ(LineOf(timed_out), "2.000000 usb in 81 0 status=-2");
  EXPECT_EQ(LineOf(Usb(0, true, "******\r", {{0, 6}})), "0.000000 usb in 81 7 ?*6 0d");
  EXPECT_EQ(LineOf(Usb(0, true, "a\"bc\x01\x01\x01")), "0.000000 usb in 81 7 61 22 \"bc\" 01 01 01");
  WireTransfer serial = Usb(5, true, "\xAA");
  serial.wire = Wire::kSerial;
  EXPECT_EQ(LineOf(serial), "0.000005 serial in - 1 aa");
  WireTransfer control = Usb(0, true, "\x12\x01");
  control.type = TransferType::kControl;
  control.endpoint = kInBit;
  control.setup = {0x80, 6, 0, 1, 0, 0, 18, 0};
  EXPECT_EQ(LineOf(control), "0.000000 usb control 80 2 setup=8006000100001200 12 01");
}

TEST(TextForm, IsReadBack) {
  std::mt19937 random(1);
  for (int i = 0; i < 2000; ++i) {
    WireTransfer transfer = Usb(static_cast<std::int64_t>(random()), random() % 2 == 0, "");
    if (random() % 3 == 0) transfer.wire = Wire::kSerial;
    if (transfer.wire == Wire::kSerial) transfer.endpoint = transfer.endpoint & kInBit;
    if (random() % 5 == 0) transfer.status = -static_cast<int>(random() % 120);
    while (random() % 6 != 0) {
      const bool text = random() % 2 == 0;
      const auto byte = static_cast<std::uint8_t>(text ? ' ' + random() % 95 : random());
      transfer.data.insert(transfer.data.end(), random() % 9, byte);
    }
    if (transfer.data.size() > 9) transfer.masks = {{1, 2}, {5, 1}};
    ApplyMasks(transfer.data, transfer.masks);
    ExpectSame(ParseLine(LineOf(transfer)), transfer);
  }
}

TEST(TextForm, TellsWhatIsWrong) {
  const auto problem = [](const char* line) -> std::string {
    try {
      static_cast<void>(ParseLine(line));
    } catch (const std::runtime_error& error) {
      return error.what();
    }
    return "nothing";
  };
  EXPECT_EQ(problem("x usb in 81 0"), "'x' is no time in seconds with six decimals");
  EXPECT_EQ(problem("0.000000 can in 81 0"), "the line is neither usb nor serial");
  EXPECT_EQ(problem("0.000000 usb up 81 0"), "the direction is not in, out or control");
  EXPECT_EQ(problem("0.000000 usb in 02 0"), "direction and endpoint do not agree");
  EXPECT_EQ(problem("0.000000 usb in 81"), "there is no length");
  EXPECT_EQ(problem("0.000000 usb in 81 99999999"), "the length is too large");
  EXPECT_EQ(problem("0.000000 usb in 81 18446744073709551615"), "the length is too large");
  EXPECT_EQ(problem("0.000000 usb in 81 2 00"), "there are fewer data than the length says");
  EXPECT_EQ(problem("0.000000 usb in 81 2 00*99999999999"), "there are more data than the length says");
  EXPECT_EQ(problem("0.000000 usb in 81 2 00*99999999999999999999"), "'99999999999999999999' is no count");
  EXPECT_EQ(problem("0.000000 usb in 81 2 \"ab"), "a text has no quotation mark at its end");
  EXPECT_EQ(problem("0.000000 usb in 81 2 \"abc\""), "there are more data than the length says");
  EXPECT_EQ(problem("0.000000 usb in 81 2 0 0"), "'0' is no byte");
  EXPECT_EQ(problem("0.000000 usb control 80 0 setup=80"), "the setup packet is not 16 hexadecimal digits");
}

}  // namespace
}  // namespace gwq::terminal::test
