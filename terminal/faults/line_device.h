// SPDX-License-Identifier: MIT
// A device as the transports see it: at the end of a line that may be hostile.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <utility>

#include "device/device.h"
#include "faults/hostility.h"

namespace gwq::terminal {

class Recorder;

// What answers in the place of a device.
class StandIn {
 public:
  StandIn() = default;
  StandIn(const StandIn&) = delete;
  StandIn& operator=(const StandIn&) = delete;
  virtual ~StandIn() = default;
  virtual void Receive(std::span<const std::uint8_t> bytes, Time now) = 0;
  virtual void Advance(Time now) = 0;
  [[nodiscard]] virtual std::optional<Time> NextDeadline() const = 0;
  [[nodiscard]] virtual std::optional<Bytes> TakeAnswer() = 0;
};

class LineDevice {
 public:
  LineDevice(Device device, std::optional<Hostility> hostility = {})  // NOLINT(google-explicit-constructor)
      : device_(std::move(device)), hostility_(std::move(hostility)) {}
  // Each answer is late by `slowness` milliseconds, which others may change and which outlives this object.
  LineDevice(Device device, Hostility hostility, const std::atomic<Time::rep>& slowness)
      : device_(std::move(device)), hostility_(std::move(hostility)), slowness_(&slowness) {}
  explicit LineDevice(std::unique_ptr<StandIn> stand_in) : stand_in_(std::move(stand_in)) {}

  // As the members of Device.
  void Receive(std::span<const std::uint8_t> bytes, Time now);
  void Advance(Time now);
  // Calls with the device and the time; a stand-in has none.
  void Use(const std::function<void(Device&, Time)>& action, Time now);
  [[nodiscard]] std::optional<Time> NextDeadline() const;
  [[nodiscard]] bool TakeWithdrawal();
  [[nodiscard]] std::optional<Bytes> TakeAnswer();

  // What the line does from now on.
  void SetRates(const FaultRates& rates);

  [[nodiscard]] Transfer NextOut() { return hostility_ ? hostility_->NextOut() : Transfer{}; }
  [[nodiscard]] Transfer NextIn() { return hostility_ ? hostility_->NextIn() : Transfer{}; }

  // Who records what passes on the line; null when nobody does.
  void SetTap(Recorder* recorder) { tap_ = recorder; }
  [[nodiscard]] Recorder* Tap() const { return tap_; }

 private:
  void Collect();

  std::optional<Device> device_;
  std::unique_ptr<StandIn> stand_in_;
  Recorder* tap_ = nullptr;
  std::optional<Hostility> hostility_;
  const std::atomic<Time::rep>* slowness_ = nullptr;
  Time now_{0};
  bool withdrawn_ = false;
};

}  // namespace gwq::terminal
