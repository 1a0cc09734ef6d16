// Makes the terminals that a command line asks for.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "device/customer.h"
#include "device/device.h"
#include "transports/options.h"
#include "transports/trace_writer.h"

namespace gwq::terminal {

// Owns what its devices lean on and must outlive them.
class DeviceFactory {
 public:
  explicit DeviceFactory(const TerminalOptions& options)
      : customer_file_(options.customer_file), trace_(options.trace) {}

  // Each device has a customer of its own. Throws when the customer's file is no good.
  [[nodiscard]] Device Make(Line line, const std::string& line_name);

 private:
  std::string customer_file_;
  TraceWriter trace_;
  std::vector<std::unique_ptr<Customer>> customers_;
};

}  // namespace gwq::terminal
