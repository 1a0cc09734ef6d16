// SPDX-License-Identifier: MIT
// The descriptor, and how the calls without one find their link.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>

#include <gwq/frame/port.h>
#include <gwq/links/usb_hid.h>
#include "support/fake_tty.h"
#include "support/guarded_buffer.h"
#include "support/log_capture.h"
#include "support/named.h"
#include "support/scripted_usb.h"
#include "support/test_clock.h"

namespace gwq::test {
namespace {

using testing::ElementsAre;

// One of the two names of every call.
struct Layer {
  const char* name;
  int (*open)(TransMssionLinux_t*);
  int (*write)(unsigned char*, int);
  int (*read)(unsigned char*, int);
  int (*close)();
  int (*cancel)();
  int (*change)(TransMssionLinux_t*);
};

constexpr Layer kOuter{"Outer",
                       &ICC_OpenTransPort,
                       &ICC_WriteDataToTransPort,
                       &ICC_ReadDataFromTransPort,
                       &ICC_CloseTransPort,
                       &ICC_CancelReadTransPort,
                       &ICC_ChangeTermParam};
constexpr Layer kInner{"Inner",
                       &ICC_OpenLinuxTransPort,
                       &ICC_WriteDataToLinuxTransPort,
                       &ICC_ReadDataFromLinuxTransPort,
                       &ICC_CloseLinuxTransPort,
                       &ICC_CancelReadLinuxTransPort,
                       &ICC_ChangeLinuxTermParam};

constexpr int kVid = 0x1111;
constexpr int kPid = 0x2222;

int UntilDot(unsigned char* data, int count) {
  return count > 0 && data[count - 1] == '.' ? 0 : 1;
}

TransMssionLinux_t Usb(int timeout_s = 1) {
  TransMssionLinux_t port{};
  port.nHead = 170;
  port.nLinkType = GWQ_LINK_USB;
  port.nVid = kVid;
  port.nPid = kPid;
  port.nTimeOut = timeout_s;
  port.pfnEndOfRead = &UntilDot;
  return port;
}

TransMssionLinux_t Serial(const std::string& path, int timeout_s = 1) {
  TransMssionLinux_t port{};
  port.nHead = 170;
  port.nLinkType = GWQ_LINK_SERIAL;
  port.nBaud = 19200;
  path.copy(port.szTtyName, sizeof port.szTtyName - 1);
  port.nTimeOut = timeout_s;
  port.pfnEndOfRead = &UntilDot;
  return port;
}

TransMssionLinux_t OfType(int type) {
  TransMssionLinux_t port{};
  port.nLinkType = type;
  return port;
}

class Dispatcher : public testing::TestWithParam<Layer> {
 protected:
  Dispatcher() {
    SetTime(1'700'000'000);
    Select(GWQ_LINK_USB);
    usb_.Plug({.vid = kVid, .pid = kPid});
  }
  ~Dispatcher() override { Select(GWQ_LINK_USB); }

  static void Select(int type) {
    TransMssionLinux_t port = OfType(type);
    ICC_ChangeTermParam(&port);
  }

  Layer layer_ = GetParam();
  ScriptedUsb usb_;
  FakeTty tty_;
};

INSTANTIATE_TEST_SUITE_P(Layers, Dispatcher, testing::Values(kOuter, kInner), kByName);

TEST(Descriptor, FieldsStandWhereHostsExpectThem) {
  EXPECT_EQ(offsetof(TransMssionLinux_t, nHead), 0U);
  EXPECT_EQ(offsetof(TransMssionLinux_t, nLinkType), 4U);
  EXPECT_EQ(offsetof(TransMssionLinux_t, nReserved), 8U);
  EXPECT_EQ(offsetof(TransMssionLinux_t, nPid), 12U);
  EXPECT_EQ(offsetof(TransMssionLinux_t, nVid), 16U);
  EXPECT_EQ(offsetof(TransMssionLinux_t, nPortIndex), 20U);
  EXPECT_EQ(offsetof(TransMssionLinux_t, nBaud), 24U);
  EXPECT_EQ(offsetof(TransMssionLinux_t, szTtyName), 28U);
  EXPECT_EQ(offsetof(TransMssionLinux_t, nParam), 164U);
  EXPECT_EQ(offsetof(TransMssionLinux_t, nTimeOut), 168U);
  EXPECT_EQ(offsetof(TransMssionLinux_t, pfnEndOfRead), 176U);
}

TEST_P(Dispatcher, UsbDescriptorLeadsEveryCallToTheUsbLink) {
  TransMssionLinux_t port = Usb();
  ASSERT_EQ(layer_.open(&port), 0);
  unsigned char data[] = {'h', 'i'};
  EXPECT_EQ(layer_.write(data, 2), 2);
  usb_.Answer("ok.");
  unsigned char answer[8 + 1024] = {};
  EXPECT_EQ(layer_.read(answer, 8), 3);
  EXPECT_EQ(layer_.cancel(), 0);
  EXPECT_EQ(layer_.close(), 0);
  EXPECT_EQ(usb_.Sent(), BytesOf("hi"));
  EXPECT_EQ(usb_.Count("open 1111:2222"), 1);
  EXPECT_EQ(layer_.cancel(), -7) << "closed, and still the USB link";
  EXPECT_TRUE(tty_.Calls().empty());
}

TEST_P(Dispatcher, SerialDescriptorLeadsEveryCallToTheSerialLink) {
  TransMssionLinux_t port = Serial(tty_.Path());
  ASSERT_EQ(layer_.open(&port), 0);
  EXPECT_EQ(tty_.Applied().at(0).c_cflag & CBAUD, static_cast<unsigned>(B19200));
  unsigned char data[] = {'h', 'i'};
  EXPECT_EQ(layer_.write(data, 2), 2);
  tty_.Send("ok.");
  GuardedBuffer answer(8);
  EXPECT_EQ(layer_.read(answer.data(), 8), 3);
  EXPECT_EQ(layer_.cancel(), 0);
  EXPECT_EQ(layer_.close(), 0);
  EXPECT_EQ(tty_.Received(), BytesOf("hi"));
  EXPECT_EQ(layer_.cancel(), -7) << "closed, and still the serial link";
  EXPECT_EQ(layer_.write(data, 2), -5);
  EXPECT_EQ(layer_.read(answer.data(), 8), -2);
  EXPECT_TRUE(usb_.Calls().empty());
}

TEST_P(Dispatcher, ReadUsesTheDescriptorsTimeout) {
  for (const int timeout : {0, 2}) {
    TransMssionLinux_t port = Usb(timeout);
    ASSERT_EQ(layer_.open(&port), 0);
    port.nTimeOut = 9;  // what was opened counts
    const std::time_t start = Now();
    unsigned char answer[8 + 1024] = {};
    EXPECT_EQ(layer_.read(answer, 8), -4);
    EXPECT_EQ(Now() - start, timeout + 1);
    layer_.close();
  }
}

TEST_P(Dispatcher, UnknownLinkTypeOpensNothingAndTheFormerLinkStays) {
  for (const int type : {2, -1, 0x7FFFFFFF, -0x7FFFFFFF - 1}) {
    for (const int former : {GWQ_LINK_USB, GWQ_LINK_SERIAL}) {
      Select(former);
      TransMssionLinux_t port = OfType(type);
      const LogCapture log;
      EXPECT_EQ(layer_.open(&port), -1);
      EXPECT_TRUE(log.Messages().empty());
      unsigned char byte = 0;
      EXPECT_EQ(layer_.write(&byte, 1), former == GWQ_LINK_USB ? -7 : -5);
      EXPECT_EQ(layer_.close(), 0);
    }
  }
  EXPECT_TRUE(usb_.Calls().empty());
}

TEST_P(Dispatcher, NullDescriptorIsAnUnknownLink) {
  EXPECT_EQ(layer_.open(nullptr), -1);
}

TEST_P(Dispatcher, UnknownLinkInUseGivesMinus1FromEveryCall) {
  for (const int type : {2, -1, 170}) {
    Select(type);
    unsigned char buffer[1 + 1024] = {};
    EXPECT_EQ(layer_.write(buffer, 1), -1);
    EXPECT_EQ(layer_.read(buffer, 1), -1);
    EXPECT_EQ(layer_.close(), -1);
    EXPECT_EQ(layer_.cancel(), -1);
  }
}

TEST_P(Dispatcher, FailedOpenLeavesTheParametersOfTheFormerLink) {
  TransMssionLinux_t usb = Usb(0);
  ASSERT_EQ(layer_.open(&usb), 0);
  layer_.close();
  TransMssionLinux_t serial = Serial("/nonexistent/ttyS0", 30);
  serial.pfnEndOfRead = nullptr;
  EXPECT_EQ(layer_.open(&serial), -3);
  unsigned char buffer[8 + 1024] = {};
  EXPECT_EQ(layer_.write(buffer, 1), -7) << "the USB link's own status";
  const std::time_t start = Now();
  EXPECT_EQ(layer_.read(buffer, 8), -4);
  EXPECT_EQ(Now() - start, 1) << "the USB link's time-out of 0";
  TransMssionLinux_t absent = Usb();
  absent.nPid = 9;
  EXPECT_EQ(layer_.open(&absent), -7) << "passed through";
  serial.nLinkType = GWQ_LINK_SERIAL;
  std::strcpy(serial.szTtyName, "/dev/null");
  EXPECT_EQ(layer_.open(&serial), -1) << "passed through";
}

TEST_P(Dispatcher, ChangeMovesTheNextReadToTheOtherLink) {
  TransMssionLinux_t serial = Serial(tty_.Path());
  ASSERT_EQ(layer_.open(&serial), 0);
  TransMssionLinux_t usb = Usb();
  ASSERT_EQ(layer_.open(&usb), 0);
  layer_.change(&serial);
  tty_.Send("from the line.");
  unsigned char answer[64 + 1024] = {};
  EXPECT_EQ(layer_.read(answer, 64), 14);
  EXPECT_EQ(usb_.Count("in"), 0);
  layer_.close();
  layer_.change(&usb);
  layer_.close();
}

TEST_P(Dispatcher, ChangeTakesTimeoutAndPredicateWithoutOpeningOrClosing) {
  TransMssionLinux_t port = Usb(60);
  ASSERT_EQ(layer_.open(&port), 0);
  const auto calls = usb_.Calls();
  port.nTimeOut = 0;
  port.pfnEndOfRead = nullptr;
  layer_.change(&port);
  EXPECT_EQ(usb_.Calls(), calls);
  usb_.Answer("ok.");
  unsigned char answer[8 + 1024] = {};
  const std::time_t start = Now();
  EXPECT_EQ(layer_.read(answer, 8), -4) << "no predicate, so only the time ends it";
  EXPECT_EQ(Now() - start, 1);
  layer_.close();
}

TEST_P(Dispatcher, SerialReadIsLoggedInHexWhateverItsResult) {
  TransMssionLinux_t port = Serial(tty_.Path(), 0);
  ASSERT_EQ(layer_.open(&port), 0);
  const LogCapture log;
  tty_.Send("\x1BK.");
  GuardedBuffer answer(8);
  EXPECT_EQ(layer_.read(answer.data(), 8), 3);
  EXPECT_EQ(layer_.read(answer.data(), 8), -4);
  EXPECT_EQ(layer_.read(nullptr, 8), -2);
  layer_.close();
  EXPECT_EQ(layer_.read(answer.data(), 8), -2);
  EXPECT_THAT(log.Messages(),
              ElementsAre(" ICC_ReadLinuxCom nTimeOut=0", "COM PACKGET READ  LEN=3   HEX: 1B4B2E",
                          " ICC_ReadLinuxCom nTimeOut=0", "COM PACKGET READ  LEN=-4   HEX: ",
                          "COM PACKGET READ  LEN=-2   HEX: ", "COM PACKGET READ  LEN=-2   HEX: "));
}

TEST_P(Dispatcher, UsbReadIsNotLogged) {
  TransMssionLinux_t port = Usb();
  ASSERT_EQ(layer_.open(&port), 0);
  const LogCapture log;
  usb_.Answer("ok.");
  unsigned char answer[8 + 1024] = {};
  layer_.read(answer, 8);
  EXPECT_TRUE(log.Messages().empty());
  layer_.close();
}

TEST_P(Dispatcher, SetBackUpParamCopiesTheLeadingBytesAsTheyAre) {
  TransMssionLinux_t raw{};
  raw.nHead = 2;  // lands on the time-out
  raw.nLinkType = 77;
  GwqEndOfRead predicate = &UntilDot;
  std::memcpy(reinterpret_cast<char*>(&raw) + 8, &predicate, sizeof predicate);
  raw.nVid = GWQ_LINK_SERIAL;  // lands on the link type
  raw.nPortIndex = 5;
  TransMssionLinux_t serial = Serial(tty_.Path(), 60);
  serial.pfnEndOfRead = nullptr;
  ASSERT_EQ(layer_.open(&serial), 0);
  TransMssionLinux_t usb = Usb(60);
  ASSERT_EQ(layer_.open(&usb), 0);
  SetBackUpParam(&raw);
  tty_.Send("a.");
  GuardedBuffer answer(8);
  EXPECT_EQ(layer_.read(answer.data(), 8), 2) << "the predicate on the serial link";
  const std::time_t start = Now();
  EXPECT_EQ(layer_.read(answer.data(), 8), -4);
  EXPECT_EQ(Now() - start, 3) << "the time-out of 2";
  layer_.close();
  ICC_CloseLinuxHid();
}

TEST_P(Dispatcher, WriteDataTellsOnlyWhetherAllWentOut) {
  unsigned char data[] = {'h', 'i'};
  EXPECT_EQ(WriteData(2, data), -10) << "nothing is open";
  TransMssionLinux_t port = Serial(tty_.Path());
  ASSERT_EQ(layer_.open(&port), 0);
  EXPECT_EQ(WriteData(2, data), 0);
  tty_.NextWritesMove({1, -1});
  EXPECT_EQ(WriteData(2, data), -10);
  EXPECT_EQ(WriteData(0, data), -10) << "the serial link refuses a length of 0";
  EXPECT_EQ(WriteData(-1, data), -10);
  EXPECT_EQ(WriteData(-2, data), 0) << "-2 is not less than the length";
  layer_.close();
}

}  // namespace
}  // namespace gwq::test
