// SPDX-License-Identifier: MIT
#include "protocol/commands.h"

#include <algorithm>
#include <cstddef>

namespace gwq::terminal::protocol {
namespace {

constexpr char kStxChar = '\x02';
constexpr std::string_view kWordStart = "\033[";

// What comes before the data.
std::string_view HeadOf(std::string_view pattern) {
  return pattern.substr(0, pattern.find(kStxChar));
}

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

enum class Fit { kNone, kStart, kWhole };

Fit FitHead(std::string_view head, std::string_view text) {
  while (!text.empty()) {
    if (!head.starts_with("%d")) {
      if (head.empty() || head.front() != text.front()) return Fit::kNone;
      head.remove_prefix(1);
      text.remove_prefix(1);
      continue;
    }
    const auto digits =
        static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), IsDigit) - text.begin());
    if (digits == 0) return Fit::kNone;
    text.remove_prefix(digits);
    if (text.empty()) return Fit::kStart;
    head.remove_prefix(2);
  }
  return head.empty() ? Fit::kWhole : Fit::kStart;
}

std::vector<std::string_view> MakeNames() {
  std::vector<std::string_view> names;
  for (const CommandRow& row : kCommands) {
    if (std::find(names.begin(), names.end(), row.name) == names.end()) names.push_back(row.name);
  }
  return names;
}

}  // namespace

const CommandRow* FrameRow(unsigned code) {
  const auto* const row = std::find_if(kCommands.begin(), kCommands.end(), [code](const CommandRow& each) {
    return each.form == CommandForm::kFrame && each.code != 0 && each.code == code;
  });
  return row == kCommands.end() ? nullptr : row;
}

std::vector<const CommandRow*> LetterRows(char letter) {
  std::vector<const CommandRow*> rows;
  for (const CommandRow& row : kCommands) {
    const bool has_letter = row.pattern.size() > 1 && row.pattern.front() == kWordStart.front();
    if (has_letter && row.pattern[1] != kWordStart[1] && row.pattern[1] == letter) rows.push_back(&row);
  }
  return rows;
}

WordFit FitWord(std::string_view start) {
  WordFit found;
  for (const CommandRow& row : kCommands) {
    if (!row.pattern.starts_with(kWordStart)) continue;
    const std::string_view head = HeadOf(row.pattern).substr(kWordStart.size());
    const Fit fit = FitHead(head, start);
    found.known |= fit != Fit::kNone;
    if (fit != Fit::kWhole) continue;
    const bool has_data = row.pattern.find(kStxChar) != std::string_view::npos;
    if (has_data) found.with_data = &row;
    found.whole |= !has_data;
  }
  return found;
}

bool KeepsPull(std::string_view text) {
  return std::any_of(kCommands.begin(), kCommands.end(), [text](const CommandRow& row) {
    return row.keeps_pull && text.starts_with(HeadOf(row.pattern));
  });
}

std::span<const std::string_view> CommandNames() {
  static const std::vector<std::string_view> names = MakeNames();
  return names;
}

bool IsCommandName(std::string_view name) {
  return std::ranges::find(CommandNames(), name) != CommandNames().end();
}

}  // namespace gwq::terminal::protocol
