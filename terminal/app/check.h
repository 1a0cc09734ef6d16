// SPDX-License-Identifier: MIT
// Puts a command to the test of scenarios.
#pragma once

#include <string>
#include <vector>

#include "app/options.h"

namespace gwq::terminal::app {

struct CheckRequest {
  std::vector<std::string> scenarios;  // paths, or names of those that come with the program
  std::vector<std::string> command;
  usb::UsbId usb;          // where a scenario names no identity
  bool pty = false;        // at a pseudo-terminal, and not where the scenarios say
  bool usbip = false;      // on USB of this machine's kernel, and not where the scenarios say
  std::string junit_file;  // empty: none
  int time_limit_s = 0;    // 0: as the scenarios say
};

// Prints what came of each. Returns the exit status: 0 if all passed, 1 if one failed, 2 if nothing
// could be run.
int RunCheck(const CheckRequest& request);

// Prints names and descriptions of those that come with the program.
int ListScenarios();

}  // namespace gwq::terminal::app
