// SPDX-License-Identifier: MIT
// In a program that was built without umockdev.
#include <stdexcept>

#include "app/command_view.h"

namespace gwq::terminal::app {

void CheckTestbed() {
  throw std::runtime_error(
      "this program was built without umockdev, which shows a command the terminal on USB and at serial "
      "ports: use --pty, or --usbip as root");
}

std::unique_ptr<CommandView> MakeTestbedView(TerminalHost&, std::optional<int>) {
  CheckTestbed();
  return nullptr;
}

}  // namespace gwq::terminal::app
