// SPDX-License-Identifier: MIT
#include "usb/usb_descriptors.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace gwq::terminal::usb {
namespace {

constexpr std::uint8_t kDeviceType = 1;
constexpr std::uint8_t kConfigurationType = 2;
constexpr std::uint8_t kStringType = 3;
constexpr std::uint8_t kQualifierType = 6;
constexpr std::uint8_t kHidType = 0x21;
constexpr std::uint8_t kReportType = 0x22;

// Vendor page; one input and one output report of 1024 bytes, no report ids.
constexpr std::array<std::uint8_t, 29> kReportDescriptor = {
    0x06, 0x00, 0xff, 0x09, 0x01, 0xa1, 0x01, 0x15, 0x00, 0x26, 0xff, 0x00, 0x75, 0x08, 0x96,
    0x00, 0x04, 0x09, 0x01, 0x81, 0x02, 0x96, 0x00, 0x04, 0x09, 0x02, 0x91, 0x02, 0xc0};

// Configuration, interface, HID descriptor and the two endpoints.
constexpr std::size_t kHidOffset = 18;
constexpr std::size_t kHidSize = 9;
constexpr std::array<std::uint8_t, 41> kConfiguration = {0x09,        0x02,
                                                         0x29,        0x00,
                                                         0x01,        0x01,
                                                         0x00,        0x80,
                                                         0x32,        0x09,
                                                         0x04,        0x00,
                                                         0x00,        0x02,
                                                         0x03,        0x00,
                                                         0x00,        0x00,
                                                         0x09,        0x21,
                                                         0x11,        0x01,
                                                         0x00,        0x01,
                                                         0x22,        kReportDescriptor.size(),
                                                         0x00,        0x07,
                                                         0x05,        kEndpointOut,
                                                         0x03,        0x00,
                                                         0x04,        0x01,
                                                         0x07,        0x05,
                                                         kEndpointIn, 0x03,
                                                         0x00,        0x04,
                                                         0x01};

Bytes DeviceDescriptor(UsbId id) {
  const auto low = [](std::uint16_t value) { return static_cast<std::uint8_t>(value & 0xff); };
  const auto high = [](std::uint16_t value) { return static_cast<std::uint8_t>(value >> 8); };
  return {0x12,
          0x01,
          0x00,
          0x02,
          0x00,
          0x00,
          0x00,
          0x40,
          low(id.vendor),
          high(id.vendor),
          low(id.product),
          high(id.product),
          0x00,
          0x01,
          0x01,
          0x02,
          0x00,
          0x01};
}

// The device at full speed would be the same.
Bytes QualifierDescriptor() {
  return {0x0a, kQualifierType, 0x00, 0x02, 0x00, 0x00, 0x00, 0x40, 0x01, 0x00};
}

// String descriptors are UTF-16; the texts here are ASCII.
Bytes StringDescriptor(std::string_view text) {
  Bytes bytes = {static_cast<std::uint8_t>(2 + 2 * text.size()), kStringType};
  for (const char letter : text) {
    bytes.push_back(static_cast<std::uint8_t>(letter));
    bytes.push_back(0);
  }
  return bytes;
}

std::optional<Bytes> StringByIndex(std::uint8_t index) {
  if (index == 0) return Bytes{0x04, kStringType, 0x09, 0x04};  // US English only
  if (index == 1) return StringDescriptor("gwq");
  if (index == 2) return StringDescriptor("Virtual customer terminal");
  return std::nullopt;
}

}  // namespace

Bytes AllDescriptors(UsbId id) {
  Bytes bytes = DeviceDescriptor(id);
  const std::size_t device_size = bytes.size();
  bytes.resize(device_size + kConfiguration.size());
  std::copy(kConfiguration.begin(), kConfiguration.end(),
            bytes.begin() + static_cast<std::ptrdiff_t>(device_size));
  return bytes;
}

std::optional<Bytes> Descriptor(UsbId id, std::uint8_t type, std::uint8_t index) {
  switch (type) {
    case kDeviceType:
      return DeviceDescriptor(id);
    case kConfigurationType:
      return Bytes(kConfiguration.begin(), kConfiguration.end());
    case kStringType:
      return StringByIndex(index);
    case kQualifierType:
      return QualifierDescriptor();
    case kHidType:
      return Bytes(kConfiguration.begin() + kHidOffset, kConfiguration.begin() + kHidOffset + kHidSize);
    case kReportType:
      return Bytes(kReportDescriptor.begin(), kReportDescriptor.end());
    default:
      return std::nullopt;
  }
}

}  // namespace gwq::terminal::usb
