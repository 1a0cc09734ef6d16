// SPDX-License-Identifier: MIT
// Who drives the terminal's one interface: the kernel's HID driver, a host, or nobody.
//
//             Detach                Claim
//   usbhid ------------> nobody ------------> a client
//          <------------        <------------
//             Attach                Release, or the client closes
#pragma once

#include <string_view>

namespace gwq::terminal::usb {

struct UsbClient;

// Members return 0 or the error number that the kernel would give.
class UsbInterface {
 public:
  // As after plugging in: the HID driver takes it.
  void Reset();

  // "usbhid", "usbfs", or empty.
  [[nodiscard]] std::string_view Driver() const;
  [[nodiscard]] UsbClient* Owner() const { return owner_; }

  int Detach();
  int Attach();
  int Claim(UsbClient& client, unsigned interface_number);
  int Release(UsbClient& client, unsigned interface_number);

 private:
  bool hid_bound_ = true;
  UsbClient* owner_ = nullptr;
};

}  // namespace gwq::terminal::usb
