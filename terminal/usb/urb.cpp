// SPDX-License-Identifier: MIT
#include "usb/urb.h"

#include <linux/usbdevice_fs.h>

#include <cstddef>
#include <cstring>
#include <utility>

#include "usb/usb_control.h"

namespace gwq::terminal {
namespace {

GObjectPtr<UMockdevIoctlData> Resolve(UMockdevIoctlData* data, std::size_t offset, std::size_t size) {
  GError* error = nullptr;
  GObjectPtr<UMockdevIoctlData> resolved(umockdev_ioctl_data_resolve(data, offset, size, &error));
  g_clear_error(&error);
  return resolved;
}

// A control transfer's data follow its setup packet in the buffer.
std::size_t DataOffset(unsigned char type) {
  return type == USBDEVFS_URB_TYPE_CONTROL ? kSetupSize : 0;
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

std::optional<Urb> Urb::Fetch(UMockdevIoctlData* argument) {
  GObjectPtr<UMockdevIoctlData> record = Resolve(argument, 0, sizeof(usbdevfs_urb));
  if (!record) return std::nullopt;
  const int length = Field<int>(record.get(), offsetof(usbdevfs_urb, buffer_length));
  if (length < 0) return std::nullopt;
  if (length == 0) return Urb(std::move(record), nullptr);
  GObjectPtr<UMockdevIoctlData> buffer =
      Resolve(record.get(), offsetof(usbdevfs_urb, buffer), static_cast<std::size_t>(length));
  if (!buffer) return std::nullopt;
  return Urb(std::move(record), std::move(buffer));
}

Urb::Urb(GObjectPtr<UMockdevIoctlData> record, GObjectPtr<UMockdevIoctlData> buffer)
    : record_(std::move(record)),
      buffer_(std::move(buffer)),
      address_(record_->client_addr),
      type_(Field<unsigned char>(record_.get(), offsetof(usbdevfs_urb, type))),
      endpoint_(Field<unsigned char>(record_.get(), offsetof(usbdevfs_urb, endpoint))) {}

std::span<const std::uint8_t> Urb::Payload() const {
  if (!buffer_) return payload_;
  return {buffer_->data, static_cast<std::size_t>(buffer_->data_len)};
}

void Urb::Collect(std::span<const std::uint8_t> bytes) {
  received_.insert(received_.end(), bytes.begin(), bytes.end());
}

void Urb::Finish(int status, std::size_t transferred) {
  status_ = status;
  transferred_ = static_cast<int>(transferred);
}

void Urb::Deliver(UMockdevIoctlData* reap_argument) const {
  Bytes data = received_;
  if (!data.empty() && buffer_)
    umockdev_ioctl_data_update(buffer_.get(), DataOffset(type_), data.data(), static_cast<gint>(data.size()));
  SetField(record_.get(), offsetof(usbdevfs_urb, status), status_);
  SetField(record_.get(), offsetof(usbdevfs_urb, actual_length), transferred_);
  umockdev_ioctl_data_set_ptr(reap_argument, 0, record_.get());
}

}  // namespace gwq::terminal
