// SPDX-License-Identifier: MIT
#include "links/internal/usb_device.h"

#include <algorithm>
#include <cstdint>
#include <memory>

#include <gwq/diag/log.h>
#include <gwq/status_codes.h>
#include "diag/internal/failure.h"
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

// The device that this thread's notes are about from here on.
void NotePlace(libusb_device* device, int vid, int pid) {
  UsbPlace& place = NewUsbPlace();
  place.bus = libusb_get_bus_number(device);
  place.address = libusb_get_device_address(device);
  place.vendor = static_cast<std::uint16_t>(vid);
  place.product = static_cast<std::uint16_t>(pid);
  libusb_get_port_numbers(device, place.ports.data(), static_cast<int>(place.ports.size() - 1));
}

int NotFound(int error) {
  NoteUsbFailure(GWQ_STEP_FIND, error);
  return GWQ_LINK_NO_DEVICE;
}

int NotOpened(int error) {
  const bool gone = error == LIBUSB_ERROR_NO_DEVICE;
  const int step = error == LIBUSB_ERROR_ACCESS ? GWQ_STEP_PERMISSION : GWQ_STEP_OPEN;
  NoteUsbFailure(gone ? static_cast<int>(GWQ_STEP_FIND) : step, error);
  return GWQ_NOT_OPENED;
}

int NotClaimed(int detached, int claimed) {
  NoteFailure(GWQ_STEP_CLAIM, GWQ_ERROR_LIBUSB, detached < 0 ? detached : claimed, detached < 0);
  return GWQ_NOT_OPENED;
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
int UsbDevice::DetachKernelDriver(libusb_device_handle* handle) const {
  const int active = libusb_kernel_driver_active(handle, kInterface);
  Log(texts_.driver_active, active);
  if (active != 1) return 0;
  const int detached = libusb_detach_kernel_driver(handle, kInterface);
  Log(texts_.driver_detached, detached);
  return detached;
}

int UsbDevice::Open(int vid, int pid) {
  libusb_device** listed = nullptr;
  const auto count = static_cast<int>(libusb_get_device_list(UsbContext(), &listed));
  DeviceList list(listed);
  Log(texts_.listed, count);
  if (count <= 0 || list == nullptr) return Log(texts_.nothing_listed), NotFound(std::min(count, 0));
  libusb_device* const device = Find(list.get(), vid, pid);
  if (device == nullptr) return Log(texts_.not_found), NotFound(0);
  NotePlace(device, vid, pid);
  Log(texts_.found);

  libusb_device_handle* opened = nullptr;
  const int open_result = libusb_open(device, &opened);
  if (open_result != 0) return Log(texts_.open_failed, open_result), NotOpened(open_result);
  Handle handle(opened);
  Log(texts_.opened, open_result);

  const int detached = DetachKernelDriver(handle.get());
  const int claimed = libusb_claim_interface(handle.get(), kInterface);
  Log(texts_.claimed, claimed);
  if (claimed < 0) return Log("Cannot Claim Interface:%d\n", claimed), NotClaimed(detached, claimed);

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
