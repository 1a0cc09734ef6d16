#include "transports/device_factory.h"

#include "customer/agreeable.h"
#include "customer/scripted.h"

namespace gwq::terminal {

Device DeviceFactory::Make(Line line, const std::string& line_name) {
  if (customer_file_.empty()) {
    customers_.push_back(std::make_unique<AgreeableCustomer>());
  } else {
    customers_.push_back(LoadCustomer(customer_file_));
  }
  return Device(line, *customers_.back(), Settings{}, trace_.Sink(line_name));
}

}  // namespace gwq::terminal
