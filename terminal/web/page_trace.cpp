// SPDX-License-Identifier: MIT
#include <utility>

#include "web/customer_page.h"

namespace gwq::terminal::web {
namespace {

constexpr std::size_t kMaxEvents = 1000;

}  // namespace

device::TraceSink PageTrace::Sink() {
  return [this](const device::TraceEvent& event) {
    {
      const std::lock_guard lock(mutex_);
      if (events_.size() == kMaxEvents) events_.erase(events_.begin());
      events_.push_back(event);
    }
    wake_();
  };
}

std::vector<device::TraceEvent> PageTrace::Take() {
  const std::lock_guard lock(mutex_);
  return std::exchange(events_, {});
}

}  // namespace gwq::terminal::web
