// SPDX-License-Identifier: MIT
#include "faults/faulty_line.h"

#include <algorithm>

namespace gwq::terminal::faults {

void FaultyLine::Receive(std::span<const std::uint8_t> bytes, Time now) {
  now_ = std::max(now_, now);
  unit_.Receive(bytes, now);
  Collect();
}

void FaultyLine::Advance(Time now) {
  now_ = std::max(now_, now);
  unit_.Advance(now);
  Collect();
}

void FaultyLine::SetRates(const FaultRates& rates) {
  if (hostility_) return hostility_->SetRates(rates);
  hostility_.emplace(rates, 0);
  Collect();
}

// Answers take their way, and their faults, in the order in which the unit gives them.
void FaultyLine::Collect() {
  if (!hostility_) return;
  if (unit_.TakeWithdrawal()) {
    hostility_->Withdraw();
    withdrawn_ = true;
  }
  const Time slowness{slowness_ == nullptr ? 0 : slowness_->load()};
  while (std::optional<Bytes> answer = unit_.TakeAnswer())
    hostility_->Send(std::move(*answer), now_ + slowness);
}

std::optional<Time> FaultyLine::NextDeadline() const {
  const std::optional<Time> own = unit_.NextDeadline();
  const std::optional<Time> arrival = hostility_ ? hostility_->NextArrival() : std::nullopt;
  return own && arrival ? std::min(own, arrival) : own ? own : arrival;
}

bool FaultyLine::TakeWithdrawal() {
  return hostility_ ? std::exchange(withdrawn_, false) : unit_.TakeWithdrawal();
}

std::optional<Bytes> FaultyLine::TakeAnswer() {
  return hostility_ ? hostility_->Take(now_) : unit_.TakeAnswer();
}

}  // namespace gwq::terminal::faults
