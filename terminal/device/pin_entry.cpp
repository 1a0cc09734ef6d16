#include "device/pin_entry.h"

#include <algorithm>
#include <string>
#include <utility>

namespace gwq::terminal {
namespace {

// The keys as the terminal takes them: only digits, and none beyond the last place.
SecretBytes TakeKeys(const std::string& keys, std::size_t most) {
  SecretBytes digits;
  digits.reserve(most);
  for (const char key : keys) {
    if (key < '0' || key > '9' || digits.size() == most) continue;
    digits.push_back(static_cast<std::uint8_t>(key));
  }
  return digits;
}

}  // namespace

void PinEntry::Start(const PinRequest& request, OnKeyed on_keyed) {
  Stop();
  Waiting waiting = AskCustomer(request);
  waiting.on_keyed = std::move(on_keyed);
  waiting_ = std::move(waiting);
}

PinEntry::Waiting PinEntry::AskCustomer(const PinRequest& request) {
  PinAction action = customer_.KeyPin(request);
  Waiting waiting;
  waiting.kind = action.kind;
  waiting.digits = TakeKeys(action.digits, static_cast<std::size_t>(std::max(request.max_digits, 0)));
  Wipe(action.digits);
  waiting.times_out_at = outlet_.Now() + request.time_left;
  const bool acts = action.kind != PinAction::Kind::kWalkAway && action.after < request.time_left;
  if (acts) waiting.acts_at = outlet_.Now() + std::max(action.after, Time{0});
  const bool too_short = waiting.digits.size() < static_cast<std::size_t>(std::max(request.min_digits, 1));
  if (action.kind == PinAction::Kind::kEnter && too_short) {
    outlet_.Note("the PIN is too short for Enter to be taken; the entry waits for its time-out");
    waiting.acts_at.reset();
  }
  return waiting;
}

void PinEntry::Stop() {
  if (!waiting_) return;
  waiting_.reset();
  outlet_.Note("PIN entry ended by the host");
}

std::optional<Time> PinEntry::NextDeadline() const {
  if (!waiting_) return std::nullopt;
  return waiting_->acts_at.value_or(waiting_->times_out_at);
}

void PinEntry::Advance(Time now) {
  const auto deadline = NextDeadline();
  if (!deadline || *deadline > now) return;
  if (waiting_->acts_at) return Act();
  waiting_.reset();
  outlet_.Note("PIN entry timed out");
}

// The entry is over before its result goes out.
void PinEntry::Act() {
  const Waiting done = std::move(*waiting_);
  waiting_.reset();
  if (done.kind == PinAction::Kind::kCancel) {
    outlet_.Trace(TraceEvent::Direction::kCustomer, "cancels");
    return AnswerRefusal(outlet_);
  }
  outlet_.Trace(TraceEvent::Direction::kCustomer,
                "keys a PIN (" + std::to_string(done.digits.size()) + " digits, masked)");
  done.on_keyed(done.digits);
}

}  // namespace gwq::terminal
