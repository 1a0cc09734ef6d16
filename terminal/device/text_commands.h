// SPDX-License-Identifier: MIT
// The table of commands that are text or single control bytes. A room of the
// terminal adds its rows once; the first row that fits a command is carried out.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "device/pattern.h"

namespace gwq::terminal {

struct TextCommand {
  std::string_view pattern;
  std::function<void(const Match&)> run;
};

class TextCommands {
 public:
  void Add(TextCommand row) { rows_.push_back(std::move(row)); }

  // False when no row fits.
  [[nodiscard]] bool Run(std::string_view command) const;

 private:
  std::vector<TextCommand> rows_;
};

// A command's name for the trace: its word, and never what it carries.
[[nodiscard]] std::string NameOf(std::string_view command);

}  // namespace gwq::terminal
