// SPDX-License-Identifier: MIT
// How the command comes to see the terminals.
#pragma once

#include <memory>
#include <optional>

#include "app/control_channel.h"
#include "app/options.h"
#include "app/terminal_host.h"
#include "usb/usb_plug.h"

namespace gwq::terminal::app {

// Where the command finds the path of the serial line.
inline constexpr const char* kSerialPathVariable = "GWQ_TERMINAL_SERIAL";
// What the command and the server run with where a testbed shows the terminals.
inline constexpr const char* kTestbedPreload = "libumockdev-preload.so.0";

class CommandView {
 public:
  CommandView() = default;
  CommandView(const CommandView&) = delete;
  CommandView& operator=(const CommandView&) = delete;
  virtual ~CommandView() = default;

  // Of the USB terminal; null where there is none.
  [[nodiscard]] virtual usb::UsbPlug* Plug() = 0;
  // What the command's environment is to have.
  [[nodiscard]] virtual Variables Environment() const = 0;
};

// What umockdev shows to the command and its children alone. A pseudo-terminal needs none of it, nor does a
// device of this machine's kernel.
[[nodiscard]] inline bool NeedsTestbed(const TerminalOptions& options) {
  return !options.pty && !options.usbip;
}
// Throws when it is not to be had.
void CheckTestbed();
// What is given must outlive the view.
[[nodiscard]] std::unique_ptr<CommandView> MakeTestbedView(TerminalHost& host,
                                                           std::optional<int> serial_port);

}  // namespace gwq::terminal::app
