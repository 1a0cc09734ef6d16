// SPDX-License-Identifier: MIT
#include <gwq/links/usb_hid.h>

#include <libusb-1.0/libusb.h>

#include <gwq/diag/log.h>
#include <gwq/status_codes.h>
#include "links/internal/lifetime.h"
#include "links/internal/link_entries.h"
#include "links/internal/read_gate.h"
#include "links/internal/read_until.h"
#include "links/internal/terminal_line.h"
#include "links/internal/usb_device.h"

namespace gwq {
namespace {

constexpr UsbTexts kTexts{.listed = "libusb_get_device_list:%d",
                          .nothing_listed = "libusb_get_device_list failed......",
                          .candidate = nullptr,
                          .not_found = "Not find target device, return\n",
                          .found = "find target device!!",
                          .open_failed = "libusb_open failed ,nRet=%d\n",
                          .opened = "libusb_open success ,nRet=%d",
                          .driver_active = "driver_active  Cnt1=%d\n",
                          .driver_detached = "driver_active  Cnt2=%d\n",
                          .claimed = "libusb_claim_interface  nRet=%d\n"};

libusb_device** g_list = nullptr;
constinit UsbDevice g_device{&libusb_bulk_transfer, g_list, kTexts};
constinit ReadGate g_gate;

}  // namespace

int WriteUsbHid(unsigned char* data, int length, const WriteEnd& /*end*/) {
  if (!g_device.IsOpen()) return GWQ_LINK_NO_DEVICE;
  const bool sent = g_device.Write(data, length, [](int, int, int) {});
  return sent ? length : GWQ_LINK_WRITE;
}

int DrainUsbHid(int silence_ms) {
  const ReadGate::Reading reading(g_gate);
  UsbDevice::Report report;
  const auto skip_some = [&report](int timeout_ms) { return g_device.Skip(report, timeout_ms); };
  return DrainUntilSilent(silence_ms, g_gate, skip_some, GWQ_LINK_CANCELLED);
}

void ResetUsbHidLink() {
  g_device.Abandon();
  g_gate.Reset();
}

bool UsbHidIsReading() {
  return g_gate.reading() != 0;
}

// Contract: a device that is already open is kept, also if other ids are asked for.
int ICC_OpenLinuxHid(int vid, int pid) {
  ICC_DPrintLogToFile("\nOpen Device:%x,%x, begin\n", static_cast<unsigned>(vid), static_cast<unsigned>(pid));
  if (g_device.IsOpen()) {
    ICC_DPrintLogToFile("m_targetDev != NULL, return !!");
    return 0;
  }
  if (const int result = g_device.Open(vid, pid); result != 0) return result;
  ICC_DPrintLogToFile("Open device success!  End\n");
  return 0;
}

int ICC_CloseLinuxHid() {
  ICC_DPrintLogToFile("\nClose Device Begin");
  if (!g_device.IsOpen()) {
    ICC_DPrintLogToFile("m_targetDev == NULL, not need clsoe, return\n");
    return 0;
  }
  g_device.Close();
  g_gate.Reset();
  ICC_DPrintLogToFile("Close Device Success! End\n");
  return 0;
}

int ICC_WriteLinuxHid(unsigned char* data, int length) {
  return WriteUsbHid(data, length, {});
}

// Contract: a closed device is not an error; the read ends with the time-out.
int ICC_ReadLinuxHid(unsigned char* buffer, int maximum, int timeout_s, GwqEndOfRead end) {
  if (buffer == nullptr) return GWQ_LINK_BAD_ARGUMENT;
  const ReadGate::Reading reading(g_gate);
  UsbDevice::Report report;
  const auto read_some = [&](int count) { return g_device.Read(report, buffer + count); };
  return ReadUntil(ReadEnd(maximum, timeout_s, end), g_gate, buffer, read_some,
                   [] { return GWQ_LINK_CANCELLED; });
}

int ICC_CancelLinuxHidRead() {
  ICC_DPrintLogToFile("[ICC_CancelLinuxHidRead] begin s_bIsReading=%d\n", g_gate.reading());
  if (!g_device.IsOpen()) return GWQ_LINK_NO_DEVICE;
  g_gate.Cancel();
  return 0;
}

}  // namespace gwq
