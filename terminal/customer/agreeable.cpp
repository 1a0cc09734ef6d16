// SPDX-License-Identifier: MIT
#include "customer/agreeable.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace gwq::terminal::customer {

AgreeableCustomer::AgreeableCustomer(std::string pin, std::chrono::milliseconds after)
    : pin_(std::move(pin)), after_(after) {}

device::PinAction AgreeableCustomer::KeyPin(const device::PinRequest& request) {
  return Key(request.max_digits);
}

device::NumberAction AgreeableCustomer::KeyNumber(const device::NumberRequest& request) {
  return Key(request.max_digits);
}

device::PinAction AgreeableCustomer::Key(int max_digits) const {
  const auto room = static_cast<std::size_t>(std::max(max_digits, 0));
  return {device::PinAction::Kind::kEnter, pin_.substr(0, room), after_};
}

device::ScreenAction AgreeableCustomer::Respond(const device::Screen& screen) {
  device::ScreenAction action = device::Customer::Respond(screen);
  action.after = after_;
  return action;
}

}  // namespace gwq::terminal::customer
