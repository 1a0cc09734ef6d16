// SPDX-License-Identifier: MIT
#include "app/serving.h"

#include <csignal>
#include <cstdio>
#include <utility>

namespace gwq::terminal {

void IgnoreOutputSignals() {
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGTTOU, SIG_IGN);
}

void AnnounceHostility(const TerminalOptions& options) {
  if (options.hostile)
    std::fprintf(stderr, "gwq-terminal: hostile %s\n", RatesText(*options.hostile).c_str());
}

std::unique_ptr<CustomerPage> OpenPage(std::uint16_t port, PageTerminal terminal, PageTrace& trace,
                                       EventLoop& loop) {
  std::unique_ptr<CustomerPage> page = OpenCustomerPage(port, std::move(terminal), trace, loop);
  std::fprintf(stderr, "gwq-terminal: you are the customer at %s\n", page->Address().c_str());
  return page;
}

PageTerminal PageTerminalOf(SerialTerminal& serial, const Unit& unit, const FaultRates& rates) {
  return {UseOf(serial, unit), [] { return true; }, {}, SetRatesOf(serial, unit), rates};
}

}  // namespace gwq::terminal
