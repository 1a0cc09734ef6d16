#include <gwq/links/usb_interrupt.h>

#include <libusb-1.0/libusb.h>

#include <cstring>

#include <gwq/diag/log.h>
#include <gwq/status_codes.h>
#include "diag/internal/shared_word.h"
#include "links/internal/lifetime.h"
#include "links/internal/long_pause.h"
#include "links/internal/read_end.h"
#include "links/internal/usb_transfer.h"

libusb_device** m_devsSdt = nullptr;

namespace gwq {
namespace {

libusb_device* m_sdtDev = nullptr;  // non-null means open
libusb_device_handle* m_sdtHandle = nullptr;
int s_bSdtReading = 0;
int s_bSdtCancel = 0;

// Every open takes a reference to libusb's default context; it goes with the device.
void ForgetDevice() {
  if (m_devsSdt != nullptr) libusb_free_device_list(m_devsSdt, 1);
  m_devsSdt = nullptr;
  m_sdtDev = nullptr;
  StoreShared<libusb_device_handle*>(m_sdtHandle, nullptr);
  libusb_exit(nullptr);
}

// Without a context there is nothing to list.
int TakeContext() {
  const int result = libusb_init(nullptr);
  ICC_DPrintLogToFile("libusb_init\n");
  if (result == 0) return 0;
  ICC_DPrintLogToFile("get hiddev err!\n");
  return GWQ_LINK_NO_DEVICE;
}

bool IsTarget(libusb_device* device, int vid, int pid) {
  libusb_device_descriptor descriptor{};
  const bool readable = libusb_get_device_descriptor(device, &descriptor) >= 0;
  ICC_DPrintLogToFile("vid=%04X pid=%04X\n", static_cast<unsigned>(descriptor.idVendor),
                      static_cast<unsigned>(descriptor.idProduct));
  return readable && descriptor.idVendor == vid && descriptor.idProduct == pid;
}

// A listing that fails leaves no list to walk.
libusb_device* FindInList(int vid, int pid) {
  if (m_devsSdt == nullptr) return nullptr;
  for (libusb_device** device = m_devsSdt; *device != nullptr; ++device) {
    if (IsTarget(*device, vid, pid)) return *device;
  }
  return nullptr;
}

// The list is kept while the device is open: it holds the reference to it.
int FindDevice(int vid, int pid) {
  const ssize_t count = libusb_get_device_list(UsbContext(), &m_devsSdt);
  ICC_DPrintLogToFile("libusb_get_device_list:%d\n", static_cast<int>(count));
  m_sdtDev = FindInList(vid, pid);
  if (m_sdtDev == nullptr) {
    ICC_DPrintLogToFile("get hiddev err!\n");
    ForgetDevice();
    return GWQ_LINK_NO_DEVICE;
  }
  ICC_DPrintLogToFile("find target device\n");
  return 0;
}

int OpenHandle() {
  libusb_device_handle* handle = nullptr;
  if (libusb_open(m_sdtDev, &handle) != 0) {
    ICC_DPrintLogToFile("libusb open failed\n");
    ForgetDevice();
    return GWQ_NOT_OPENED;
  }
  StoreShared(m_sdtHandle, handle);
  return 0;
}

void DetachKernelDriver() {
  const int active = libusb_kernel_driver_active(m_sdtHandle, usb::kInterface);
  ICC_DPrintLogToFile("Cnt1=%d\n", active);
  if (active != 1) return;
  const int detached = libusb_detach_kernel_driver(m_sdtHandle, usb::kInterface);
  ICC_DPrintLogToFile("Cnt2=%d\n", detached);
}

int ClaimInterface() {
  const int result = libusb_claim_interface(m_sdtHandle, usb::kInterface);
  if (result >= 0) return 0;
  libusb_close(m_sdtHandle);
  ForgetDevice();
  ICC_DPrintLogToFile("Cannot Claim Interface:%d\n", result);
  return GWQ_NOT_OPENED;
}

void LogAttempt(int attempt, int transferred, int result) {
  ICC_DPrintLogToFile("nTimes:%d sendlen%d ret:%d\n", attempt, transferred, result);
}

int Cancelled() {
  PauseAfterCancel();
  return GWQ_LINK_CANCELLED;
}

int ReadUntilEnd(unsigned char* buffer, int maximum, const ReadEnd& end) {
  usb::Report report;
  int count = 0;
  while (true) {
    if (LoadShared(s_bSdtCancel) != 0) return Cancelled();
    const int transferred = usb::TransferIn(&libusb_interrupt_transfer, LoadShared(m_sdtHandle), report);
    ICC_DPrintDataHexToFile("hid read:", report.data(), transferred);
    std::memcpy(buffer + count, report.data(), static_cast<std::size_t>(transferred));
    count += transferred;
    if (count < maximum) ICC_DPrintDataHexToFile("read real data", buffer, count);
    if (const auto result = end.Reached(buffer, count)) return *result;
  }
}

}  // namespace

void ForgetUsbInterruptLink() {
  m_devsSdt = nullptr;
  m_sdtDev = nullptr;
  m_sdtHandle = nullptr;
  s_bSdtReading = 0;
}

bool UsbInterruptIsReading() {
  return LoadShared(s_bSdtReading) != 0;
}

}  // namespace gwq

