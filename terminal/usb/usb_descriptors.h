// SPDX-License-Identifier: MIT
// What the terminal says of itself when a host asks which USB device it is.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "base/types.h"
#include "usb/usb_id.h"

namespace gwq::terminal::usb {

inline constexpr std::size_t kReportSize = 1024;
inline constexpr unsigned char kEndpointOut = 0x02;
inline constexpr unsigned char kEndpointIn = 0x81;

// Device descriptor followed by the configuration, as in sysfs `descriptors`.
[[nodiscard]] Bytes AllDescriptors(UsbId id);

// The answer to GET_DESCRIPTOR; nothing for a descriptor that it has not got.
[[nodiscard]] std::optional<Bytes> Descriptor(UsbId id, std::uint8_t type, std::uint8_t index);

}  // namespace gwq::terminal::usb
