// SPDX-License-Identifier: MIT
// What the ways to serve a terminal have in common.
#pragma once

#include <cstdint>
#include <memory>

#include "app/options.h"
#include "base/event_loop.h"
#include "serial/serial_terminal.h"
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

[[nodiscard]] PageTerminal PageTerminalOf(SerialTerminal& serial, const FaultRates& rates);

}  // namespace gwq::terminal
