// SPDX-License-Identifier: MIT
// A run of a command with a terminal: what the terminal is like, what the customer and the cable
// do, and what must have happened. docs/scenarios.md tells the format, shipped/scenario.schema.json
// is its schema.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "device/settings.h"
#include "faults/fault_rates.h"
#include "faults/fault_script.h"
#include "scenarios/event.h"
#include "scenarios/expectation.h"

namespace gwq::terminal::scenarios {

// A file that is there from the start.
struct InitialFile {
  std::string path;     // on the terminal
  std::string content;  // its bytes
};

struct ScriptedTerminal {
  std::optional<std::string> usb_identity;  // VENDOR:PRODUCT; nothing: the usual one
  bool has_usb = true;
  std::optional<int> serial_port;
  device::Settings settings;  // version, build date, TZG
  std::string keys_dir;
  std::vector<InitialFile> files;
};

// What makes an event come.
struct Trigger {
  std::optional<Event::Kind> kind;  // nothing: the start of the command
  std::string name;                 // of the screen or command
  std::uint64_t occurrence = 1;     // fires on the Nth matching event
};

struct ScriptedEvent {
  enum class Action { kUnplug, kPlug, kWalkAway, kSlow };
  Trigger when;
  Time after{0};
  Action action = Action::kUnplug;
  Time slowness{0};  // of each answer, from then on
};

struct Scenario {
  std::string name;
  std::string description;
  std::optional<std::chrono::seconds> time_limit;
  ScriptedTerminal terminal;
  Json customer;  // null: the agreeable one
  faults::FaultScript faults;
  std::optional<faults::FaultRates> hostile;
  std::vector<ScriptedEvent> events;
  std::vector<Expectation> expectations;
  std::set<std::string> secrets;  // not to be shown
};

// `directory` is where the files lie that the scenario names. Throws std::runtime_error, telling
// what is wrong, and where.
[[nodiscard]] Scenario ParseScenario(const std::string& text, const std::string& directory);

// The same from a file, which the message names.
[[nodiscard]] Scenario LoadScenario(const std::string& path);

}  // namespace gwq::terminal::scenarios
