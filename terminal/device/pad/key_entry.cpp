// SPDX-License-Identifier: MIT
#include "device/pad/key_entry.h"

#include <algorithm>
#include <string>
#include <utility>

namespace gwq::terminal::device {
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

void KeyEntry::Start(const PinRequest& request, OnKeyed on_keyed, OnEnded on_ended) {
  Stop();
  Waiting waiting;
  waiting.what = "PIN";
  waiting.request = request;
  waiting.limits = {request.min_digits, request.max_digits, request.time_left, request.ends_when_full};
  waiting.on_keyed = std::move(on_keyed);
  waiting.on_ended = std::move(on_ended);
  Wait(std::move(waiting), customer_.KeyPin(request));
}

void KeyEntry::Start(const NumberRequest& request, OnKeyed on_keyed, OnEnded on_ended) {
  Stop();
  Waiting waiting;
  waiting.what = "number";
  waiting.request = request;
  waiting.limits = {1, request.max_digits, request.time_left, false};
  waiting.on_keyed = std::move(on_keyed);
  waiting.on_ended = std::move(on_ended);
  Wait(std::move(waiting), customer_.KeyNumber(request));
}

void KeyEntry::Wait(Waiting waiting, PinAction action) {
  const Time time_left = waiting.limits.time_left;
  waiting.kind = action.kind;
  waiting.times_out_at = host_.Now() + time_left;
  const bool acts = action.kind != PinAction::Kind::kWalkAway && action.after < time_left;
  if (acts) waiting.acts_at = host_.Now() + std::max(action.after, Time{0});
  waiting_ = std::move(waiting);
  ++entries_;
  waiting_->digits = TakeKeys(action.digits, Room());
  Wipe(action.digits);
  if (action.kind != PinAction::Kind::kEnter || !IsTooShort()) return;
  host_.Note("the " + waiting_->what +
             " is too short for Enter to be taken; the entry waits for its time-out");
  waiting_->acts_at.reset();
}

bool KeyEntry::IsTooShort() const {
  return waiting_->digits.size() < static_cast<std::size_t>(std::max(waiting_->limits.min_digits, 1));
}

std::size_t KeyEntry::Room() const {
  return static_cast<std::size_t>(std::max(waiting_->limits.max_digits, 0));
}

void KeyEntry::Press(const PadKey& key) {
  if (!waiting_) return;
  SecretBytes& digits = waiting_->digits;
  if (!std::exchange(waiting_->pressed, true)) {
    digits.clear();
    digits.reserve(Room());
    waiting_->acts_at.reset();
  }
  switch (key.kind) {
    case PadKey::Kind::kDigit:
      return PressDigit(key.digit);
    case PadKey::Kind::kBack:
      if (!digits.empty()) digits.pop_back();
      return;
    case PadKey::Kind::kClear:
      return digits.clear();
    case PadKey::Kind::kEnter:
      return PressEnter();
    case PadKey::Kind::kCancel:
      return ActAs(PinAction::Kind::kCancel);
  }
}

void KeyEntry::PressDigit(char digit) {
  SecretBytes& digits = waiting_->digits;
  if (digit < '0' || digit > '9' || digits.size() >= Room()) return;
  digits.push_back(static_cast<std::uint8_t>(digit));
  if (waiting_->limits.ends_when_full && digits.size() == Room()) PressEnter();
}

void KeyEntry::PressEnter() {
  if (!IsTooShort()) ActAs(PinAction::Kind::kEnter);
}

std::optional<EntryState> KeyEntry::Current() const {
  if (!waiting_) return std::nullopt;
  EntryState state;
  state.number = entries_;
  state.request = waiting_->request;
  state.ends_at = waiting_->times_out_at;
  state.keyed = waiting_->pressed ? waiting_->digits.size() : 0;
  const auto* number = std::get_if<NumberRequest>(&waiting_->request);
  const bool is_clear = number != nullptr && number->display == NumberRequest::Display::kClear;
  if (is_clear && waiting_->pressed) state.shown.assign(waiting_->digits.begin(), waiting_->digits.end());
  return state;
}

void KeyEntry::Stop() {
  if (!waiting_) return;
  host_.Note(waiting_->what + " entry ended by the host");
  waiting_.reset();
}

std::optional<Time> KeyEntry::NextDeadline() const {
  if (!waiting_) return std::nullopt;
  return waiting_->acts_at.value_or(waiting_->times_out_at);
}

void KeyEntry::Advance(Time now) {
  const auto deadline = NextDeadline();
  if (!deadline || *deadline > now) return;
  if (waiting_->acts_at) return Act();
  TimeOut();
}

void KeyEntry::ActAs(PinAction::Kind kind) {
  waiting_->kind = kind;
  Act();
}

// The entry is over before its result goes out.
void KeyEntry::Act() {
  const Waiting done = std::move(*waiting_);
  waiting_.reset();
  if (done.kind == PinAction::Kind::kCancel) {
    host_.Trace(CustomerActed{CustomerActed::Kind::kCancelsEntry, {}});
    return done.on_ended ? done.on_ended(End::kCancelled) : AnswerRefusal(host_);
  }
  const bool is_pin = std::holds_alternative<PinRequest>(done.request);
  const auto kind = is_pin ? CustomerActed::Kind::kKeysPin : CustomerActed::Kind::kKeysNumber;
  host_.Trace(CustomerActed{kind, " (" + std::to_string(done.digits.size()) + " digits, masked)"});
  done.on_keyed(done.digits);
}

void KeyEntry::TimeOut() {
  const Waiting done = std::move(*waiting_);
  waiting_.reset();
  host_.Note(done.what + " entry timed out");
  if (done.on_ended) done.on_ended(End::kTimedOut);
}

}  // namespace gwq::terminal::device
