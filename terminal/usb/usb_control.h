// SPDX-License-Identifier: MIT
// The terminal's answers on its control endpoint.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "base/types.h"
#include "usb/usb_id.h"

namespace gwq::terminal::usb {

inline constexpr std::size_t kSetupSize = 8;

struct ControlRequest {
  std::uint8_t type = 0;
  std::uint8_t request = 0;
  std::uint16_t value = 0;
  std::uint16_t length = 0;
  std::span<const std::uint8_t> data;  // what follows the setup packet

  // Nothing when there is not even a setup packet.
  static std::optional<ControlRequest> Parse(std::span<const std::uint8_t> payload);

  // A report sent the long way round, over the control endpoint.
  [[nodiscard]] bool IsSetReport() const { return type == 0x21 && request == 0x09; }
};

// The data of the answer, at most as many as were asked for; nothing for a stall.
[[nodiscard]] std::optional<Bytes> AnswerControl(UsbId id, const ControlRequest& request);

}  // namespace gwq::terminal::usb
