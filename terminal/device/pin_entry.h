// One PIN entry at a time: the prompt on the screen, the customer's keys, and
// the terminal's own time-out.
//
//              Start                          keyed: on_keyed
//   (no entry) -----> (waiting for keys) ---> cancelled: refusal answer   ---> (no entry)
//                      | Start again:          timed out: no answer
//                      | Stop: no answer
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>

#include "device/customer.h"
#include "device/device.h"
#include "device/outlet.h"
#include "device/secret.h"

namespace gwq::terminal {

class PinEntry {
 public:
  using OnKeyed = std::function<void(std::span<const std::uint8_t> digits)>;

  PinEntry(Customer& customer, Outlet& outlet) : customer_(customer), outlet_(outlet) {}

  // Ends the entry that may be waiting, and asks the customer, once.
  void Start(const PinRequest& request, OnKeyed on_keyed);
  void Stop();

  void Advance(Time now);
  [[nodiscard]] std::optional<Time> NextDeadline() const;

 private:
  struct Waiting {
    PinAction::Kind kind = PinAction::Kind::kWalkAway;
    SecretBytes digits;
    std::optional<Time> acts_at;  // nothing when the time-out comes first
    Time times_out_at{0};
    OnKeyed on_keyed;
  };

  [[nodiscard]] Waiting AskCustomer(const PinRequest& request);
  void Act();

  Customer& customer_;
  Outlet& outlet_;
  std::optional<Waiting> waiting_;
};

}  // namespace gwq::terminal
