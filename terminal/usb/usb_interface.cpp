// SPDX-License-Identifier: MIT
#include "usb/usb_interface.h"

#include <cerrno>

namespace gwq::terminal::usb {

void UsbInterface::Reset() {
  hid_bound_ = true;
  owner_ = nullptr;
}

std::string_view UsbInterface::Driver() const {
  if (owner_ != nullptr) return "usbfs";
  return hid_bound_ ? "usbhid" : "";
}

int UsbInterface::Detach() {
  if (!hid_bound_ && owner_ == nullptr) return ENODATA;
  hid_bound_ = false;
  owner_ = nullptr;
  return 0;
}

int UsbInterface::Attach() {
  if (hid_bound_ || owner_ != nullptr) return EBUSY;
  hid_bound_ = true;
  return 0;
}

int UsbInterface::Claim(UsbClient& client, unsigned interface_number) {
  if (interface_number != 0) return ENOENT;
  if (owner_ == &client) return 0;
  if (hid_bound_ || owner_ != nullptr) return EBUSY;
  owner_ = &client;
  return 0;
}

int UsbInterface::Release(UsbClient& client, unsigned interface_number) {
  if (interface_number != 0) return ENOENT;
  if (owner_ != &client) return EINVAL;
  owner_ = nullptr;
  return 0;
}

}  // namespace gwq::terminal::usb
