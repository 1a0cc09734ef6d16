// SPDX-License-Identifier: MIT
// What is done for the commands that are text or single control bytes. Each part of the
// unit adds its own once; the first whose row fits a command is carried out.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "protocol/commands.h"
#include "protocol/pattern.h"

namespace gwq::terminal::device {

using OnCommand = std::function<void(const protocol::CommandRow&)>;

class TextCommands {
 public:
  using Run = std::function<void(const protocol::Match&)>;

  // The row outlives this object.
  void Add(const protocol::CommandRow& row, Run run) { handlers_.push_back({&row, std::move(run)}); }

  // Tells `on_command` before the command is carried out. False when no row fits.
  [[nodiscard]] bool CarryOut(std::string_view command, const OnCommand& on_command) const;

 private:
  struct Handler {
    const protocol::CommandRow* row;
    Run run;
  };
  std::vector<Handler> handlers_;
};

// A command's name for the trace: its word, and never what it carries.
[[nodiscard]] std::string NameOf(std::string_view command);

}  // namespace gwq::terminal::device
