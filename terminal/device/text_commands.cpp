// SPDX-License-Identifier: MIT
#include "device/text_commands.h"

#include <algorithm>
#include <cstddef>

namespace gwq::terminal::device {
namespace {

constexpr std::size_t kLongestName = 40;

bool IsPrintable(char c) {
  return c >= ' ' && c <= '~';
}

}  // namespace

bool TextCommands::CarryOut(std::string_view command, const OnCommand& on_command) const {
  return std::any_of(handlers_.begin(), handlers_.end(), [&](const Handler& handler) {
    const auto match = protocol::MatchPattern(handler.row->pattern, command);
    if (!match) return false;
    on_command(*handler.row);
    handler.run(*match);
    return true;
  });
}

// Behind "ESC letter" the data follows at once, and may be a key.
std::string NameOf(std::string_view command) {
  if (command.empty() || command.front() != '\x1b') return "control byte";
  const bool word = command.size() > 1 && command[1] == '[';
  const std::string_view seen = command.substr(1, word ? kLongestName : 1);
  std::string name = "\"\\e";
  for (const char c : seen) {
    if (!IsPrintable(c)) break;
    name += c;
  }
  return name + '"';
}

}  // namespace gwq::terminal::device
