// SPDX-License-Identifier: MIT
// What the command line asks of the transports.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "faults/fault_rates.h"
#include "recording/options.h"
#include "usb/usb_id.h"

namespace gwq::terminal::app {

struct TerminalOptions {
  std::optional<usb::UsbId> usb;              // nothing: no terminal on USB
  std::optional<int> serial_port;             // n: a terminal at /dev/ttyS(n-1)
  bool pty = false;                           // a terminal at a pseudo-terminal
  bool usbip = false;                         // the one on USB is plugged into this machine's kernel
  std::string customer_file;                  // empty: the agreeable customer
  std::string storage_dir;                    // the terminals' files; empty: fresh ones, gone at the end
  std::string keys_dir;                       // their PIN pads' key pairs; empty: new each time
  std::string faults_file;                    // what goes wrong with them; empty: nothing
  std::optional<faults::FaultRates> hostile;  // how they mistreat the line; nothing: not at all
  bool tzg = true;                            // they know how to sign in TZG mode
  std::optional<std::uint16_t> page_port;     // a person at this port's page is the customer; 0: any port
  std::optional<std::string> trace;           // a file, or "-" for standard error
  std::string scenario_file;                  // whose customer, faults and events there are; empty: none
  std::string history_file;                   // where is written what happens in it
  recording::RecordOptions record;
  recording::ReplayOptions replay;
};

// Every option with a name, for who passes them on to another process.
template <typename Options, typename Visitor>
void VisitOptions(Options& options, Visitor&& visit) {
  visit("usb", options.usb);
  visit("serial_port", options.serial_port);
  visit("pty", options.pty);
  visit("usbip", options.usbip);
  visit("customer_file", options.customer_file);
  visit("storage_dir", options.storage_dir);
  visit("keys_dir", options.keys_dir);
  visit("faults_file", options.faults_file);
  visit("hostile", options.hostile);
  visit("tzg", options.tzg);
  visit("page_port", options.page_port);
  visit("trace", options.trace);
  visit("scenario_file", options.scenario_file);
  visit("history_file", options.history_file);
  visit("record_file", options.record.file);
  visit("record_secrets", options.record.secrets);
  visit("replay_file", options.replay.file);
  visit("replay_fast", options.replay.fast);
  visit("replay_device", options.replay.device);
}

struct ServeOptions {
  TerminalOptions terminal;                 // its USB identity is that on USB/IP
  std::optional<std::uint16_t> usbip_port;  // nothing: not on USB/IP; 0: any port
};

// A terminal at a pseudo-terminal and nowhere else.
[[nodiscard]] inline TerminalOptions OnPseudoTerminal(TerminalOptions options) {
  options.usb.reset();
  options.serial_port.reset();
  options.pty = true;
  return options;
}

// A terminal on USB of this machine's kernel and nowhere else.
[[nodiscard]] inline TerminalOptions AtKernel(TerminalOptions options, usb::UsbId usual) {
  options.usb = options.usb.value_or(usual);
  options.serial_port.reset();
  options.usbip = true;
  return options;
}

struct ExecOptions {
  TerminalOptions terminal;
  std::vector<std::string> command;
  std::optional<std::chrono::seconds> time_limit = {};  // after which the command is ended
  std::string output_file = {};                         // for its standard output; empty: our own
  std::string errors_file = {};                         // for its standard error; empty: our own
};

}  // namespace gwq::terminal::app
