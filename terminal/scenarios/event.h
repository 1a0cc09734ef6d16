// SPDX-License-Identifier: MIT
// What happened on the terminal while a command ran: written down by the process that is the
// terminal, read by the one that judges. PINs, numbers and keys are never in it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/types.h"
#include "device/screens/screen.h"
#include "device/trace.h"

namespace gwq::terminal::scenarios {

struct Event {
  enum class Kind {
    kScreen,     // `name` is its kind, `text` all that it says
    kCommand,    // `name` as command_names.h has it
    kPinAsked,   // the terminal waits for a PIN
    kPinKeyed,   // the customer has keyed one
    kStored,     // a file; `name` is its path, `size` its bytes
    kUnplugged,  // the USB terminal
    kPlugged,
  };

  Kind kind = Kind::kScreen;
  std::string name;
  std::string text;
  std::uint64_t size = 0;
  Time at{0};  // since the command was started

  friend bool operator==(const Event&, const Event&) = default;
};
using History = std::vector<Event>;

// One line of a history file.
[[nodiscard]] std::string HistoryLine(const Event& event);
// A line that is cut off is left out. Throws std::runtime_error when there is no such file.
[[nodiscard]] History ReadHistory(const std::string& path);

// All that a customer can read on it, a line for each text.
[[nodiscard]] std::string TextOn(const device::Screen& screen);

}  // namespace gwq::terminal::scenarios
