// SPDX-License-Identifier: MIT
// A customer who is a person: does nothing by themselves, and everything by Device::Act
// and Device::Press once they have seen what the terminal shows.
#pragma once

#include "device/screens/customer.h"

namespace gwq::terminal {

class LiveCustomer final : public Customer {
 public:
  PinAction KeyPin(const PinRequest&) override { return {PinAction::Kind::kWalkAway, {}, {}}; }
  ScreenAction Respond(const Screen&) override { return {}; }
};

}  // namespace gwq::terminal
