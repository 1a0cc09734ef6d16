// SPDX-License-Identifier: MIT
// The umockdev testbed: a /dev and a /sys of the command's own.
#pragma once

#include <umockdev.h>

#include <string>

#include "base/gobject_ptr.h"
#include "umockdev/reap_gate.h"
#include "usb/usb_id.h"

namespace gwq::terminal::umockdev {

// The device node of a serial port.
[[nodiscard]] std::string SerialNode(int port);

class Testbed {
 public:
  // Lives in a new directory below $TMPDIR until destroyed.
  Testbed();
  Testbed(const Testbed&) = delete;
  Testbed& operator=(const Testbed&) = delete;
  ~Testbed();

  [[nodiscard]] const std::string& RootDir() const { return root_; }

  // Requests on the USB device node go to `handler`, over all plugging and unplugging.
  void AttachUsbNode(UMockdevIoctlBase* handler);

  // Plugging tells the hosts that listen for device events, unplugging too.
  ReapGate Plug(usb::UsbId id);
  void Unplug();

  // Makes SerialNode(port) lead to the pseudo-terminal at `slave`.
  void LinkSerial(int port, const std::string& slave);

 private:
  GObjectPtr<UMockdevTestbed> testbed_;
  GObjectPtr<UMockdevIoctlBase> kernel_requests_;
  std::string root_;
};

}  // namespace gwq::terminal::umockdev
