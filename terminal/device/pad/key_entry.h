// SPDX-License-Identifier: MIT
// One entry of a PIN or another number at a time: the prompt on the screen, the
// customer's keys, and the terminal's own time-out.
//
//              Start                          keyed: on_keyed
//   (no entry) -----> (waiting for keys) ---> cancelled, timed out: on_ended ---> (no entry)
//                      | Start again:
//                      | Stop: no answer
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>

#include "base/secret.h"
#include "device/host_channel.h"
#include "device/pad/entry_state.h"
#include "device/screens/customer.h"

namespace gwq::terminal::device {

class KeyEntry {
 public:
  enum class End { kCancelled, kTimedOut };
  using OnKeyed = std::function<void(std::span<const std::uint8_t> digits)>;
  using OnEnded = std::function<void(End end)>;

  KeyEntry(Customer& customer, HostChannel& host) : customer_(customer), host_(host) {}

  // Ends the entry that may be waiting, and asks the customer, once. Without
  // `on_ended` a cancel is answered by the refusal, and a time-out not at all.
  void Start(const PinRequest& request, OnKeyed on_keyed, OnEnded on_ended = {});
  void Start(const NumberRequest& request, OnKeyed on_keyed, OnEnded on_ended);
  void Stop();

  // A key that the customer presses now. Cancels the customer's scheduled action.
  void Press(const PadKey& key);

  // What is asked for, nothing when no entry waits.
  [[nodiscard]] std::optional<EntryState> Current() const;

  void Advance(Time now);
  [[nodiscard]] std::optional<Time> NextDeadline() const;

 private:
  struct Limits {
    int min_digits = 1;
    int max_digits = 0;
    Time time_left{0};
    bool ends_when_full = false;
  };
  struct Waiting {
    std::string what;
    EntryState::Request request;
    Limits limits;
    PinAction::Kind kind = PinAction::Kind::kWalkAway;
    SecretBytes digits;           // that will be keyed, or that were pressed so far
    bool pressed = false;         // the customer presses keys, and does not act by themselves
    std::optional<Time> acts_at;  // nothing when the time-out comes first
    Time times_out_at{0};
    OnKeyed on_keyed;
    OnEnded on_ended;
  };

  // Takes what the customer is going to do.
  void Wait(Waiting waiting, PinAction action);
  [[nodiscard]] bool IsTooShort() const;
  [[nodiscard]] std::size_t Room() const;
  void PressDigit(char digit);
  void PressEnter();
  void ActAs(PinAction::Kind kind);
  void Act();
  void TimeOut();

  Customer& customer_;
  HostChannel& host_;
  std::optional<Waiting> waiting_;
  std::uint64_t entries_ = 0;
};

}  // namespace gwq::terminal::device
