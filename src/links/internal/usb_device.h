// SPDX-License-Identifier: MIT
// A USB terminal: interface 0, endpoints 0x02 (out) and 0x81 (in), reports of 1024 bytes. Each of
// the two USB links has one, with its own libusb transfer function and log texts.
#pragma once

#include <libusb-1.0/libusb.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstring>

#include "codec/internal/secret.h"
#include "diag/internal/failure.h"
#include "diag/internal/pause.h"

namespace gwq {

// The log lines of an open; NULL logs nothing.
struct UsbTexts {
  const char* listed;           // %d: the number of devices, or libusb's error
  const char* nothing_listed;   //
  const char* candidate;        // %04X %04X: vendor and product of each device
  const char* not_found;        //
  const char* found;            //
  const char* open_failed;      // %d: libusb's error
  const char* opened;           // %d: 0
  const char* driver_active;    // %d: 1 if the kernel's driver has it, or libusb's result
  const char* driver_detached;  // %d: libusb's result
  const char* claimed;          // %d: libusb's result
};

class UsbDevice {
 public:
  static constexpr int kReportSize = 1024;
  using Report = SecretArray<unsigned char, kReportSize>;
  using Transfer = decltype(&libusb_bulk_transfer);

  // `list` keeps libusb's device list while the device is open: it holds the reference to the
  // device.
  constexpr UsbDevice(Transfer transfer, libusb_device**& list, const UsbTexts& texts)
      : transfer_(transfer), list_(list), texts_(texts) {}

  [[nodiscard]] bool IsOpen() const { return handle() != nullptr; }

  // Returns 0, GWQ_LINK_NO_DEVICE or GWQ_NOT_OPENED; nothing is open after a failure.
  int Open(int vid, int pid);
  // Closing the handle releases the interface.
  // Contract: the kernel's driver stays detached.
  void Close();
  // Gives the device up without closing it: the libusb of the parent process owns it.
  void Abandon();

  // One transfer in, copied to `out`. Returns the bytes received.
  // Contract: the transfer's own result is ignored, so that an error looks like silence.
  // Contract: a report is copied whole, also beyond the maximum of the read.
  int Read(Report& report, unsigned char* out) const;
  // One transfer in, thrown away. Returns the bytes received.
  int Skip(Report& report, int timeout_ms) const;

  // Up to 5 transfers of the remaining bytes. Calls attempted(number from 1, bytes transferred,
  // result) after each one. Returns whether all bytes were sent.
  // Contract: only the bytes transferred count, not the transfers' results.
  template <typename Attempted>
  bool Write(unsigned char* data, int length, Attempted attempted) const;

 private:
  static constexpr int kInterface = 0;
  static constexpr unsigned char kEndpointOut = 0x02;
  static constexpr unsigned char kEndpointIn = 0x81;
  static constexpr unsigned kWriteTimeoutMs = 1000;
  static constexpr int kReadTimeoutMs = 200;
  static constexpr int kWriteAttempts = 5;
  static constexpr int kPauseAfterErrorMs = 20;

  [[nodiscard]] libusb_device_handle* handle() const { return handle_.load(std::memory_order_acquire); }
  [[nodiscard]] libusb_device* Find(libusb_device** list, int vid, int pid) const;
  // Returns libusb's result; 0 also if there was nothing to detach.
  int DetachKernelDriver(libusb_device_handle* handle) const;

  Transfer transfer_;
  libusb_device**& list_;
  const UsbTexts& texts_;
  std::atomic<libusb_device_handle*> handle_{nullptr};  // also read by cancelling threads
};

// Sleeps after an immediate failure, as from an unplugged device, so that the time-out loop does
// not busy-wait.
inline int UsbDevice::Skip(Report& report, int timeout_ms) const {
  report.Wipe();
  libusb_device_handle* const device = handle();
  int transferred = 0;
  const int result = device == nullptr ? static_cast<int>(LIBUSB_ERROR_NO_DEVICE)
                                       : transfer_(device, kEndpointIn, report.data(), kReportSize,
                                                   &transferred, static_cast<unsigned>(timeout_ms));
  if (transferred <= 0 && result != 0 && result != LIBUSB_ERROR_TIMEOUT) {
    NoteUsbFailure(GWQ_STEP_WAIT, result);
    PauseMs(std::min(kPauseAfterErrorMs, timeout_ms));
  }
  return std::clamp(transferred, 0, kReportSize);
}

inline int UsbDevice::Read(Report& report, unsigned char* out) const {
  const int transferred = Skip(report, kReadTimeoutMs);
  std::memcpy(out, report.data(), static_cast<std::size_t>(transferred));
  return transferred;
}

template <typename Attempted>
bool UsbDevice::Write(unsigned char* data, int length, Attempted attempted) const {
  if (length < 0 || (data == nullptr && length > 0)) return false;
  libusb_device_handle* const device = handle();
  int sent = 0;
  int result = 0;
  for (int attempt = 1; attempt <= kWriteAttempts; ++attempt) {
    int transferred = 0;
    result = transfer_(device, kEndpointOut, data + sent, length - sent, &transferred, kWriteTimeoutMs);
    attempted(attempt, transferred, result);
    sent += std::clamp(transferred, 0, length - sent);
    if (sent == length) return true;
  }
  NoteUsbFailure(GWQ_STEP_SEND, result);
  return false;
}

}  // namespace gwq
