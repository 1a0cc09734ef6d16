// SPDX-License-Identifier: MIT
#include "umockdev/host_urb.h"

#include <linux/usbdevice_fs.h>

#include <cstddef>
#include <cstring>

#include "usb/usb_control.h"

namespace gwq::terminal::umockdev {
namespace {

GObjectPtr<UMockdevIoctlData> Resolve(UMockdevIoctlData* data, std::size_t offset, std::size_t size) {
  GError* error = nullptr;
  GObjectPtr<UMockdevIoctlData> resolved(umockdev_ioctl_data_resolve(data, offset, size, &error));
  g_clear_error(&error);
  return resolved;
}

usb::Urb::Kind KindOf(unsigned char type) {
  if (type == USBDEVFS_URB_TYPE_CONTROL) return usb::Urb::Kind::kControl;
  return type == USBDEVFS_URB_TYPE_ISO ? usb::Urb::Kind::kIsochronous : usb::Urb::Kind::kData;
}

// Single fields are read and written by their place in the host's record.
template <typename T>
T Field(UMockdevIoctlData* record, std::size_t offset) {
  T value;
  std::memcpy(&value, record->data + offset, sizeof value);
  return value;
}

void SetField(UMockdevIoctlData* record, std::size_t offset, int value) {
  umockdev_ioctl_data_update(record, offset, reinterpret_cast<guint8*>(&value), sizeof value);
}

}  // namespace

std::optional<HostUrb> HostUrb::Fetch(UMockdevIoctlData* argument) {
  GObjectPtr<UMockdevIoctlData> record = Resolve(argument, 0, sizeof(usbdevfs_urb));
  if (!record) return std::nullopt;
  const int length = Field<int>(record.get(), offsetof(usbdevfs_urb, buffer_length));
  if (length < 0) return std::nullopt;
  if (length == 0) return HostUrb(std::move(record), nullptr);
  GObjectPtr<UMockdevIoctlData> buffer =
      Resolve(record.get(), offsetof(usbdevfs_urb, buffer), static_cast<std::size_t>(length));
  if (!buffer) return std::nullopt;
  return HostUrb(std::move(record), std::move(buffer));
}

usb::Urb HostUrb::Copy() const {
  usb::Urb urb;
  urb.id = Id();
  urb.kind = KindOf(Field<unsigned char>(record_.get(), offsetof(usbdevfs_urb, type)));
  urb.endpoint = Field<unsigned char>(record_.get(), offsetof(usbdevfs_urb, endpoint));
  if (buffer_) urb.payload.assign(buffer_->data, buffer_->data + buffer_->data_len);
  return urb;
}

// A control transfer's data follow its setup packet in the buffer.
void HostUrb::Deliver(const usb::Urb& outcome, UMockdevIoctlData* reap_argument) const {
  Bytes data = outcome.received;
  const std::size_t offset = outcome.kind == usb::Urb::Kind::kControl ? usb::kSetupSize : 0;
  if (!data.empty() && buffer_)
    umockdev_ioctl_data_update(buffer_.get(), offset, data.data(), static_cast<gint>(data.size()));
  SetField(record_.get(), offsetof(usbdevfs_urb, status), outcome.status);
  SetField(record_.get(), offsetof(usbdevfs_urb, actual_length), static_cast<int>(outcome.moved));
  umockdev_ioctl_data_set_ptr(reap_argument, 0, record_.get());
}

}  // namespace gwq::terminal::umockdev
