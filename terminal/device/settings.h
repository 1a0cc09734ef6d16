// SPDX-License-Identifier: MIT
// What a unit says of itself, and can do.
#pragma once

#include <string>

namespace gwq::terminal::device {

struct Settings {
  std::string version = "V1.0.0";       // answered by GETVERSION, before the "|"
  std::string build_date = "20240615";  // answered by GETVERSION, behind the "|"
  std::string production_date = "20240601";
  std::string model = "GWQ-VT";
  bool tzg = true;  // knows how to sign in TZG mode
};

}  // namespace gwq::terminal::device
