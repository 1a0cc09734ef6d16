// What the two USB links have in common: interface 0, and transfers of at most 1024 bytes, endpoint
// 0x02 out and 0x81 in. Each brings the libusb function that it transfers with.
#pragma once

#include <libusb-1.0/libusb.h>

#include <algorithm>

#include "codec/internal/secret.h"
#include "diag/internal/pause.h"

namespace gwq::usb {

inline constexpr int kInterface = 0;
inline constexpr unsigned char kEndpointOut = 0x02;
inline constexpr unsigned char kEndpointIn = 0x81;
inline constexpr int kReportSize = 1024;
inline constexpr unsigned kWriteTimeoutMs = 1000;
inline constexpr unsigned kReadTimeoutMs = 200;
inline constexpr int kWriteAttempts = 5;
inline constexpr int kPauseAfterErrorMs = 20;

using Report = SecretArray<unsigned char, kReportSize>;
using Function = decltype(&libusb_bulk_transfer);

// One transfer in; returns how many bytes it brought. Only they count, not the transfer's own result; a
// transfer that fails at once (the device is gone) is followed by a pause, so that the wait for the time-out does not spin.
inline int TransferIn(Function transfer, libusb_device_handle* handle, Report& report) {
  report.Wipe();
  int transferred = 0;
  const int result = handle == nullptr ? static_cast<int>(LIBUSB_ERROR_NO_DEVICE)
                                       : transfer(handle, kEndpointIn, report.data(), kReportSize,
                                                  &transferred, kReadTimeoutMs);
  if (transferred <= 0 && result != 0 && result != LIBUSB_ERROR_TIMEOUT) PauseMs(kPauseAfterErrorMs);
  return std::clamp(transferred, 0, kReportSize);
}

// Up to 5 transfers of what is not yet out; `attempted` is told of each with its number from 1, the bytes it
// moved and its result. Returns whether all bytes went out.
template <typename Attempted>
bool TransferOut(Function transfer, libusb_device_handle* handle, unsigned char* data, int length,
                 Attempted attempted) {
  if (length < 0 || (data == nullptr && length > 0)) return false;
  int sent = 0;
  for (int attempt = 1; attempt <= kWriteAttempts; ++attempt) {
    int transferred = 0;
    const int result =
        transfer(handle, kEndpointOut, data + sent, length - sent, &transferred, kWriteTimeoutMs);
    attempted(attempt, transferred, result);
    sent += std::clamp(transferred, 0, length - sent);
    if (sent == length) return true;
  }
  return false;
}

}  // namespace gwq::usb
