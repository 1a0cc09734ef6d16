// SPDX-License-Identifier: MIT
#include "protocol/pattern.h"

#include <algorithm>
#include <cstddef>

namespace gwq::terminal::protocol {
namespace {

constexpr std::size_t kMaxDigits = 6;

// Moves the digits at the front of `command`, at most `most` of them, into a number.
bool TakeNumber(std::string_view& command, std::size_t most, Match& match) {
  const std::size_t digits = std::min(command.find_first_not_of("0123456789"), command.size());
  const std::size_t count = std::min(digits, most);
  if (count == 0) return false;
  int number = 0;
  for (const char digit : command.substr(0, count)) number = number * 10 + (digit - '0');
  match.numbers.push_back(number);
  command.remove_prefix(count);
  return true;
}

bool TakeLiteral(std::string_view& command, char expected) {
  if (command.empty() || command.front() != expected) return false;
  command.remove_prefix(1);
  return true;
}

}  // namespace

std::optional<Match> MatchPattern(std::string_view pattern, std::string_view command) {
  Match match;
  while (!pattern.empty()) {
    if (pattern.starts_with("%s")) {
      const std::string_view rest = pattern.substr(2);
      if (!command.ends_with(rest)) return std::nullopt;
      match.text = command.substr(0, command.size() - rest.size());
      return match;
    }
    const bool number = pattern.starts_with("%d") || pattern.starts_with("%1");
    const bool fits = number ? TakeNumber(command, pattern[1] == '1' ? 1 : kMaxDigits, match)
                             : TakeLiteral(command, pattern.front());
    if (!fits) return std::nullopt;
    pattern.remove_prefix(number ? 2 : 1);
  }
  if (!command.empty()) return std::nullopt;
  return match;
}

}  // namespace gwq::terminal::protocol
