// SPDX-License-Identifier: MIT
#include "web/page_requests.h"

namespace gwq::terminal::web {
namespace {

void Do(const ActRequest& request, const PageTerminal& terminal) {
  terminal.use([&request](device::Device& device, Time now) {
    if (device.ScreenChanges() == request.screen) device.Act(request.action, now);
  });
}

void Do(const PressRequest& request, const PageTerminal& terminal) {
  terminal.use([&request](device::Device& device, Time now) {
    const auto entry = device.CurrentEntry();
    if (entry && entry->number == request.entry) device.Press(request.key, now);
  });
}

void Do(const PlugRequest& request, const PageTerminal& terminal) {
  if (terminal.plug) terminal.plug(request.plugged);
}

void Do(const FaultsRequest& request, PageTerminal& terminal) {
  terminal.rates = request.rates;
  terminal.set_rates(request.rates);
}

}  // namespace

void CarryOut(const PageRequest& request, PageTerminal& terminal) {
  std::visit([&terminal](const auto& asked) { Do(asked, terminal); }, request);
}

}  // namespace gwq::terminal::web
