// SPDX-License-Identifier: MIT
// The USB terminal's plug in a testbed.
#pragma once

#include "umockdev/testbed.h"
#include "umockdev/usbfs_handler.h"
#include "usb/usb_id.h"
#include "usb/usb_plug.h"
#include "usb/usb_terminal.h"

namespace gwq::terminal::umockdev {

class TestbedPlug final : public usb::UsbPlug {
 public:
  // Not plugged in at first. What is given must outlive its use, and the plug the testbed, whose
  // thread calls it.
  TestbedPlug(Testbed& testbed, usb::UsbTerminal& terminal, usb::UsbId id);

  [[nodiscard]] bool IsIn() const override { return in_; }
  void PlugIn() override;
  void PullOut() override;

 private:
  Testbed& testbed_;
  usb::UsbTerminal& terminal_;
  const usb::UsbId id_;
  UsbfsHandler handler_;
  bool in_ = false;
};

}  // namespace gwq::terminal::umockdev
