// SPDX-License-Identifier: MIT
// The files of the page itself, which are part of this program, and the types of all that it serves.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace gwq::terminal::web {

[[nodiscard]] std::optional<std::string> OwnFile(const std::string& name);
[[nodiscard]] const char* TypeOf(std::string_view name);
// Of a file of the terminal: pictures and documents by their name; everything else is only bytes.
[[nodiscard]] const char* TypeOfStored(std::string_view path);

}  // namespace gwq::terminal::web
