// SPDX-License-Identifier: MIT
// A line that may be hostile, and slow, between a host and the unit at its end.
#pragma once

#include <atomic>
#include <optional>
#include <span>
#include <utility>

#include "base/endpoint.h"
#include "faults/hostility.h"

namespace gwq::terminal::faults {

class FaultyLine final : public Endpoint {
 public:
  // Without hostility everything passes. `unit` must outlive the line.
  explicit FaultyLine(Endpoint& unit, std::optional<Hostility> hostility = {})
      : unit_(unit), hostility_(std::move(hostility)) {}
  // Each answer is late by `slowness` milliseconds, which others may change and which outlives this object.
  FaultyLine(Endpoint& unit, Hostility hostility, const std::atomic<Time::rep>& slowness)
      : unit_(unit), hostility_(std::move(hostility)), slowness_(&slowness) {}

  void Receive(std::span<const std::uint8_t> bytes, Time now) override;
  void Advance(Time now) override;
  [[nodiscard]] std::optional<Time> NextDeadline() const override;
  [[nodiscard]] bool TakeWithdrawal() override;
  [[nodiscard]] std::optional<Bytes> TakeAnswer() override;

  // What the line does from now on.
  void SetRates(const FaultRates& rates);

  [[nodiscard]] Transfer NextOut() { return hostility_ ? hostility_->NextOut() : Transfer{}; }
  [[nodiscard]] Transfer NextIn() { return hostility_ ? hostility_->NextIn() : Transfer{}; }

 private:
  void Collect();

  Endpoint& unit_;
  std::optional<Hostility> hostility_;
  const std::atomic<Time::rep>* slowness_ = nullptr;
  Time now_{0};
  bool withdrawn_ = false;
};

}  // namespace gwq::terminal::faults
