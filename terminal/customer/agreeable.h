// SPDX-License-Identifier: MIT
// The customer that stands there unless another is scripted: quick, happy to key a
// PIN, or the same digits as a number, whenever asked, and to agree to every screen.
#pragma once

#include <chrono>
#include <string>

#include "device/screens/customer.h"

namespace gwq::terminal::customer {

class AgreeableCustomer : public device::Customer {
 public:
  static constexpr const char* kPin = "123456";

  explicit AgreeableCustomer(std::string pin = kPin, std::chrono::milliseconds after = kUsualDelay);

  // Keys as much of the PIN as there is room for.
  device::PinAction KeyPin(const device::PinRequest& request) override;
  device::NumberAction KeyNumber(const device::NumberRequest& request) override;
  device::ScreenAction Respond(const device::Screen& screen) override;

 private:
  [[nodiscard]] device::PinAction Key(int max_digits) const;

  std::string pin_;
  std::chrono::milliseconds after_;
};

}  // namespace gwq::terminal::customer
