// What the command line asks of the transports.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "hostile/fault_rates.h"
#include "recording/options.h"

namespace gwq::terminal {

struct UsbId {
  std::uint16_t vendor = 0;
  std::uint16_t product = 0;
};

struct TerminalOptions {
  std::optional<UsbId> usb;                // nothing: no terminal on USB
  std::optional<int> serial_port;          // n: a terminal at /dev/ttyS(n-1)
  std::string customer_file;               // empty: the agreeable customer
  std::string storage_dir;                 // the terminals' files; empty: fresh ones, gone at the end
  std::string keys_dir;                    // their PIN pads' key pairs; empty: new each time
  std::string faults_file;                 // what goes wrong with them; empty: nothing
  std::optional<FaultRates> hostile;       // how they mistreat the line; nothing: not at all
  bool tzg = true;                         // they know how to sign in TZG mode
  std::optional<std::uint16_t> page_port;  // a person at this port's page is the customer; 0: any port
  std::optional<std::string> trace;        // a file, or "-" for standard error
  RecordOptions record;
  ReplayOptions replay;
};

struct ExecOptions {
  TerminalOptions terminal;
  std::vector<std::string> command;
  // Starts this program as the server of `terminal`, given the control descriptor.
  std::vector<std::string> (*server_arguments)(const TerminalOptions& terminal, int control_fd) = nullptr;
};

}  // namespace gwq::terminal
