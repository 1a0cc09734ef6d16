// SPDX-License-Identifier: MIT
// An entry of a PIN or another number that waits for the customer's keys.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <variant>

#include "base/types.h"
#include "device/screens/customer.h"

namespace gwq::terminal::device {

struct EntryState {
  using Request = std::variant<PinRequest, NumberRequest>;
  std::uint64_t number = 0;  // counts the entries
  Request request;
  Time ends_at{0};        // by its time-out
  std::size_t keyed = 0;  // digits that were pressed
  std::string shown;      // those digits; only of a number that is shown in clear
};

}  // namespace gwq::terminal::device
