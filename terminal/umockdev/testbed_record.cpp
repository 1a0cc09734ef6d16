// SPDX-License-Identifier: MIT
#include "umockdev/testbed_record.h"

#include <cstdint>
#include <cstdio>

#include "usb/usb_descriptors.h"

namespace gwq::terminal::umockdev {
namespace {

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

std::string TestbedRecord(usb::UsbId id) {
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
         Hex(usb::AllDescriptors(id)) +
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

}  // namespace gwq::terminal::umockdev
