// SPDX-License-Identifier: MIT
#include "faults/line_device.h"

#include <algorithm>

namespace gwq::terminal {

void LineDevice::Receive(std::span<const std::uint8_t> bytes, Time now) {
  now_ = std::max(now_, now);
  if (stand_in_) return stand_in_->Receive(bytes, now);
  device_->Receive(bytes, now);
  Collect();
}

void LineDevice::Advance(Time now) {
  now_ = std::max(now_, now);
  if (stand_in_) return stand_in_->Advance(now);
  device_->Advance(now);
  Collect();
}

void LineDevice::Use(const std::function<void(Device&, Time)>& action, Time now) {
  now_ = std::max(now_, now);
  if (stand_in_) return;
  action(*device_, now);
  Collect();
}

// What is replayed was recorded with its faults.
void LineDevice::SetRates(const FaultRates& rates) {
  if (stand_in_) return;
  if (hostility_) return hostility_->SetRates(rates);
  hostility_.emplace(rates, 0);
  Collect();
}

// Answers take their way, and their faults, in the order in which the device gives them.
void LineDevice::Collect() {
  if (!hostility_) return;
  if (device_->TakeWithdrawal()) {
    hostility_->Withdraw();
    withdrawn_ = true;
  }
  const Time slowness{slowness_ == nullptr ? 0 : slowness_->load()};
  while (std::optional<Bytes> answer = device_->TakeAnswer())
    hostility_->Send(std::move(*answer), now_ + slowness);
}

std::optional<Time> LineDevice::NextDeadline() const {
  if (stand_in_) return stand_in_->NextDeadline();
  const std::optional<Time> own = device_->NextDeadline();
  const std::optional<Time> arrival = hostility_ ? hostility_->NextArrival() : std::nullopt;
  return own && arrival ? std::min(own, arrival) : own ? own : arrival;
}

bool LineDevice::TakeWithdrawal() {
  if (stand_in_) return false;
  return hostility_ ? std::exchange(withdrawn_, false) : device_->TakeWithdrawal();
}

std::optional<Bytes> LineDevice::TakeAnswer() {
  if (stand_in_) return stand_in_->TakeAnswer();
  return hostility_ ? hostility_->Take(now_) : device_->TakeAnswer();
}

}  // namespace gwq::terminal