using gwq::LoadShared;
using gwq::StoreShared;
namespace usb = gwq::usb;

int ICC_OpenLinuxSdt(int vid, int pid) {
  ICC_DPrintLogToFile("openHid:%d,%d\n", vid, pid);
  if (gwq::m_sdtDev != nullptr) return 0;
  if (const int result = gwq::TakeContext(); result != 0) return result;
  if (const int result = gwq::FindDevice(vid, pid); result != 0) return result;
  if (const int result = gwq::OpenHandle(); result != 0) return result;
  gwq::DetachKernelDriver();
  if (const int result = gwq::ClaimInterface(); result != 0) return result;
  ICC_DPrintLogToFile("open hiddev success!\n");
  return 0;
}

int ICC_CloseLinuxSdt() {
  ICC_DPrintLogToFile("Close hid!\n");
  if (gwq::m_sdtDev == nullptr) return 0;
  libusb_close(gwq::m_sdtHandle);
  gwq::ForgetDevice();
  ICC_DPrintLogToFile("Close hid ok!\n");
  return 0;
}

int ICC_WriteLinuxSdt(unsigned char* data, int length) {
  ICC_DPrintDataHexToFile("hid write", data, length);
  libusb_device_handle* const handle = LoadShared(gwq::m_sdtHandle);
  if (handle == nullptr) return GWQ_LINK_NO_DEVICE;
  const bool sent = usb::TransferOut(&libusb_interrupt_transfer, handle, data, length, &gwq::LogAttempt);
  if (!sent) return GWQ_LINK_WRITE;
  ICC_DPrintLogToFile("write ok:%d\n", length);
  return length;
}

int ICC_ReadLinuxSdt(unsigned char* buffer, int maximum, int timeout_s, GwqEndOfRead end) {
  if (buffer == nullptr) return GWQ_LINK_BAD_ARGUMENT;
  StoreShared(gwq::s_bSdtCancel, 0);
  StoreShared(gwq::s_bSdtReading, 1);
  const gwq::ReadEnd read_end(maximum, timeout_s, end);
  ICC_DPrintLogToFile("hid read maxlen:%d\n", maximum);
  const int result = gwq::ReadUntilEnd(buffer, maximum, read_end);
  StoreShared(gwq::s_bSdtReading, 0);
  ICC_DPrintLogToFile("read ret:%d\n", result);
  return result;
}

int ICC_CancelLinuxSdtRead() {
  if (LoadShared(gwq::m_sdtHandle) == nullptr) return GWQ_LINK_NO_DEVICE;
  if (LoadShared(gwq::s_bSdtReading) == 1) StoreShared(gwq::s_bSdtCancel, 1);
  return 0;
}
