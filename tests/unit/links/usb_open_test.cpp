// SPDX-License-Identifier: MIT
// Finding, opening and closing the device of the two USB links.
#include "unit/links/usb_links.h"

namespace gwq::test {
namespace {

class UsbOpen : public UsbLinks {
 protected:
  static constexpr UsbDevice kDevice{.vid = kVid, .pid = kPid};
};
INSTANTIATE_TEST_SUITE_P(Links, UsbOpen, testing::ValuesIn(kUsbLinks), kByName);

TEST_P(UsbOpen, BothIdsMustMatchAndTheFirstSuchDeviceIsTaken) {
  usb_.Plug({.vid = kVid, .pid = kPid + 1}).Plug({.vid = kVid + 1, .pid = kPid});
  usb_.Plug({.vid = kPid, .pid = kVid}).Plug(kDevice);
  usb_.Plug({.vid = kVid, .pid = kPid, .open_result = LIBUSB_ERROR_ACCESS});
  EXPECT_EQ(Open(), 0);
  Close();
  EXPECT_EQ(usb_.Count("open"), 1);
}

TEST_P(UsbOpen, DeviceWhoseDescriptorCannotBeReadIsSkipped) {
  usb_.Plug({.vid = kVid, .pid = kPid, .descriptor_result = LIBUSB_ERROR_IO, .open_result = LIBUSB_ERROR_IO});
  EXPECT_EQ(Open(), -7);
  usb_.Plug(kDevice);
  EXPECT_EQ(Open(), 0);
  Close();
}

TEST_P(UsbOpen, IdsBeyond16BitsMatchNothing) {
  usb_.Plug(kDevice);
  EXPECT_EQ(Open(0x10000 | kVid, kPid), -7);
  EXPECT_EQ(Open(kVid, -kPid), -7);
}

TEST_P(UsbOpen, CloseReleasesAndAttachesNothing) {
  UsbDevice device = kDevice;
  device.driver_active = 1;
  usb_.Plug(device);
  Open();
  Close();
  EXPECT_EQ(usb_.Count("release"), 0);
  EXPECT_EQ(usb_.Count("attach"), 0);
}

TEST_P(UsbOpen, SecondCloseTouchesNothing) {
  usb_.Plug(kDevice);
  Open();
  Close();
  const auto calls = usb_.Calls();
  EXPECT_EQ(Close(), 0);
  EXPECT_EQ(usb_.Calls(), calls);
}

TEST_P(UsbOpen, OpenCloseManyTimesLeavesNothing) {
  usb_.Plug(kDevice);
  for (int i = 0; i < 100; ++i) {
    ASSERT_EQ(Open(), 0);
    ASSERT_EQ(Close(), 0);
  }
  EXPECT_EQ(usb_.Count("free_list"), 100);
}

}  // namespace
}  // namespace gwq::test
