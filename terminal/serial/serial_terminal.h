// SPDX-License-Identifier: MIT
// A terminal at the end of a serial line, which is a pseudo-terminal.
#pragma once

#include <functional>
#include <string>

#include "base/clock.h"
#include "base/event_loop.h"
#include "base/unique_fd.h"
#include "faults/line_device.h"

namespace gwq::terminal {

// A pseudo-terminal that passes bytes as they are, until a host sets it otherwise.
struct PtyPair {
  PtyPair();

  UniqueFd master;
  UniqueFd slave;  // held open, so that the line stays up between two hosts
  std::string slave_path;
};

class SerialTerminal final : public Timed {
 public:
  SerialTerminal(LineDevice device, const Clock& clock) : clock_(clock), device_(std::move(device)) {}

  // What a host opens.
  [[nodiscard]] const std::string& Path() const { return pty_.slave_path; }

  // Serves the line from `loop`, which must not outlive this object.
  void Join(EventLoop& loop);

  // Calls with the device, and passes on what it answers.
  void Use(const std::function<void(Device&, Time)>& action);

  // How hostile its line is from now on.
  void SetRates(const FaultRates& rates) { device_.SetRates(rates); }

  std::optional<Time> NextDeadline() override { return device_.NextDeadline(); }
  void Advance(Time now) override;

 private:
  void ReadLine();
  void CollectAnswers();
  void WriteLine();
  void Record(bool to_host, std::span<const std::uint8_t> bytes);

  const Clock& clock_;
  LineDevice device_;
  PtyPair pty_;
  Bytes unsent_;  // what the line had no room for yet
};

}  // namespace gwq::terminal
