// SPDX-License-Identifier: MIT
// A customer who is a person: does nothing by themselves, and everything by Device::Act
// and Device::Press once they have seen what the terminal shows.
#pragma once

#include "device/screens/customer.h"

namespace gwq::terminal::customer {

class LiveCustomer final : public device::Customer {
 public:
  device::PinAction KeyPin(const device::PinRequest&) override {
    return {device::PinAction::Kind::kWalkAway, {}, {}};
  }
  device::ScreenAction Respond(const device::Screen&) override { return {}; }
};

}  // namespace gwq::terminal::customer
