// SPDX-License-Identifier: MIT
// What is the HID link's own: its log, and the order of its calls.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <libusb-1.0/libusb.h>

#include <gwq/links/usb_hid.h>
#include "support/log_capture.h"
#include "support/scripted_usb.h"

namespace gwq::test {
namespace {

using testing::ElementsAre;

constexpr int kVid = 0xABCD;
constexpr int kPid = 0x12EF;
constexpr UsbDevice kTerminal{.vid = kVid, .pid = kPid};

TEST(HidOpen, TakesTheDeviceFromTheKernelAndClaimsItsInterface) {
  ScriptedUsb usb;
  UsbDevice device = kTerminal;
  device.driver_active = 1;
  usb.Plug(device);
  const LogCapture log;
  EXPECT_EQ(ICC_OpenLinuxHid(kVid, kPid), 0);
  EXPECT_EQ(ICC_CloseLinuxHid(), 0);
  EXPECT_THAT(usb.Calls(), ElementsAre("list", "open abcd:12ef", "driver_active 0", "detach 0", "claim 0",
                                       "close", "free_list"));
  EXPECT_THAT(log.Messages(), ElementsAre("\nOpen Device:abcd,12ef, begin\n", "libusb_get_device_list:1",
                                          "find target device!!", "libusb_open success ,nRet=0",
                                          "driver_active  Cnt1=1\n", "driver_active  Cnt2=0\n",
                                          "libusb_claim_interface  nRet=0\n", "Open device success!  End\n",
                                          "\nClose Device Begin", "Close Device Success! End\n"));
}

TEST(HidOpen, LeavesAnInactiveKernelDriverAlone) {
  for (const int active : {0, int{LIBUSB_ERROR_NOT_SUPPORTED}, 2}) {
    ScriptedUsb usb;
    UsbDevice device = kTerminal;
    device.driver_active = active;
    usb.Plug(device);
    const LogCapture log;
    EXPECT_EQ(ICC_OpenLinuxHid(kVid, kPid), 0);
    ICC_CloseLinuxHid();
    EXPECT_EQ(usb.Count("detach"), 0);
    EXPECT_EQ(log.Messages().at(4), "driver_active  Cnt1=" + std::to_string(active) + "\n");
    EXPECT_EQ(log.Messages().at(5), "libusb_claim_interface  nRet=0\n");
  }
}

TEST(HidOpen, GoesOnWhenTheKernelDriverCannotBeDetached) {
  ScriptedUsb usb;
  UsbDevice device = kTerminal;
  device.driver_active = 1;
  device.detach_result = LIBUSB_ERROR_NOT_FOUND;
  usb.Plug(device);
  const LogCapture log;
  EXPECT_EQ(ICC_OpenLinuxHid(kVid, kPid), 0);
  EXPECT_EQ(log.Messages().at(5), "driver_active  Cnt2=-5\n");
  ICC_CloseLinuxHid();
}

TEST(HidOpen, NoDeviceAtAllGivesMinus7) {
  const ScriptedUsb usb;
  const LogCapture log;
  EXPECT_EQ(ICC_OpenLinuxHid(kVid, kPid), -7);
  EXPECT_THAT(log.Messages(), ElementsAre("\nOpen Device:abcd,12ef, begin\n", "libusb_get_device_list:0",
                                          "libusb_get_device_list failed......"));
  EXPECT_EQ(usb.Count("free_list"), 1) << "also an empty list is the caller's";
}

TEST(HidOpen, ListingThatFailsGivesMinus7) {
  ScriptedUsb usb;
  usb.Plug(kTerminal);
  usb.FailListing(LIBUSB_ERROR_NO_MEM);
  const LogCapture log;
  EXPECT_EQ(ICC_OpenLinuxHid(kVid, kPid), -7);
  EXPECT_THAT(log.Messages(), ElementsAre("\nOpen Device:abcd,12ef, begin\n", "libusb_get_device_list:-11",
                                          "libusb_get_device_list failed......"));
  EXPECT_THAT(usb.Calls(), ElementsAre("list"));
  EXPECT_EQ(ICC_CancelLinuxHidRead(), -7);
}

TEST(HidOpen, DeviceThatIsNotThereGivesMinus7AndTheNextOpenListsAgain) {
  ScriptedUsb usb;
  usb.Plug({.vid = 1, .pid = 2});
  const LogCapture log;
  EXPECT_EQ(ICC_OpenLinuxHid(kVid, kPid), -7);
  EXPECT_THAT(log.Messages(), ElementsAre("\nOpen Device:abcd,12ef, begin\n", "libusb_get_device_list:1",
                                          "Not find target device, return\n"));
  EXPECT_EQ(ICC_OpenLinuxHid(kVid, kPid), -7);
  EXPECT_THAT(usb.Calls(), ElementsAre("list", "free_list", "list", "free_list"));
  usb.Plug(kTerminal);
  EXPECT_EQ(ICC_OpenLinuxHid(kVid, kPid), 0);
  ICC_CloseLinuxHid();
}

TEST(HidOpen, OpenThatFailsGivesMinus3AndLeavesNothing) {
  ScriptedUsb usb;
  UsbDevice device = kTerminal;
  device.open_result = LIBUSB_ERROR_ACCESS;
  usb.Plug(device);
  const LogCapture log;
  EXPECT_EQ(ICC_OpenLinuxHid(kVid, kPid), -3);
  EXPECT_THAT(log.Messages(), ElementsAre("\nOpen Device:abcd,12ef, begin\n", "libusb_get_device_list:1",
                                          "find target device!!", "libusb_open failed ,nRet=-3\n"));
  EXPECT_THAT(usb.Calls(), ElementsAre("list", "open abcd:12ef", "free_list"));
  EXPECT_EQ(ICC_WriteLinuxHid(nullptr, 0), -7);
}

TEST(HidOpen, ClaimThatFailsGivesMinus3AndLeavesNothing) {
  ScriptedUsb usb;
  UsbDevice device = kTerminal;
  device.claim_result = LIBUSB_ERROR_BUSY;
  usb.Plug(device);
  const LogCapture log;
  EXPECT_EQ(ICC_OpenLinuxHid(kVid, kPid), -3);
  EXPECT_THAT(log.Messages(),
              ElementsAre("\nOpen Device:abcd,12ef, begin\n", "libusb_get_device_list:1",
                          "find target device!!", "libusb_open success ,nRet=0", "driver_active  Cnt1=0\n",
                          "libusb_claim_interface  nRet=-6\n", "Cannot Claim Interface:-6\n"));
  EXPECT_THAT(usb.Calls(),
              ElementsAre("list", "open abcd:12ef", "driver_active 0", "claim 0", "close", "free_list"));
  EXPECT_EQ(ICC_CancelLinuxHidRead(), -7);
}

TEST(HidOpen, OpenDeviceIsKeptWhateverIdsAreAskedFor) {
  ScriptedUsb usb;
  usb.Plug(kTerminal).Plug({.vid = 1, .pid = 2});
  ASSERT_EQ(ICC_OpenLinuxHid(kVid, kPid), 0);
  {
    const LogCapture log;
    EXPECT_EQ(ICC_OpenLinuxHid(1, 2), 0);
    EXPECT_THAT(log.Messages(), ElementsAre("\nOpen Device:1,2, begin\n", "m_targetDev != NULL, return !!"));
  }
  EXPECT_EQ(ICC_OpenLinuxHid(7, 7), 0);
  ICC_CloseLinuxHid();
  EXPECT_EQ(usb.Count("list"), 1);
  EXPECT_EQ(usb.Count("open"), 1);
}

TEST(HidClose, WithoutOpenSaysSoAndSucceeds) {
  const ScriptedUsb usb;
  const LogCapture log;
  EXPECT_EQ(ICC_CloseLinuxHid(), 0);
  EXPECT_THAT(log.Messages(),
              ElementsAre("\nClose Device Begin", "m_targetDev == NULL, not need clsoe, return\n"));
  EXPECT_TRUE(usb.Calls().empty());
}

TEST(HidClosed, EveryCallSaysSo) {
  const ScriptedUsb usb;
  unsigned char byte = 0;
  EXPECT_EQ(ICC_WriteLinuxHid(&byte, 1), -7);
  const LogCapture log;
  EXPECT_EQ(ICC_CancelLinuxHidRead(), -7);
  EXPECT_THAT(log.Messages(), ElementsAre("[ICC_CancelLinuxHidRead] begin s_bIsReading=0\n"));
  EXPECT_TRUE(usb.Calls().empty());
}

TEST(HidCancel, LogsWhetherAReadIsRunning) {
  ScriptedUsb usb;
  usb.Plug(kTerminal);
  ASSERT_EQ(ICC_OpenLinuxHid(kVid, kPid), 0);
  const LogCapture log;
  usb.OnTransfer([](const Transfer&) { ICC_CancelLinuxHidRead(); });
  unsigned char buffer[1024 + 3] = {};
  ICC_ReadLinuxHid(buffer, 3, 60, nullptr);
  ICC_CancelLinuxHidRead();
  EXPECT_THAT(log.Messages(), ElementsAre("[ICC_CancelLinuxHidRead] begin s_bIsReading=1\n",
                                          "[ICC_CancelLinuxHidRead] begin s_bIsReading=0\n"));
  ICC_CloseLinuxHid();
}

}  // namespace
}  // namespace gwq::test
