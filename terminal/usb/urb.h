// SPDX-License-Identifier: MIT
// A transfer that a host has submitted, wherever that host is.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "base/types.h"

namespace gwq::terminal::usb {

struct Urb {
  using Id = std::uint64_t;
  enum class Kind {
    kControl,
    kData,         // bulk or interrupt
    kIsochronous,  // of which the terminal has none
  };

  Id id = 0;  // by which the host discards and reaps it
  Kind kind = Kind::kData;
  std::uint8_t endpoint = 0;
  Bytes
      payload;  // towards the host its size alone matters; a control transfer's begins with the setup packet

  Bytes received = {};  // data towards the host, collected until the transfer finishes
  int status = 0;       // as the kernel puts it: 0 or a negative error number
  std::size_t moved = 0;

  [[nodiscard]] std::size_t Room() const { return payload.size() - received.size(); }
  void Collect(std::span<const std::uint8_t> bytes) {
    received.insert(received.end(), bytes.begin(), bytes.end());
  }
  void Finish(int with_status, std::size_t transferred) {
    status = with_status;
    moved = transferred;
  }
  void FinishWithCollected(int with_status) { Finish(with_status, received.size()); }
};

}  // namespace gwq::terminal::usb
