// SPDX-License-Identifier: MIT
// A transfer that a host has submitted, and its copy in this process.
#pragma once

#include <umockdev.h>

#include <cstdint>
#include <optional>
#include <span>
#include <utility>

#include "base/gobject_ptr.h"
#include "base/types.h"

namespace gwq::terminal {

class Urb {
 public:
  // Reads the transfer that a SUBMITURB names; nothing when the host's memory cannot be read.
  static std::optional<Urb> Fetch(UMockdevIoctlData* argument);

  // One that stands in nobody's memory: the payload is its own, and is not delivered.
  Urb(gulong address, unsigned char type, unsigned char endpoint, Bytes payload)
      : payload_(std::move(payload)), address_(address), type_(type), endpoint_(endpoint) {}

  // Where it stands in the host's memory, by which the host discards it.
  [[nodiscard]] gulong Address() const { return address_; }
  [[nodiscard]] unsigned char Endpoint() const { return endpoint_; }
  [[nodiscard]] unsigned char Type() const { return type_; }
  [[nodiscard]] std::span<const std::uint8_t> Payload() const;

  // Data towards the host is collected until the transfer finishes.
  [[nodiscard]] std::size_t Room() const { return Payload().size() - received_.size(); }
  [[nodiscard]] std::size_t Collected() const { return received_.size(); }
  void Collect(std::span<const std::uint8_t> bytes);

  // `status` as the kernel puts it: 0 or a negative error number.
  void Finish(int status, std::size_t transferred);
  void FinishWithCollected(int status) { Finish(status, received_.size()); }

  [[nodiscard]] std::size_t Moved() const { return static_cast<std::size_t>(transferred_); }
  [[nodiscard]] int Status() const { return status_; }
  [[nodiscard]] std::span<const std::uint8_t> Received() const { return received_; }

  // Hands the outcome to the host as the result of a reap.
  void Deliver(UMockdevIoctlData* reap_argument) const;

 private:
  Urb(GObjectPtr<UMockdevIoctlData> record, GObjectPtr<UMockdevIoctlData> buffer);

  GObjectPtr<UMockdevIoctlData> record_;
  GObjectPtr<UMockdevIoctlData> buffer_;  // null for an empty transfer
  Bytes payload_;                         // instead of a buffer
  Bytes received_;
  gulong address_ = 0;
  unsigned char type_ = 0;
  unsigned char endpoint_ = 0;
  int status_ = 0;
  int transferred_ = 0;
};

}  // namespace gwq::terminal
