// SPDX-License-Identifier: MIT
// A customer whose actions stand in a JSON file, one step for each PIN, number or
// screen that the terminal asks for. The last step of a list is repeated; what has
// no list is done as the agreeable customer does it.
//
//   {
//     "pin_entries": [                        // or only the list, without the object
//       {"pin": "1234", "after_ms": 300},     // keys these digits and Enter
//       {"cancel": true, "after_ms": 100},    // presses Cancel
//       {"walk_away": true}                   // does nothing: the terminal times out
//     ],
//     "number_entries": [                     // other numbers, in the same way
//       {"number": "310115"}
//     ],
//     "screens": [                            // screen_script.h tells what there can be
//       {"key": 1, "on": "evaluation"}
//     ]
//   }
//
// "after_ms" counts from the prompt; it is 200 when it is missing. Comments in
// the manner of C++ are allowed.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "customer/agreeable.h"
#include "customer/screen_script.h"
#include "device/screens/customer.h"

namespace gwq::terminal::customer {

class ScriptedCustomer : public device::Customer {
 public:
  using Steps = std::optional<std::vector<device::PinAction>>;

  // Throws std::runtime_error when there is a list without a step.
  explicit ScriptedCustomer(Steps pin_entries, Steps number_entries = {}, ScreenScript screens = {});

  device::PinAction KeyPin(const device::PinRequest& request) override;
  device::NumberAction KeyNumber(const device::NumberRequest& request) override;
  device::ScreenAction Respond(const device::Screen& screen) override;

 private:
  Steps pin_entries_;
  Steps number_entries_;
  ScreenScript screens_;
  std::size_t next_pin_ = 0;
  std::size_t next_number_ = 0;
  AgreeableCustomer agreeable_;
};

// Throws std::runtime_error, telling what is wrong.
[[nodiscard]] std::unique_ptr<device::Customer> ReadCustomer(const Json& script);

// Throws std::runtime_error, naming the file and what is wrong with it.
std::unique_ptr<device::Customer> LoadCustomer(const std::string& path);

}  // namespace gwq::terminal::customer
