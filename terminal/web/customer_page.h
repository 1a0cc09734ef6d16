// SPDX-License-Identifier: MIT
// The page on which a person is the customer: a small web server on the loopback interface.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "device/device.h"
#include "faults/fault_rates.h"

namespace gwq::terminal {
class EventLoop;
}

namespace gwq::terminal::web {

// What the terminal does, on its way to the page. Events come on any thread.
class PageTrace {
 public:
  // `wake` has the page's loop look here.
  explicit PageTrace(std::function<void()> wake) : wake_(std::move(wake)) {}
  [[nodiscard]] device::TraceSink Sink();
  // Those that came since.
  [[nodiscard]] std::vector<device::TraceEvent> Take();

 private:
  std::function<void()> wake_;
  std::mutex mutex_;
  std::vector<device::TraceEvent> events_;
};

// The terminal whose customer it is.
struct PageTerminal {
  // Calls with the device and the time; its transport then passes on what the device answers.
  std::function<void(const std::function<void(device::Device&, Time)>&)> use;
  std::function<bool()> is_plugged;
  std::function<void(bool)> plug;  // empty: it has no plug that could be pulled
  std::function<void(const faults::FaultRates&)> set_rates;
  faults::FaultRates rates;  // how hostile the line is at first
};

class CustomerPage {
 public:
  CustomerPage() = default;
  CustomerPage(const CustomerPage&) = delete;
  CustomerPage& operator=(const CustomerPage&) = delete;
  virtual ~CustomerPage() = default;

  // Its address, with the token.
  [[nodiscard]] virtual const std::string& Address() const = 0;
};

// False when this program was built without a web server.
[[nodiscard]] bool HasCustomerPage();

// Serves from `loop`, on this thread, at a port of 127.0.0.1 and ::1, 0 for a free one. What is
// given must outlive the page, and the page the loop's run. Throws when the port is taken.
[[nodiscard]] std::unique_ptr<CustomerPage> OpenCustomerPage(std::uint16_t port, PageTerminal terminal,
                                                             PageTrace& trace, EventLoop& loop);

}  // namespace gwq::terminal::web
