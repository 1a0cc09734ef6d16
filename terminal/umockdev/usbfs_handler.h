// SPDX-License-Identifier: MIT
// Serves the requests that hosts make on the USB device node.
#pragma once

#include <umockdev.h>

#include "base/gobject_ptr.h"
#include "usb/usb_terminal.h"

namespace gwq::terminal::umockdev {

// The requests arrive on a thread of the testbed's. Each is answered before the
// handler returns: that thread must not block, and a request left unanswered
// would hide it from us when its host dies.
class UsbfsHandler {
 public:
  // `terminal` must outlive the handler, the handler the testbed.
  explicit UsbfsHandler(usb::UsbTerminal& terminal);

  [[nodiscard]] UMockdevIoctlBase* Base() const { return base_.get(); }

 private:
  static void OnConnected(UMockdevIoctlBase* base, UMockdevIoctlClient* client, gpointer self);
  static gboolean OnIoctl(UMockdevIoctlBase* base, UMockdevIoctlClient* client, gpointer self);

  usb::UsbTerminal& terminal_;
  GObjectPtr<UMockdevIoctlBase> base_;
};

}  // namespace gwq::terminal::umockdev
