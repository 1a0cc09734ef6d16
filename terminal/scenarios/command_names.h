// SPDX-License-Identifier: MIT
// The names by which scenarios know the host's commands. They are the beginnings of what the trace says.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace gwq::terminal {

[[nodiscard]] std::span<const std::string_view> CommandNames();
[[nodiscard]] bool IsCommandName(std::string_view name);
// Of a command in the trace: the longest name that it begins with, or all of it when there is none.
[[nodiscard]] std::string CommandNameOf(std::string_view heard);

}  // namespace gwq::terminal
