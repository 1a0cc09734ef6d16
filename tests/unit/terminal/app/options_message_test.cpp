// SPDX-License-Identifier: MIT
// The options as the server gets them.
#include "app/options_message.h"

#include <gtest/gtest.h>

#include <set>
#include <stdexcept>
#include <string>

#include "app/control_channel.h"

namespace gwq::terminal::test {

using namespace faults;
using namespace recording;
using namespace usb;
using namespace app;
namespace {

TerminalOptions AllChanged() {
  TerminalOptions options;
  options.usb = UsbId{0x1209, 0xffff};
  options.serial_port = 256;
  options.pty = true;
  options.usbip = true;
  options.customer_file = "/tmp/\xB9\xF1/customer.json";  // a path need not be UTF-8
  options.storage_dir = std::string(4095, 'd');
  options.keys_dir = "/keys with spaces";
  options.faults_file = "/faults=1";
  options.hostile = ParseRates("seed=7,drop=1,stall=2.5");
  options.tzg = false;
  options.page_port = std::uint16_t{0};
  options.trace = "-";
  options.scenario_file = "/scenario";
  options.history_file = "/history";
  options.record = {"/record", true};
  options.replay = {"/replay", true, BusAddress{300, 200}};
  return options;
}

TEST(OptionsMessage, TellsEachOption) {
  const TerminalOptions sent = AllChanged();
  const TerminalOptions got = ReadOptionsMessage(OptionsMessage(sent));
  ASSERT_TRUE(got.usb.has_value());
  EXPECT_EQ(got.usb->vendor, 0x1209);
  EXPECT_EQ(got.usb->product, 0xffff);
  EXPECT_EQ(got.serial_port, 256);
  EXPECT_TRUE(got.pty);
  EXPECT_TRUE(got.usbip);
  EXPECT_EQ(got.customer_file, sent.customer_file);
  EXPECT_EQ(got.storage_dir, sent.storage_dir);
  EXPECT_EQ(got.keys_dir, sent.keys_dir);
  EXPECT_EQ(got.faults_file, sent.faults_file);
  ASSERT_TRUE(got.hostile.has_value());
  EXPECT_EQ(RatesText(*got.hostile), RatesText(*sent.hostile));
  EXPECT_FALSE(got.tzg);
  EXPECT_EQ(got.page_port, std::uint16_t{0});
  EXPECT_EQ(got.trace, "-");
  EXPECT_EQ(got.scenario_file, "/scenario");
  EXPECT_EQ(got.history_file, "/history");
  EXPECT_EQ(got.record.file, "/record");
  EXPECT_TRUE(got.record.secrets);
  EXPECT_EQ(got.replay.file, "/replay");
  EXPECT_TRUE(got.replay.fast);
  EXPECT_EQ(got.replay.device, (BusAddress{300, 200}));
}

TEST(OptionsMessage, TellsWhichOptionsThereAreNot) {
  const TerminalOptions got = ReadOptionsMessage(OptionsMessage({}));
  EXPECT_FALSE(got.usb || got.serial_port || got.hostile || got.page_port || got.trace || got.replay.device);
  EXPECT_TRUE(got.tzg);
  EXPECT_FALSE(got.pty);
  EXPECT_FALSE(got.usbip);
  EXPECT_EQ(got.customer_file, "");
}

TEST(OptionsMessage, HasANameOfItsOwnForEachOption) {
  TerminalOptions options;
  std::set<std::string> names;
  int count = 0;
  VisitOptions(options, [&](const char* name, const auto&) {
    names.insert(name);
    ++count;
  });
  EXPECT_EQ(names.size(), static_cast<std::size_t>(count));
}

TEST(OptionsMessage, RefusesAnotherMessage) {
  for (const char* text : {"", "done", "{}", "\xA0"}) {
    EXPECT_THROW(static_cast<void>(ReadOptionsMessage(text)), std::exception) << text;
  }
}

TEST(ReadyMessage, TellsTheVariables) {
  const Variables sent = {{"DIR", "/tmp/a=b"}, {"EMPTY", ""}, {"LINES", "1\n2"}};
  EXPECT_EQ(ReadReadyMessage(ReadyMessage(sent)), sent);
  EXPECT_TRUE(ReadReadyMessage(ReadyMessage({})).empty());
}

}  // namespace
}  // namespace gwq::terminal::test
