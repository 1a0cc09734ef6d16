// SPDX-License-Identifier: MIT
// The two USB links, of which most tests are the same.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <libusb-1.0/libusb.h>

#include <numeric>
#include <ostream>
#include <string>
#include <vector>

#include <gwq/links/usb_hid.h>
#include <gwq/links/usb_interrupt.h>
#include "support/bytes.h"
#include "support/named.h"
#include "support/predicates.h"
#include "support/scripted_usb.h"

namespace gwq::test {

using Lines = std::vector<std::string>;

struct UsbLink {
  const char* name;
  int (*open)(int vid, int pid);
  int (*write)(unsigned char* data, int length);
  int (*read)(unsigned char* buffer, int maximum, int timeout_s, GwqEndOfRead end);
  int (*close)();
  int (*cancel)();
  const char* kind;  // of its transfers, as ScriptedUsb names it
  std::vector<std::int64_t> slept_after_cancel;
};

inline const std::vector<UsbLink> kUsbLinks{{"Hid",
                                             &ICC_OpenLinuxHid,
                                             &ICC_WriteLinuxHid,
                                             &ICC_ReadLinuxHid,
                                             &ICC_CloseLinuxHid,
                                             &ICC_CancelLinuxHidRead,
                                             "",
                                             {}},
                                            {"Interrupt",
                                             &ICC_OpenLinuxSdt,
                                             &ICC_WriteLinuxSdt,
                                             &ICC_ReadLinuxSdt,
                                             &ICC_CloseLinuxSdt,
                                             &ICC_CancelLinuxSdtRead,
                                             "interrupt ",
                                             {100'000'000}}};

class UsbLinks : public testing::TestWithParam<UsbLink> {
 protected:
  static constexpr int kVid = 0xABCD;
  static constexpr int kPid = 0x12EF;

  static int Open(int vid = kVid, int pid = kPid) { return GetParam().open(vid, pid); }
  static int Write(unsigned char* data, int length) { return GetParam().write(data, length); }
  static int Read(unsigned char* buffer, int maximum, int timeout_s, GwqEndOfRead end) {
    return GetParam().read(buffer, maximum, timeout_s, end);
  }
  static int Close() { return GetParam().close(); }
  static int Cancel() { return GetParam().cancel(); }

  ScriptedUsb usb_;
};

inline Bytes Pattern(std::size_t size) {
  Bytes bytes(size);
  std::iota(bytes.begin(), bytes.end(), std::uint8_t{1});
  return bytes;
}

}  // namespace gwq::test
