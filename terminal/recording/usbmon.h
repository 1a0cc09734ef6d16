// SPDX-License-Identifier: MIT
// The record that the kernel makes of a USB transfer (usbmon), and that LINKTYPE_USB_LINUX has as 48
// bytes and LINKTYPE_USB_LINUX_MMAPPED as 64, the data behind it:
//
//   0 id (8)   8 'S', 'C' or 'E'   9 type   10 endpoint   11 device   12 bus (2)
//   14 setup flag, 0: there is one   15 data flag, 0: there are some
//   16 seconds (8)   24 microseconds (4)   28 status (4)   32 length (4)   36 captured length (4)
//   40 setup packet, or counts of an isochronous transfer (8)
//   48 interval (4)   52 start frame (4)   56 flags (4)   60 number of isochronous descriptors (4)
//
// Numbers have the byte order of the machine that captured.
#pragma once

#include <cstddef>
#include <cstdint>

namespace gwq::terminal::recording {

inline constexpr std::uint16_t kLinkTypeUser0 = 147;
inline constexpr std::uint16_t kLinkTypeUsbmon = 189;
inline constexpr std::uint16_t kLinkTypeUsbmonMmapped = 220;

inline constexpr std::size_t kUsbmonSize = 48;
inline constexpr std::size_t kUsbmonMmappedSize = 64;

inline constexpr char kSubmitted = 'S';
inline constexpr char kCompleted = 'C';

inline constexpr std::uint16_t kRecordedBus = 1;
inline constexpr std::uint8_t kRecordedDevice = 5;

// What begins a comment that tells a packet's masks: "masked 17+48 80+2", offset and size in the data.
inline constexpr const char* kMaskComment = "masked";

}  // namespace gwq::terminal::recording
