// SPDX-License-Identifier: MIT
// The options on their way from the supervisor to the server: JSON, in its binary form, as paths
// need not be UTF-8.
#pragma once

#include <string>

#include "app/options.h"

namespace gwq::terminal::app {

[[nodiscard]] std::string OptionsMessage(const TerminalOptions& options);

// Throws what is no such message.
[[nodiscard]] TerminalOptions ReadOptionsMessage(const std::string& message);

}  // namespace gwq::terminal::app
