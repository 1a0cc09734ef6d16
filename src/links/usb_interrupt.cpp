// SPDX-License-Identifier: MIT
#include <gwq/links/usb_interrupt.h>

#include <libusb-1.0/libusb.h>

#include <gwq/diag/log.h>
#include <gwq/status_codes.h>
#include "diag/internal/failure.h"
#include "links/internal/lifetime.h"
#include "links/internal/long_pause.h"
#include "links/internal/read_gate.h"
#include "links/internal/read_until.h"
#include "links/internal/usb_device.h"

libusb_device** m_devsSdt = nullptr;

namespace gwq {
namespace {

constexpr UsbTexts kTexts{.listed = "libusb_get_device_list:%d\n",
                          .nothing_listed = "get hiddev err!\n",
                          .candidate = "vid=%04X pid=%04X\n",
                          .not_found = "get hiddev err!\n",
                          .found = "find target device\n",
                          .open_failed = "libusb open failed\n",
                          .opened = nullptr,
                          .driver_active = "Cnt1=%d\n",
                          .driver_detached = "Cnt2=%d\n",
                          .claimed = nullptr};

constinit UsbDevice g_device{&libusb_interrupt_transfer, m_devsSdt, kTexts};
constinit ReadGate g_gate;

}  // namespace

void ResetUsbInterruptLink() {
  g_device.Abandon();
  g_gate.Reset();
}

bool UsbInterruptIsReading() {
  return g_gate.reading() != 0;
}

// Each open takes a reference to libusb's default context, and the close returns it.
// Contract: a device that is already open is kept, also if other ids are asked for.
int ICC_OpenLinuxSdt(int vid, int pid) {
  ICC_DPrintLogToFile("openHid:%d,%d\n", vid, pid);
  if (g_device.IsOpen()) return 0;
  const int initialised = libusb_init(nullptr);
  ICC_DPrintLogToFile("libusb_init\n");
  if (initialised != 0) {
    NoteUsbFailure(GWQ_STEP_FIND, initialised);
    ICC_DPrintLogToFile("get hiddev err!\n");
    return GWQ_LINK_NO_DEVICE;
  }
  if (const int result = g_device.Open(vid, pid); result != 0) {
    libusb_exit(nullptr);
    return result;
  }
  ICC_DPrintLogToFile("open hiddev success!\n");
  return 0;
}

int ICC_CloseLinuxSdt() {
  ICC_DPrintLogToFile("Close hid!\n");
  if (!g_device.IsOpen()) return 0;
  g_device.Close();
  g_gate.Reset();
  libusb_exit(nullptr);
  ICC_DPrintLogToFile("Close hid ok!\n");
  return 0;
}

int ICC_WriteLinuxSdt(unsigned char* data, int length) {
  ICC_DPrintDataHexToFile("hid write", data, length);
  if (!g_device.IsOpen()) return GWQ_LINK_NO_DEVICE;
  const auto log_attempt = [](int attempt, int transferred, int result) {
    ICC_DPrintLogToFile("nTimes:%d sendlen%d ret:%d\n", attempt, transferred, result);
  };
  if (!g_device.Write(data, length, log_attempt)) return GWQ_LINK_WRITE;
  ICC_DPrintLogToFile("write ok:%d\n", length);
  return length;
}

// Contract: a closed device is not an error; the read ends with the time-out.
int ICC_ReadLinuxSdt(unsigned char* buffer, int maximum, int timeout_s, GwqEndOfRead end) {
  if (buffer == nullptr) return GWQ_LINK_BAD_ARGUMENT;
  const ReadGate::Reading reading(g_gate);
  const ReadEnd read_end(maximum, timeout_s, end);
  ICC_DPrintLogToFile("hid read maxlen:%d\n", maximum);
  UsbDevice::Report report;
  const auto read_some = [&](int count) {
    const int transferred = g_device.Read(report, buffer + count);
    ICC_DPrintDataHexToFile("hid read:", report.data(), transferred);
    // Contract: the transfer that completes the maximum is not logged a second time.
    if (count + transferred < maximum) ICC_DPrintDataHexToFile("read real data", buffer, count + transferred);
    return transferred;
  };
  const int result = ReadUntil(read_end, g_gate, buffer, read_some, &AfterLongPause);
  ICC_DPrintLogToFile("read ret:%d\n", result);
  return result;
}

int ICC_CancelLinuxSdtRead() {
  if (!g_device.IsOpen()) return GWQ_LINK_NO_DEVICE;
  g_gate.Cancel();
  return 0;
}

}  // namespace gwq
