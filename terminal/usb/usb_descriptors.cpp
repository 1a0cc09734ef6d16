// SPDX-License-Identifier: MIT
#include "usb/usb_descriptors.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string_view>

namespace gwq::terminal {
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

std::string Hex(std::uint16_t value, const char* format) {
  char text[8];
  std::snprintf(text, sizeof text, format, static_cast<unsigned>(value));
  return text;
}

std::string Hex(const Bytes& bytes) {
  std::string text;
  for (const std::uint8_t byte : bytes) text += Hex(byte, "%02x");
  return text;
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

std::string TestbedRecord(UsbId id) {
  const std::string product = Hex(id.vendor, "%x") + "/" + Hex(id.product, "%x") + "/100";
  return "P: /devices/usb1/1-1\n"
         "N: bus/usb/001/005\n"
         "E: DEVTYPE=usb_device\n"
         "E: SUBSYSTEM=usb\n"
         "E: DRIVER=usb\n"
         "E: BUSNUM=001\n"
         "E: DEVNUM=005\n"
         "E: DEVNAME=/dev/bus/usb/001/005\n"
         "E: MAJOR=189\n"
         "E: MINOR=4\n"
         "E: PRODUCT=" +
         product +
         "\n"
         "E: ID_VENDOR_ID=" +
         Hex(id.vendor, "%04x") +
         "\n"
         "E: ID_MODEL_ID=" +
         Hex(id.product, "%04x") +
         "\n"
         "A: busnum=1\\n\n"
         "A: devnum=5\\n\n"
         "A: speed=480\\n\n"
         "A: bConfigurationValue=1\\n\n"
         "A: bNumConfigurations=1\\n\n"
         "A: bNumInterfaces= 1\\n\n"
         "A: bcdDevice=0100\\n\n"
         "A: idVendor=" +
         Hex(id.vendor, "%04x") +
         "\\n\n"
         "A: idProduct=" +
         Hex(id.product, "%04x") +
         "\\n\n"
         "H: descriptors=" +
         Hex(AllDescriptors(id)) +
         "\n"
         "\n"
         "P: /devices/usb1/1-1/1-1:1.0\n"
         "E: DEVTYPE=usb_interface\n"
         "E: SUBSYSTEM=usb\n"
         "E: DRIVER=usbhid\n"
         "E: PRODUCT=" +
         product +
         "\n"
         "E: INTERFACE=3/0/0\n"
         "A: bInterfaceNumber=00\\n\n"
         "A: bAlternateSetting= 0\\n\n"
         "A: bNumEndpoints=02\\n\n"
         "A: bInterfaceClass=03\\n\n"
         "A: bInterfaceSubClass=00\\n\n"
         "A: bInterfaceProtocol=00\\n\n";
}

}  // namespace gwq::terminal
