// SPDX-License-Identifier: MIT
#include "customer/agreeable.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace gwq::terminal {

AgreeableCustomer::AgreeableCustomer(std::string pin, std::chrono::milliseconds after)
    : pin_(std::move(pin)), after_(after) {}

PinAction AgreeableCustomer::KeyPin(const PinRequest& request) {
  return Key(request.max_digits);
}

NumberAction AgreeableCustomer::KeyNumber(const NumberRequest& request) {
  return Key(request.max_digits);
}

PinAction AgreeableCustomer::Key(int max_digits) const {
  const auto room = static_cast<std::size_t>(std::max(max_digits, 0));
  return {PinAction::Kind::kEnter, pin_.substr(0, room), after_};
}

ScreenAction AgreeableCustomer::Respond(const Screen& screen) {
  ScreenAction action = Customer::Respond(screen);
  action.after = after_;
  return action;
}

}  // namespace gwq::terminal
