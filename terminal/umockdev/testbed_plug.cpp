// SPDX-License-Identifier: MIT
#include "umockdev/testbed_plug.h"

#include <memory>

namespace gwq::terminal::umockdev {

TestbedPlug::TestbedPlug(Testbed& testbed, usb::UsbTerminal& terminal, usb::UsbId id)
    : testbed_(testbed), terminal_(terminal), id_(id), handler_(terminal) {
  testbed_.AttachUsbNode(handler_.Base());
}

void TestbedPlug::PlugIn() {
  const auto gate = std::make_shared<ReapGate>(testbed_.Plug(id_));
  terminal_.Plug([gate](bool reapable) { gate->SetReapable(reapable); });
  in_ = true;
}

void TestbedPlug::PullOut() {
  in_ = false;
  terminal_.Unplug();
  testbed_.Unplug();
}

}  // namespace gwq::terminal::umockdev
