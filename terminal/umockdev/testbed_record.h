// SPDX-License-Identifier: MIT
// The USB device as the testbed is told of it.
#pragma once

#include <string>

#include "usb/usb_id.h"

namespace gwq::terminal::umockdev {

// Where the device is on the emulated bus.
inline constexpr const char* kUsbNode = "/dev/bus/usb/001/005";
inline constexpr const char* kUsbSysPath = "/sys/devices/usb1/1-1";
inline constexpr const char* kUsbInterfaceSysPath = "/sys/devices/usb1/1-1/1-1:1.0";

// The device and its interface in the notation of the umockdev testbed.
[[nodiscard]] std::string TestbedRecord(usb::UsbId id);

}  // namespace gwq::terminal::umockdev
