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

void PinEntry::Start(const PinRequest& request, OnKeyed on_keyed, OnEnded on_ended) {
  Stop();
  Wait("PIN", customer_.KeyPin(request), {request.min_digits, request.max_digits, request.time_left},
       std::move(on_keyed), std::move(on_ended));
}

void PinEntry::Start(const NumberRequest& request, OnKeyed on_keyed, OnEnded on_ended) {
  Stop();
  Wait("number", customer_.KeyNumber(request), {1, request.max_digits, request.time_left},
       std::move(on_keyed), std::move(on_ended));
}

void PinEntry::Wait(const std::string& what, PinAction action, const Limits& limits, OnKeyed on_keyed,
                    OnEnded on_ended) {
  Waiting waiting;
  waiting.what = what;
  waiting.kind = action.kind;
  waiting.digits = TakeKeys(action.digits, static_cast<std::size_t>(std::max(limits.max_digits, 0)));
  Wipe(action.digits);
  waiting.times_out_at = outlet_.Now() + limits.time_left;
  const bool acts = action.kind != PinAction::Kind::kWalkAway && action.after < limits.time_left;
  if (acts) waiting.acts_at = outlet_.Now() + std::max(action.after, Time{0});
  const bool too_short = waiting.digits.size() < static_cast<std::size_t>(std::max(limits.min_digits, 1));
  if (action.kind == PinAction::Kind::kEnter && too_short) {
    outlet_.Note("the " + what + " is too short for Enter to be taken; the entry waits for its time-out");
    waiting.acts_at.reset();
  }
  waiting.on_keyed = std::move(on_keyed);
  waiting.on_ended = std::move(on_ended);
  waiting_ = std::move(waiting);
}

void PinEntry::Stop() {
  if (!waiting_) return;
  outlet_.Note(waiting_->what + " entry ended by the host");
  waiting_.reset();
}

std::optional<Time> PinEntry::NextDeadline() const {
  if (!waiting_) return std::nullopt;
  return waiting_->acts_at.value_or(waiting_->times_out_at);
}

void PinEntry::Advance(Time now) {
  const auto deadline = NextDeadline();
  if (!deadline || *deadline > now) return;
  if (waiting_->acts_at) return Act();
  TimeOut();
}

// The entry is over before its result goes out.
void PinEntry::Act() {
  const Waiting done = std::move(*waiting_);
  waiting_.reset();
  if (done.kind == PinAction::Kind::kCancel) {
    outlet_.Trace(TraceEvent::Direction::kCustomer, "cancels");
    return done.on_ended ? done.on_ended(End::kCancelled) : AnswerRefusal(outlet_);
  }
  outlet_.Trace(TraceEvent::Direction::kCustomer,
                "keys a " + done.what + " (" + std::to_string(done.digits.size()) + " digits, masked)");
  done.on_keyed(done.digits);
}

void PinEntry::TimeOut() {
  const Waiting done = std::move(*waiting_);
  waiting_.reset();
  outlet_.Note(done.what + " entry timed out");
  if (done.on_ended) done.on_ended(End::kTimedOut);
}

}  // namespace gwq::terminal
