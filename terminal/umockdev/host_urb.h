// SPDX-License-Identifier: MIT
// A transfer in the memory of the host that submitted it by usbfs.
#pragma once

#include <umockdev.h>

#include <optional>
#include <utility>

#include "base/gobject_ptr.h"
#include "usb/urb.h"

namespace gwq::terminal::umockdev {

class HostUrb {
 public:
  // Reads the transfer that a SUBMITURB names; nothing when the host's memory cannot be read.
  static std::optional<HostUrb> Fetch(UMockdevIoctlData* argument);

  // What the terminal is given. The transfer's place in the host's memory is its id.
  [[nodiscard]] usb::Urb Copy() const;
  [[nodiscard]] usb::Urb::Id Id() const { return record_->client_addr; }

  // Hands the outcome to the host as the result of a reap.
  void Deliver(const usb::Urb& outcome, UMockdevIoctlData* reap_argument) const;

 private:
  HostUrb(GObjectPtr<UMockdevIoctlData> record, GObjectPtr<UMockdevIoctlData> buffer)
      : record_(std::move(record)), buffer_(std::move(buffer)) {}

  GObjectPtr<UMockdevIoctlData> record_;
  GObjectPtr<UMockdevIoctlData> buffer_;  // null for an empty transfer
};

}  // namespace gwq::terminal::umockdev
