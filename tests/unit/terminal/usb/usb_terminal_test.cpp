// SPDX-License-Identifier: MIT
// The USB device as whoever carries it to a host uses it.
#include "usb/usb_terminal.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <vector>

#include "customer/agreeable.h"
#include "unit/terminal/device/rig.h"
#include "usb/loose_cable.h"
#include "usb/usb_descriptors.h"

namespace gwq::terminal::test {

using namespace device;
using namespace customer;
using namespace faults;
using namespace usb;
namespace {

constexpr UsbId kId{0x1209, 0x0001};
const std::string kGetVersion(wire::kGetVersion);
const std::string kVersion = "\x02V1.0.0|20240615\x03";

Urb Out(Urb::Id id, const std::string& text) {
  Bytes payload = ToBytes(text);
  payload.resize(kReportSize);
  return {id, Urb::Kind::kData, kEndpointOut, std::move(payload)};
}
Urb In(Urb::Id id, std::size_t room = kReportSize) {
  return {id, Urb::Kind::kData, kEndpointIn, Bytes(room)};
}

class UsbTerminalTest : public testing::Test {
 protected:
  UsbTerminalTest() { Plug(); }
  ~UsbTerminalTest() override {
    if (connected_) usb_.Disconnect(client_);
  }

  void Plug() {
    usb_.Plug([this](bool reapable) { reapable_.push_back(reapable); });
    usb_.Connect(client_);
    connected_ = true;
  }
  void Claim() {
    ASSERT_EQ(usb_.DetachDriver(), 0);
    ASSERT_EQ(usb_.Claim(client_, 0), 0);
  }
  Urb Reaped() {
    std::optional<Urb> urb = usb_.Reap(client_);
    EXPECT_TRUE(urb.has_value());
    return urb.value_or(Urb{});
  }

