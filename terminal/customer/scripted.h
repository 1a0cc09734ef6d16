// A customer whose deeds stand in a JSON file, one step for each PIN that the
// terminal asks for. After the last step it is repeated.
//
//   {
//     "pin_entries": [                        // or only the list, without the object
//       {"pin": "1234", "after_ms": 300},     // keys these digits and Enter
//       {"cancel": true, "after_ms": 100},    // presses Cancel
//       {"walk_away": true}                   // does nothing: the terminal times out
//     ]
//   }
//
// "after_ms" counts from the prompt; it is 200 when it is missing. Comments in
// the manner of C++ are allowed.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "device/customer.h"

namespace gwq::terminal {

class ScriptedCustomer : public Customer {
 public:
  // Throws std::runtime_error when there is no step.
  explicit ScriptedCustomer(std::vector<PinAction> pin_entries);

  PinAction KeyPin(const PinRequest& request) override;

 private:
  std::vector<PinAction> pin_entries_;
  std::size_t next_ = 0;
};

// Throws std::runtime_error, naming the file and what is wrong with it.
std::unique_ptr<Customer> LoadCustomer(const std::string& path);

}  // namespace gwq::terminal
