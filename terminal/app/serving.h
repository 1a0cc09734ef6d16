// SPDX-License-Identifier: MIT
// What the ways to serve a terminal have in common.
#pragma once

#include <cstdint>
#include <memory>

#include "app/device_factory.h"
#include "app/options.h"
#include "base/event_loop.h"
#include "serial/serial_terminal.h"
#include "usb/usb_terminal.h"
#include "web/customer_page.h"

namespace gwq::terminal {

// Losing the reader of the trace, or the right to write to the keyboard's
// terminal, is no reason to stop.
void IgnoreOutputSignals();

// Prints seed and rates, so that a run can be reproduced.
void AnnounceHostility(const TerminalOptions& options);

// Opens the page of one terminal and prints its address.
[[nodiscard]] std::unique_ptr<CustomerPage> OpenPage(std::uint16_t port, PageTerminal terminal,
                                                     PageTrace& trace, EventLoop& loop);

[[nodiscard]] inline UsbTerminal::Wiring WiringOf(const Unit& unit) {
  return {unit.line, unit.faults, unit.recorder};
}

using DeviceAction = std::function<void(Device&, Time)>;

// Reaches a unit through its transport; a replayed one cannot be reached.
template <typename Transport>
[[nodiscard]] std::function<void(const DeviceAction&)> UseOf(Transport& transport, const Unit& unit) {
  return [&transport, device = unit.device](const DeviceAction& action) {
    if (device != nullptr) transport.Use([&](Time now) { action(*device, now); });
  };
}

// Changes how hostile a unit's line is.
template <typename Transport>
[[nodiscard]] std::function<void(const FaultRates&)> SetRatesOf(Transport& transport, const Unit& unit) {
  return [&transport, faults = unit.faults](const FaultRates& rates) {
    if (faults != nullptr) transport.Use([&](Time) { faults->SetRates(rates); });
  };
}

[[nodiscard]] PageTerminal PageTerminalOf(SerialTerminal& serial, const Unit& unit, const FaultRates& rates);

}  // namespace gwq::terminal