  Clock clock_;
  AgreeableCustomer customer_;
  std::vector<bool> reapable_;
  Device unit_{Line::kUsb, customer_};
  UsbTerminal usb_{kId, {unit_}, clock_, [] {}};
  UsbClient client_;
  bool connected_ = false;
};

TEST_F(UsbTerminalTest, BelongsToTheHidDriverUntilThatIsDetached) {
  EXPECT_EQ(usb_.Driver(), "usbhid");
  EXPECT_EQ(usb_.Claim(client_, 0), EBUSY);
  Claim();
  EXPECT_EQ(usb_.Driver(), "usbfs");
}

TEST_F(UsbTerminalTest, HasOneOwnerAtATime) {
  Claim();
  UsbClient other;
  usb_.Connect(other);
  EXPECT_EQ(usb_.Claim(other, 0), EBUSY);
  usb_.Disconnect(client_);
  connected_ = false;
  EXPECT_EQ(usb_.Claim(other, 0), 0);
  usb_.Disconnect(other);
}

TEST_F(UsbTerminalTest, AnswersACommandInAWholeReport) {
  Claim();
  ASSERT_EQ(usb_.Submit(client_, Out(1, kGetVersion)), 0);
  ASSERT_EQ(usb_.Submit(client_, In(2)), 0);
  const Urb out = Reaped();
  EXPECT_EQ(out.id, 1U);
  EXPECT_EQ(out.status, 0);
  EXPECT_EQ(out.moved, kReportSize);
  const Urb in = Reaped();
  EXPECT_EQ(in.id, 2U);
  EXPECT_EQ(in.moved, kReportSize);
  EXPECT_EQ(ToText(in.received).substr(0, kVersion.size() + 1), kVersion + '\0');
}

TEST_F(UsbTerminalTest, SaysWhetherThereIsSomethingToReap) {
  Claim();
  reapable_.clear();
  ASSERT_EQ(usb_.Submit(client_, In(1)), 0);
  ASSERT_FALSE(reapable_.empty());
  EXPECT_FALSE(reapable_.back());
  ASSERT_EQ(usb_.Submit(client_, Out(2, kGetVersion)), 0);
  EXPECT_TRUE(reapable_.back());
  Reaped();
  EXPECT_TRUE(reapable_.back()) << "there is a second one";
  Reaped();
  EXPECT_FALSE(reapable_.back());
}

TEST_F(UsbTerminalTest, GivesADiscardedTransferBack) {
  Claim();
  ASSERT_EQ(usb_.Submit(client_, In(7)), 0);
  EXPECT_EQ(usb_.Discard(client_, 8), EINVAL);
  EXPECT_EQ(usb_.Discard(client_, 7), 0);
  const Urb urb = Reaped();
  EXPECT_EQ(urb.id, 7U);
  EXPECT_EQ(urb.status, -ENOENT);
  EXPECT_EQ(urb.moved, 0U);
}

TEST_F(UsbTerminalTest, EndsWhatWaitsWhenItIsUnplugged) {
  Claim();
  ASSERT_EQ(usb_.Submit(client_, In(1)), 0);
  usb_.Unplug();
  EXPECT_TRUE(usb_.IsUnplugged(client_));
  EXPECT_EQ(Reaped().status, -ESHUTDOWN);
}

TEST_F(UsbTerminalTest, ForgetsItsAnswersWhenItIsPluggedInAgain) {
  Claim();
  ASSERT_EQ(usb_.Submit(client_, Out(1, kGetVersion)), 0);
  usb_.Unplug();
  usb_.Disconnect(client_);
  client_ = UsbClient{};
  Plug();
  Claim();
  ASSERT_EQ(usb_.Submit(client_, In(2)), 0);
  EXPECT_FALSE(usb_.Reap(client_).has_value());
}

TEST_F(UsbTerminalTest, LosesAReportThatTheHostHasNoRoomFor) {
  Claim();
  ASSERT_EQ(usb_.Submit(client_, In(1, 64)), 0);
  ASSERT_EQ(usb_.Submit(client_, Out(2, kGetVersion)), 0);
  Reaped();
  const Urb in = Reaped();
  EXPECT_EQ(in.id, 1U);
  EXPECT_EQ(in.status, -EOVERFLOW);
  EXPECT_EQ(in.moved, 0U);
}

TEST_F(UsbTerminalTest, RefusesWhatItHasNotGot) {
  Claim();
  EXPECT_EQ(usb_.Submit(client_, {1, Urb::Kind::kIsochronous, kEndpointIn, Bytes(64)}), EINVAL);
  EXPECT_EQ(usb_.Submit(client_, {2, Urb::Kind::kData, 0x83, Bytes(64)}), ENOENT);
  EXPECT_FALSE(usb_.Reap(client_).has_value());
}

TEST_F(UsbTerminalTest, DescribesItselfOverTheControlEndpoint) {
  ASSERT_EQ(usb_.Submit(client_, {1, Urb::Kind::kControl, 0,
                                  [] {
                                    Bytes setup = {0x80, 6, 0, 1, 0, 0, 18, 0};
                                    setup.resize(setup.size() + 18);
                                    return setup;
                                  }()}),
            0);
  const Urb urb = Reaped();
  EXPECT_EQ(urb.status, 0);
  EXPECT_EQ(urb.received, *Descriptor(kId, 1, 0));
}

TEST_F(UsbTerminalTest, StallsAControlTransferWithoutASetupPacket) {
  ASSERT_EQ(usb_.Submit(client_, {1, Urb::Kind::kControl, 0, Bytes(3)}), 0);
  EXPECT_EQ(Reaped().status, -EPIPE);
}

class LooseCableTest : public testing::Test {
 protected:
  LooseCableTest() {
    usb_.Plug();
    usb_.Connect(client_);
    usb_.DetachDriver();
    usb_.Claim(client_, 0);
  }
  ~LooseCableTest() override { usb_.Disconnect(client_); }

  Clock clock_;
  AgreeableCustomer customer_;
  int moved_ = 0;
  Device unit_{Line::kUsb, customer_};
  FaultyLine line_{unit_, Hostility(ParseRates("seed=1,unplug=100"), 0)};
  UsbTerminal usb_{kId, {line_, &line_}, clock_, [this] { ++moved_; }};
  UsbClient client_;
};

TEST_F(LooseCableTest, TakesTheTerminalAwayAndBringsItBack) {
  std::string seen;
  LooseCable cable(
      usb_, clock_,
      [&] {
        usb_.Unplug();
        seen += "out ";
      },
      [&] { seen += "in "; });
  EXPECT_FALSE(cable.NextDeadline().has_value());
  ASSERT_EQ(usb_.Submit(client_, Out(1, kGetVersion)), 0);
  EXPECT_EQ(moved_, 1) << "the deadline has moved";
  ASSERT_TRUE(cable.NextDeadline().has_value());
  cable.Advance(Time{0});
  EXPECT_EQ(seen, "out ");
  ASSERT_TRUE(cable.NextDeadline().has_value());
  const Time back = *cable.NextDeadline();
  cable.Advance(back - Time{1});
  EXPECT_EQ(seen, "out ");
  cable.Advance(back);
  EXPECT_EQ(seen, "out in ");
  EXPECT_FALSE(cable.NextDeadline().has_value());
}

}  // namespace
}  // namespace gwq::terminal::test
