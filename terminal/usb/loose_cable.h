// SPDX-License-Identifier: MIT
// The USB cable of a hostile terminal.
#pragma once

#include <functional>
#include <optional>
#include <utility>

#include "base/clock.h"
#include "base/event_loop.h"
#include "usb/usb_terminal.h"

namespace gwq::terminal::usb {

// Unplugs a hostile terminal when it wants to go, and plugs it in again.
class LooseCable final : public Timed {
 public:
  LooseCable(UsbTerminal& usb, const Clock& clock, std::function<void()> unplug, std::function<void()> plug)
      : usb_(usb), clock_(clock), unplug_(std::move(unplug)), plug_(std::move(plug)) {}

  std::optional<Time> NextDeadline() override {
    if (back_at_ || !usb_.WantsUnplug()) return back_at_;
    return clock_.Now();
  }

  void Advance(Time now) override {
    if (!back_at_ && usb_.WantsUnplug()) {
      unplug_();
      back_at_ = now + kAbsence;
    } else if (back_at_ && now >= *back_at_) {
      back_at_.reset();
      plug_();
    }
  }

 private:
  static constexpr Time kAbsence{700};

  UsbTerminal& usb_;
  const Clock& clock_;
  const std::function<void()> unplug_;
  const std::function<void()> plug_;
  std::optional<Time> back_at_;
};

}  // namespace gwq::terminal::usb
