// SPDX-License-Identifier: MIT
// Which USB device it is.
#pragma once

#include <cstdint>

namespace gwq::terminal::usb {

struct UsbId {
  std::uint16_t vendor = 0;
  std::uint16_t product = 0;
};

}  // namespace gwq::terminal::usb
