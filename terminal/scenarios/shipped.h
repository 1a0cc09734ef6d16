// SPDX-License-Identifier: MIT
// The scenarios that come with the program.
#pragma once

#include <string>
#include <vector>

namespace gwq::terminal::scenarios {

// Their files, in the order of their names.
[[nodiscard]] std::vector<std::string> ShippedScenarios();

// The file that a command line means: a path, or the name of a shipped one. Throws
// std::runtime_error when there is none.
[[nodiscard]] std::string FindScenario(const std::string& name_or_path);

}  // namespace gwq::terminal::scenarios
