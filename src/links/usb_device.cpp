// SPDX-License-Identifier: MIT
#include "links/internal/usb_device.h"

#include <memory>

#include <gwq/diag/log.h>
#include <gwq/status_codes.h>
#include "links/internal/lifetime.h"

namespace gwq {
namespace {

struct FreeList {
  void operator()(libusb_device** list) const { libusb_free_device_list(list, 1); }
};
struct CloseHandle {
  void operator()(libusb_device_handle* handle) const { libusb_close(handle); }
};
using DeviceList = std::unique_ptr<libusb_device*, FreeList>;
using Handle = std::unique_ptr<libusb_device_handle, CloseHandle>;

template <typename... Values>
void Log(const char* text, Values... values) {
  if (text == nullptr) return;
  if constexpr (sizeof...(values) == 0) {
    ICC_DPrintLogToFile("%s", text);
  } else {
    ICC_DPrintLogToFile(text, values...);
  }
}

}  // namespace

libusb_device* UsbDevice::Find(libusb_device** list, int vid, int pid) const {
  for (libusb_device** device = list; *device != nullptr; ++device) {
    libusb_device_descriptor descriptor{};
    const bool readable = libusb_get_device_descriptor(*device, &descriptor) >= 0;
    Log(texts_.candidate, unsigned{descriptor.idVendor}, unsigned{descriptor.idProduct});
    if (readable && descriptor.idVendor == vid && descriptor.idProduct == pid) return *device;
  }
  return nullptr;
}

// Contract: a failed detach is logged and otherwise ignored.
void UsbDevice::DetachKernelDriver(libusb_device_handle* handle) const {
  const int active = libusb_kernel_driver_active(handle, kInterface);
  Log(texts_.driver_active, active);
  if (active != 1) return;
  Log(texts_.driver_detached, libusb_detach_kernel_driver(handle, kInterface));
}

int UsbDevice::Open(int vid, int pid) {
  libusb_device** listed = nullptr;
  const auto count = static_cast<int>(libusb_get_device_list(UsbContext(), &listed));
  DeviceList list(listed);
  Log(texts_.listed, count);
  if (count <= 0 || list == nullptr) return Log(texts_.nothing_listed), GWQ_LINK_NO_DEVICE;
  libusb_device* const device = Find(list.get(), vid, pid);
  if (device == nullptr) return Log(texts_.not_found), GWQ_LINK_NO_DEVICE;
  Log(texts_.found);

  libusb_device_handle* opened = nullptr;
  const int open_result = libusb_open(device, &opened);
  if (open_result != 0) return Log(texts_.open_failed, open_result), GWQ_NOT_OPENED;
  Handle handle(opened);
  Log(texts_.opened, open_result);

  DetachKernelDriver(handle.get());
  const int claimed = libusb_claim_interface(handle.get(), kInterface);
  Log(texts_.claimed, claimed);
  if (claimed < 0) return Log("Cannot Claim Interface:%d\n", claimed), GWQ_NOT_OPENED;

  list_ = list.release();
  handle_.store(handle.release(), std::memory_order_release);
  return 0;
}

void UsbDevice::Close() {
  const DeviceList list(list_);
  const Handle handle(handle_.exchange(nullptr));
  list_ = nullptr;
}

void UsbDevice::Abandon() {
  list_ = nullptr;
  handle_.store(nullptr, std::memory_order_release);
}

}  // namespace gwq
