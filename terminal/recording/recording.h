// SPDX-License-Identifier: MIT
// A recording, or a capture of a real unit, to be replayed.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "recording/options.h"
#include "recording/transfer.h"

namespace gwq::terminal::recording {

struct Recording {
  struct Identity {
    std::uint16_t vendor = 0;
    std::uint16_t product = 0;
    friend bool operator==(const Identity&, const Identity&) = default;
  };

  std::vector<WireTransfer> transfers;  // in order; what the kernel asked is not among them
  std::optional<Identity> identity;     // as the device told it
  bool has_usb = false;                 // there was a device on USB, if only a silent one

  [[nodiscard]] bool Has(Wire wire) const;
};

// Where there are several devices, `device` is taken, or the one that looks like a terminal. Both throw
// std::runtime_error with what is wrong and what to do.
[[nodiscard]] Recording ParseRecording(std::span<const std::uint8_t> file,
                                       const std::optional<BusAddress>& device = {});
[[nodiscard]] Recording LoadRecording(const std::string& path, const std::optional<BusAddress>& device = {});

}  // namespace gwq::terminal::recording
