// SPDX-License-Identifier: MIT
// A USB/IP client that sends anything, in pieces of any size.
#include "customer/agreeable.h"
#include "device/device.h"
#include "input.h"
#include "require.h"
#include "usbip/usbip_session.h"

namespace gwq::fuzz {
namespace {

constexpr terminal::usb::UsbId kId{0x1209, 0x0001};

void Talk(Input& input) {
  terminal::customer::AgreeableCustomer customer;
  const terminal::Clock clock;
  terminal::device::Device unit(terminal::Line::kUsb, customer);
  terminal::usb::UsbTerminal terminal(kId, {unit}, clock, [] {});
  terminal::usbip::UsbIpPlug plug(kId, terminal);
  terminal::usbip::UsbIpSession session(plug);
  while (!input.Empty() && !session.IsOver()) {
    session.Receive(input.Take(1U + input.Byte()));
    static_cast<void>(session.TakeReplies());
  }
  Require(session.IsOver() || session.Complaint().empty(), "a complaint about a session that goes on");
}

}  // namespace
}  // namespace gwq::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  gwq::fuzz::Input input(data, size);
  gwq::fuzz::Talk(input);
  return 0;
}
