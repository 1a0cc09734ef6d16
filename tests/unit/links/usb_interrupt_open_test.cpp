// SPDX-License-Identifier: MIT
// Finding, opening and closing the device of the interrupt-transfer link.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <libusb-1.0/libusb.h>

#include <gwq/links/usb_hid.h>
#include <gwq/links/usb_interrupt.h>
#include "support/log_capture.h"
#include "support/scripted_usb.h"

namespace gwq::test {
namespace {

using testing::ElementsAre;

constexpr int kVid = 0xABCD;
constexpr int kPid = 0x12EF;
constexpr UsbDevice kDevice{.vid = kVid, .pid = kPid};

// The contexts that were initialised since and not yet left.
class ContextBalance {
 public:
  [[nodiscard]] int Held() const { return UsbInits() - inits_ - (UsbExits() - exits_); }
  [[nodiscard]] int Inits() const { return UsbInits() - inits_; }

 private:
  int inits_ = UsbInits();
  int exits_ = UsbExits();
};

TEST(InterruptOpen, TakesTheDeviceFromTheKernelAndClaimsItsInterface) {
  ScriptedUsb usb;
  UsbDevice device = kDevice;
  device.driver_active = 1;
  usb.Plug(device);
  const LogCapture log;
  EXPECT_EQ(ICC_OpenLinuxSdt(kVid, kPid), 0);
  EXPECT_EQ(ICC_CloseLinuxSdt(), 0);
  EXPECT_THAT(usb.Calls(), ElementsAre("init", "list", "open abcd:12ef", "driver_active 0", "detach 0",
                                       "claim 0", "close", "free_list", "exit"));
  EXPECT_THAT(log.Messages(),
              ElementsAre("openHid:43981,4847\n", "libusb_init\n", "libusb_get_device_list:1\n",
                          "vid=ABCD pid=12EF\n", "find target device\n", "Cnt1=1\n", "Cnt2=0\n",
                          "open hiddev success!\n", "Close hid!\n", "Close hid ok!\n"));
}

TEST(InterruptOpen, ListStandsInTheExportedDatumWhileOpen) {
  ScriptedUsb usb;
  usb.Plug({.vid = 1, .pid = 2}).Plug(kDevice);
  EXPECT_EQ(m_devsSdt, nullptr);
  ASSERT_EQ(ICC_OpenLinuxSdt(kVid, kPid), 0);
  ASSERT_NE(m_devsSdt, nullptr);
  libusb_device_descriptor second{};
  EXPECT_EQ(libusb_get_device_descriptor(m_devsSdt[1], &second), 0);
  EXPECT_EQ(second.idProduct, kPid);
  EXPECT_EQ(m_devsSdt[2], nullptr);
  ICC_CloseLinuxSdt();
  EXPECT_EQ(m_devsSdt, nullptr);
}

TEST(InterruptOpen, LogsEachDeviceUpToTheFirstWithBothIds) {
  ScriptedUsb usb;
  usb.Plug({.vid = kVid, .pid = kPid + 1}).Plug({.vid = 0xB, .pid = kPid}).Plug(kDevice);
  usb.Plug({.vid = kVid, .pid = kPid, .open_result = LIBUSB_ERROR_ACCESS});
  const LogCapture log;
  EXPECT_EQ(ICC_OpenLinuxSdt(kVid, kPid), 0);
  EXPECT_THAT(log.Messages(),
              ElementsAre("openHid:43981,4847\n", "libusb_init\n", "libusb_get_device_list:4\n",
                          "vid=ABCD pid=12F0\n", "vid=000B pid=12EF\n", "vid=ABCD pid=12EF\n",
                          "find target device\n", "Cnt1=0\n", "open hiddev success!\n"));
  ICC_CloseLinuxSdt();
}

TEST(InterruptOpen, LeavesAnInactiveKernelDriverAlone) {
  for (const int active : {0, int{LIBUSB_ERROR_NOT_SUPPORTED}, 2}) {
    ScriptedUsb usb;
    UsbDevice device = kDevice;
    device.driver_active = active;
    usb.Plug(device);
    const LogCapture log;
    EXPECT_EQ(ICC_OpenLinuxSdt(kVid, kPid), 0);
    ICC_CloseLinuxSdt();
    EXPECT_EQ(usb.Count("detach"), 0);
    EXPECT_EQ(log.Messages().at(5), "Cnt1=" + std::to_string(active) + "\n");
    EXPECT_EQ(log.Messages().at(6), "open hiddev success!\n");
  }
}

TEST(InterruptOpen, GoesOnWhenTheKernelDriverCannotBeDetached) {
  ScriptedUsb usb;
  UsbDevice device = kDevice;
  device.driver_active = 1;
  device.detach_result = LIBUSB_ERROR_NOT_FOUND;
  usb.Plug(device);
  const LogCapture log;
  EXPECT_EQ(ICC_OpenLinuxSdt(kVid, kPid), 0);
  EXPECT_EQ(log.Messages().at(6), "Cnt2=-5\n");
  ICC_CloseLinuxSdt();
}

TEST(InterruptOpen, NoDeviceAtAllGivesMinus7) {
  const ScriptedUsb usb;
  const LogCapture log;
  EXPECT_EQ(ICC_OpenLinuxSdt(-1, 2), -7);
  EXPECT_THAT(log.Messages(), ElementsAre("openHid:-1,2\n", "libusb_init\n", "libusb_get_device_list:0\n",
                                          "get hiddev err!\n"));
  EXPECT_THAT(usb.Calls(), ElementsAre("init", "list", "free_list", "exit"));
}

TEST(InterruptOpen, ListingThatFailsGivesMinus7) {
  ScriptedUsb usb;
  usb.Plug(kDevice);
  usb.FailListing(LIBUSB_ERROR_NO_MEM);
  const LogCapture log;
  EXPECT_EQ(ICC_OpenLinuxSdt(kVid, kPid), -7);
  EXPECT_EQ(log.Messages().at(2), "libusb_get_device_list:-11\n");
  EXPECT_EQ(log.Messages().at(3), "get hiddev err!\n");
  EXPECT_THAT(usb.Calls(), ElementsAre("init", "list", "exit"));
}

TEST(InterruptOpen, ContextThatCannotBeHadGivesMinus7AndIsNotLeft) {
  ScriptedUsb usb;
  usb.Plug(kDevice);
  usb.FailInit(LIBUSB_ERROR_OTHER);
  const LogCapture log;
  EXPECT_EQ(ICC_OpenLinuxSdt(kVid, kPid), -7);
  EXPECT_THAT(log.Messages(), ElementsAre("openHid:43981,4847\n", "libusb_init\n", "get hiddev err!\n"));
  EXPECT_THAT(usb.Calls(), ElementsAre("init"));
  EXPECT_EQ(ICC_CancelLinuxSdtRead(), -7);
}

TEST(InterruptOpen, DeviceThatIsNotThereGivesMinus7AndTheNextOpenListsAgain) {
  ScriptedUsb usb;
  usb.Plug({.vid = kVid, .pid = kVid});
  EXPECT_EQ(ICC_OpenLinuxSdt(kVid, kPid), -7);
  EXPECT_EQ(m_devsSdt, nullptr);
  EXPECT_THAT(usb.Calls(), ElementsAre("init", "list", "free_list", "exit"));
  usb.Plug(kDevice);
  EXPECT_EQ(ICC_OpenLinuxSdt(kVid, kPid), 0);
  ICC_CloseLinuxSdt();
}

TEST(InterruptOpen, OpenThatFailsGivesMinus3AndLeavesNothing) {
  ScriptedUsb usb;
  UsbDevice device = kDevice;
  device.open_result = LIBUSB_ERROR_ACCESS;
  usb.Plug(device);
  const LogCapture log;
  EXPECT_EQ(ICC_OpenLinuxSdt(kVid, kPid), -3);
  EXPECT_THAT(log.Messages(),
              ElementsAre("openHid:43981,4847\n", "libusb_init\n", "libusb_get_device_list:1\n",
                          "vid=ABCD pid=12EF\n", "find target device\n", "libusb open failed\n"));
  EXPECT_THAT(usb.Calls(), ElementsAre("init", "list", "open abcd:12ef", "free_list", "exit"));
  EXPECT_EQ(m_devsSdt, nullptr);
  EXPECT_EQ(ICC_CancelLinuxSdtRead(), -7);
}

TEST(InterruptOpen, ClaimThatFailsGivesMinus3AndLeavesNothing) {
  ScriptedUsb usb;
  UsbDevice device = kDevice;
  device.claim_result = LIBUSB_ERROR_BUSY;
  usb.Plug(device);
  const LogCapture log;
  EXPECT_EQ(ICC_OpenLinuxSdt(kVid, kPid), -3);
  EXPECT_THAT(log.Messages(), ElementsAre("openHid:43981,4847\n", "libusb_init\n",
                                          "libusb_get_device_list:1\n", "vid=ABCD pid=12EF\n",
                                          "find target device\n", "Cnt1=0\n", "Cannot Claim Interface:-6\n"));
  EXPECT_THAT(usb.Calls(), ElementsAre("init", "list", "open abcd:12ef", "driver_active 0", "claim 0",
                                       "close", "free_list", "exit"));
  EXPECT_EQ(m_devsSdt, nullptr);
  EXPECT_EQ(ICC_CancelLinuxSdtRead(), -7);
}

TEST(InterruptOpen, SecondOpenInitialisesNothingWhateverIdsAreAskedFor) {
  ScriptedUsb usb;
  usb.Plug(kDevice).Plug({.vid = 1, .pid = 2});
  ASSERT_EQ(ICC_OpenLinuxSdt(kVid, kPid), 0);
  const auto calls = usb.Calls();
  {
    const LogCapture log;
    EXPECT_EQ(ICC_OpenLinuxSdt(1, 2), 0);
    EXPECT_THAT(log.Messages(), ElementsAre("openHid:1,2\n"));
  }
  EXPECT_EQ(usb.Calls(), calls);
  ICC_CloseLinuxSdt();
}

TEST(InterruptOpen, HasAStateOfItsOwnBesideTheHidLink) {
  ScriptedUsb usb;
  usb.Plug(kDevice).Plug({.vid = 1, .pid = 2});
  ASSERT_EQ(ICC_OpenLinuxHid(1, 2), 0);
  EXPECT_EQ(ICC_CancelLinuxSdtRead(), -7);
  ASSERT_EQ(ICC_OpenLinuxSdt(kVid, kPid), 0);
  ICC_CloseLinuxHid();
  EXPECT_EQ(ICC_CancelLinuxSdtRead(), 0);
  ICC_CloseLinuxSdt();
}

TEST(InterruptClose, WithoutOpenLogsOneLineAndTouchesNothing) {
  const ScriptedUsb usb;
  const LogCapture log;
  EXPECT_EQ(ICC_CloseLinuxSdt(), 0);
  EXPECT_THAT(log.Messages(), ElementsAre("Close hid!\n"));
  EXPECT_TRUE(usb.Calls().empty());
}

TEST(InterruptContext, IsHeldWhileOpenAndLeftAfterManyCycles) {
  ScriptedUsb usb;
  usb.Plug(kDevice);
  const ContextBalance balance;
  for (int i = 0; i < 100; ++i) {
    ASSERT_EQ(ICC_OpenLinuxSdt(kVid, kPid), 0);
    ASSERT_EQ(ICC_OpenLinuxSdt(kVid, kPid), 0);
    ASSERT_EQ(balance.Held(), 1);
    ASSERT_EQ(ICC_CloseLinuxSdt(), 0);
    ASSERT_EQ(balance.Held(), 0);
  }
  EXPECT_EQ(balance.Inits(), 100);
  EXPECT_EQ(usb.Count("free_list"), 100);
}

TEST(InterruptContext, IsLeftAfterEveryOpenThatFails) {
  const ContextBalance balance;
  for (const UsbDevice& device :
       {UsbDevice{.vid = 1, .pid = 2}, UsbDevice{.vid = kVid, .pid = kPid, .open_result = LIBUSB_ERROR_IO},
        UsbDevice{.vid = kVid, .pid = kPid, .claim_result = LIBUSB_ERROR_BUSY}}) {
    ScriptedUsb usb;
    usb.Plug(device);
    EXPECT_LT(ICC_OpenLinuxSdt(kVid, kPid), 0);
    EXPECT_EQ(ICC_CloseLinuxSdt(), 0);
    EXPECT_EQ(balance.Held(), 0);
  }
  EXPECT_EQ(balance.Inits(), 3);
}

}  // namespace
}  // namespace gwq::test
