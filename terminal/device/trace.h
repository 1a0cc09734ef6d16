// SPDX-License-Identifier: MIT
// What passes on the line and at the unit, as data; TextOf alone makes
// words of it. Key material and PINs are masked.
#pragma once

#include <functional>
#include <string>
#include <variant>

#include "base/types.h"
#include "protocol/commands.h"

namespace gwq::terminal::device {

struct CommandReceived {
  const protocol::CommandRow* command;
  std::string detail;  // behind its name
};
struct Answered {
  std::string what;
};
struct CustomerActed {
  enum class Kind { kKeysPin, kKeysNumber, kCancelsEntry, kAtScreen };
  Kind kind;
  std::string detail;  // of an entry: how much was keyed
};
struct Noted {
  std::string text;
};

struct TraceEvent {
  using What = std::variant<CommandReceived, Answered, CustomerActed, Noted>;
  What what;
  Time time;
};
using TraceSink = std::function<void(const TraceEvent&)>;

[[nodiscard]] std::string TextOf(const TraceEvent& event);

}  // namespace gwq::terminal::device
