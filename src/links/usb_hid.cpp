#include <gwq/links/usb_hid.h>

#include <libusb-1.0/libusb.h>

#include <cstring>

#include <gwq/diag/log.h>
#include <gwq/status_codes.h>
#include "diag/internal/shared_word.h"
#include "links/internal/lifetime.h"
#include "links/internal/read_end.h"
#include "links/internal/usb_transfer.h"

namespace gwq {
namespace {

libusb_device* m_targetDev = nullptr;  // non-null means open
libusb_device_handle* m_devHandle = nullptr;
libusb_device** m_devList = nullptr;
int s_bIsReading = 0;
int s_bCancelRead = 0;

void ForgetDevice() {
  if (m_devList != nullptr) libusb_free_device_list(m_devList, 1);
  m_devList = nullptr;
  m_targetDev = nullptr;
  StoreShared<libusb_device_handle*>(m_devHandle, nullptr);
}

bool HasIds(libusb_device* device, int vid, int pid) {
  libusb_device_descriptor descriptor{};
  if (libusb_get_device_descriptor(device, &descriptor) < 0) return false;
  return descriptor.idVendor == vid && descriptor.idProduct == pid;
}

libusb_device* FindInList(int vid, int pid) {
  for (libusb_device** device = m_devList; *device != nullptr; ++device) {
    if (HasIds(*device, vid, pid)) return *device;
  }
  return nullptr;
}

// The list is kept while the device is open: it holds the reference to it.
int FindDevice(int vid, int pid) {
  const ssize_t count = libusb_get_device_list(UsbContext(), &m_devList);
  ICC_DPrintLogToFile("libusb_get_device_list:%d", static_cast<int>(count));
  if (count <= 0 || m_devList == nullptr) {
    ICC_DPrintLogToFile("libusb_get_device_list failed......");
    ForgetDevice();
    return GWQ_LINK_NO_DEVICE;
  }
  m_targetDev = FindInList(vid, pid);
  if (m_targetDev == nullptr) {
    ICC_DPrintLogToFile("Not find target device, return\n");
    ForgetDevice();
    return GWQ_LINK_NO_DEVICE;
  }
  ICC_DPrintLogToFile("find target device!!");
  return 0;
}

int OpenHandle() {
  libusb_device_handle* handle = nullptr;
  const int result = libusb_open(m_targetDev, &handle);
  if (result != 0) {
    ICC_DPrintLogToFile("libusb_open failed ,nRet=%d\n", result);
    ForgetDevice();
    return GWQ_NOT_OPENED;
  }
  StoreShared(m_devHandle, handle);
  ICC_DPrintLogToFile("libusb_open success ,nRet=%d", result);
  return 0;
}

void DetachKernelDriver() {
  const int active = libusb_kernel_driver_active(m_devHandle, usb::kInterface);
  ICC_DPrintLogToFile("driver_active  Cnt1=%d\n", active);
  if (active != 1) return;
  const int detached = libusb_detach_kernel_driver(m_devHandle, usb::kInterface);
  ICC_DPrintLogToFile("driver_active  Cnt2=%d\n", detached);
}

int ClaimInterface() {
  const int result = libusb_claim_interface(m_devHandle, usb::kInterface);
  ICC_DPrintLogToFile("libusb_claim_interface  nRet=%d\n", result);
  if (result >= 0) return 0;
  libusb_close(m_devHandle);
  ForgetDevice();
  ICC_DPrintLogToFile("Cannot Claim Interface:%d\n", result);
  return GWQ_NOT_OPENED;
}

int ReadUntilEnd(unsigned char* buffer, const ReadEnd& end) {
  usb::Report report;
  int count = 0;
  while (true) {
    if (LoadShared(s_bCancelRead) != 0) return GWQ_LINK_CANCELLED;
    const int transferred = usb::TransferIn(&libusb_bulk_transfer, LoadShared(m_devHandle), report);
    std::memcpy(buffer + count, report.data(), static_cast<std::size_t>(transferred));
    count += transferred;
    if (const auto result = end.Reached(buffer, count)) return *result;
  }
}

}  // namespace

void ForgetUsbHidLink() {
  m_devList = nullptr;
  m_targetDev = nullptr;
  m_devHandle = nullptr;
  s_bIsReading = 0;
}

bool UsbHidIsReading() {
  return LoadShared(s_bIsReading) != 0;
}

}  // namespace gwq

using gwq::LoadShared;
using gwq::StoreShared;
namespace usb = gwq::usb;

int ICC_OpenLinuxHid(int vid, int pid) {
  ICC_DPrintLogToFile("\nOpen Device:%x,%x, begin\n", static_cast<unsigned>(vid), static_cast<unsigned>(pid));
  if (gwq::m_targetDev != nullptr) {
    ICC_DPrintLogToFile("m_targetDev != NULL, return !!");
    return 0;
  }
  if (const int result = gwq::FindDevice(vid, pid); result != 0) return result;
  if (const int result = gwq::OpenHandle(); result != 0) return result;
  gwq::DetachKernelDriver();
  if (const int result = gwq::ClaimInterface(); result != 0) return result;
  ICC_DPrintLogToFile("Open device success!  End\n");
  return 0;
}

int ICC_CloseLinuxHid() {
  ICC_DPrintLogToFile("\nClose Device Begin");
  if (gwq::m_targetDev == nullptr) {
    ICC_DPrintLogToFile("m_targetDev == NULL, not need clsoe, return\n");
    return 0;
  }
  // The interface goes with the handle; the kernel's driver stays detached on purpose.
  libusb_close(gwq::m_devHandle);
  gwq::ForgetDevice();
  StoreShared(gwq::s_bIsReading, 0);  // of a read that a predicate has jumped out of
  ICC_DPrintLogToFile("Close Device Success! End\n");
  return 0;
}

int ICC_WriteLinuxHid(unsigned char* data, int length) {
  if (gwq::m_devHandle == nullptr) return GWQ_LINK_NO_DEVICE;
  const auto unheard = [](int, int, int) {};
  const bool sent = usb::TransferOut(&libusb_bulk_transfer, gwq::m_devHandle, data, length, unheard);
  return sent ? length : GWQ_LINK_WRITE;
}

int ICC_ReadLinuxHid(unsigned char* buffer, int maximum, int timeout_s, GwqEndOfRead end) {
  if (buffer == nullptr) return GWQ_LINK_BAD_ARGUMENT;
  const int outer_reading =
      LoadShared(gwq::s_bIsReading);  // 1 for a read that the outer one's predicate makes
  StoreShared(gwq::s_bCancelRead, 0);
  StoreShared(gwq::s_bIsReading, 1);
  const int result = gwq::ReadUntilEnd(buffer, gwq::ReadEnd(maximum, timeout_s, end));
  StoreShared(gwq::s_bIsReading, outer_reading);
  return result;
}

int ICC_CancelLinuxHidRead() {
  ICC_DPrintLogToFile("[ICC_CancelLinuxHidRead] begin s_bIsReading=%d\n", LoadShared(gwq::s_bIsReading));
  if (LoadShared(gwq::m_devHandle) == nullptr) return GWQ_LINK_NO_DEVICE;
  if (LoadShared(gwq::s_bIsReading) == 1) StoreShared(gwq::s_bCancelRead, 1);
  return 0;
}
