// SPDX-License-Identifier: MIT
// Shapes of commands, written as one sees them on the wire:
//   %d  a decimal number (one to six digits)
//   %1  one decimal digit
//   %s  any bytes, up to the literal rest of the pattern
// Everything else stands for itself, and the whole command must fit.
#pragma once

#include <optional>
#include <string_view>
#include <vector>

namespace gwq::terminal::protocol {

struct Match {
  std::vector<int> numbers;  // what %d and %1 stood for, in order
  std::string_view text;     // what %s stood for; points into the command
};

[[nodiscard]] std::optional<Match> MatchPattern(std::string_view pattern, std::string_view command);

}  // namespace gwq::terminal::protocol
