// SPDX-License-Identifier: MIT
// Running programs and reading what they print.
#pragma once

#include <string>
#include <vector>

namespace gwq::test {

struct Outcome {
  int exit_status;  // -1 when the program did not exit by itself
  std::string standard_output;
};

// Runs a program with its arguments, in a directory if one is given.
Outcome RunProgram(const std::vector<std::string>& command, const std::string& directory = {});

// The same for a program of this build, which may be one for another processor.
Outcome RunHost(const std::vector<std::string>& command, const std::string& directory = {});

std::vector<std::string> Lines(const std::string& text);

}  // namespace gwq::test
