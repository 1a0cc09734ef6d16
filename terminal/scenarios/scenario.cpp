// SPDX-License-Identifier: MIT
#include "scenarios/scenario.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <regex>
#include <stdexcept>

#include "customer/scripted.h"
#include "device/screens/screen.h"
#include "protocol/commands.h"
#include "scenarios/masking.h"
#include "store/safe_path.h"

namespace gwq::terminal::scenarios {
namespace {

using Action = ScriptedEvent::Action;
using Kind = Event::Kind;

constexpr std::uint64_t kMaxSeconds = 3600;
constexpr std::uint64_t kMaxMs = 3'600'000;
constexpr std::uint64_t kMaxSlownessMs = 60'000;
constexpr std::uint64_t kMaxFile = std::uint64_t{64} << 20;
constexpr std::uint64_t kMaxStorage = std::uint64_t{1} << 40;
constexpr std::uint64_t kMaxTimes = 1'000'000;
constexpr std::uint64_t kMaxSerialPort = 256;

// ---- The terminal

std::string ContentOf(const Json& json, const std::string& directory) {
  const auto sources = json.count("text") + json.count("size") + json.count("from");
  if (sources != 1) Fail("needs exactly one of \"text\", \"size\", \"from\"");
  if (json.contains("text")) return ReadText(json, "text");
  if (json.contains("size")) return std::string(ReadWhole(json, "size", 0, kMaxFile), 'x');
  const auto path = std::filesystem::path(directory) / ReadText(json, "from");
  return In(json.at("from"), path.string(), [&] { return ReadScriptFile(path.string()); });
}

InitialFile ReadInitialFile(const Json& json, const std::string& directory) {
  CheckMembers(json, {"path", "text", "size", "from"});
  InitialFile file{ReadText(json, "path"), ContentOf(json, directory)};
  if (!store::StepsOf(file.path))
    Fail(Quoted(file.path) + " is no path on the terminal, such as \"/tmp/a.pdf\"");
  return file;
}

void ReadUsb(const Json& json, ScriptedTerminal& terminal) {
  static const std::regex form("[0-9a-fA-F]{1,4}:[0-9a-fA-F]{1,4}");
  const Json& usb = json.at("usb");
  terminal.has_usb = !usb.is_boolean() || usb.get<bool>();
  if (usb.is_boolean()) return;
  const bool fits = usb.is_string() && std::regex_match(usb.get<std::string>(), form);
  if (!fits) FailAt(usb, "\"usb\" must be true, false or VENDOR:PRODUCT in hexadecimal");
  terminal.usb_identity = usb.get<std::string>();
}

// Travels in an answer in which a "|" parts the two.
std::string ReadVersion(const Json& json, const char* name) {
  static const std::regex form("[!-{}~ ]{1,32}");
  std::string text = ReadText(json, name);
  if (!std::regex_match(text, form))
    Fail(Quoted(name) + " must be 1 to 32 visible ASCII characters without \"|\"");
  return text;
}

ScriptedTerminal ReadTerminal(const Json& json, const std::string& directory) {
  CheckMembers(json, {"usb", "serial", "tzg", "version", "build_date", "keys", "storage_limit", "files"});
  ScriptedTerminal terminal;
  if (json.contains("usb")) ReadUsb(json, terminal);
  if (json.contains("serial"))
    terminal.serial_port = static_cast<int>(ReadWhole(json, "serial", 1, kMaxSerialPort));
  if (!terminal.has_usb && !terminal.serial_port) Fail("has neither \"usb\" nor \"serial\"");
  if (json.contains("tzg")) terminal.settings.tzg = ReadFlag(json, "tzg");
  if (json.contains("version")) terminal.settings.version = ReadVersion(json, "version");
  if (json.contains("build_date")) terminal.settings.build_date = ReadVersion(json, "build_date");
  if (json.contains("keys"))
    terminal.keys_dir = (std::filesystem::path(directory) / ReadText(json, "keys")).string();
  if (json.contains("files")) {
    terminal.files = ReadEach<InitialFile>(
        ReadList(json, "files"), "files", [&](const Json& file) { return ReadInitialFile(file, directory); });
  }
  return terminal;
}

// ---- Events

bool CutFront(std::string& text, std::string_view front) {
  if (!text.starts_with(front)) return false;
  text.erase(0, front.size());
  return true;
}

Trigger ReadTrigger(const Json& json) {
  Trigger trigger;
  trigger.name = ReadText(json, "when");
  if (CutFront(trigger.name, "screen ")) {
    if (!device::ScreenKindNamed(trigger.name))
      FailAt(json.at("when"), Quoted(trigger.name) + " is no kind of screen " + customer::KnownScreens());
    trigger.kind = Kind::kScreen;
  } else if (CutFront(trigger.name, "command ")) {
    if (!protocol::IsCommandName(trigger.name))
      Fail(Quoted(trigger.name) + " is no command (docs/scenarios.md lists them)");
    trigger.kind = Kind::kCommand;
  } else if (CutFront(trigger.name, "PIN asked")) {
    trigger.kind = Kind::kPinAsked;
  } else if (CutFront(trigger.name, "unplugged")) {
    trigger.kind = Kind::kUnplugged;
  } else if (CutFront(trigger.name, "plugged")) {
    trigger.kind = Kind::kPlugged;
  }
  const bool named = trigger.kind == Kind::kScreen || trigger.kind == Kind::kCommand;
  if (!trigger.kind || (!named && !trigger.name.empty()))
    Fail("\"when\" must be \"screen KIND\", \"command NAME\", \"PIN asked\", \"unplugged\" or \"plugged\"");
  return trigger;
}

Action ReadAction(const Json& json) {
  constexpr std::array<const char*, 4> kActions{"unplug", "plug", "walk_away", "slow_ms"};
  const auto is_there = [&json](const char* name) { return json.contains(name); };
  if (std::count_if(kActions.begin(), kActions.end(), is_there) != 1)
    Fail("needs exactly one of \"unplug\", \"plug\", \"walk_away\", \"slow_ms\"");
  const auto* const action = std::find_if(kActions.begin(), kActions.end(), is_there);
  if (static_cast<Action>(action - kActions.begin()) != Action::kSlow) CheckIsTrue(json, *action);
  return static_cast<Action>(action - kActions.begin());
}

ScriptedEvent ReadEvent(const Json& json) {
  CheckMembers(json, {"when", "time", "after_ms", "unplug", "plug", "walk_away", "slow_ms"});
  ScriptedEvent event;
  if (json.contains("when")) event.when = ReadTrigger(json);
  if (json.contains("time") && !json.contains("when")) Fail("\"time\" has no meaning without \"when\"");
  if (json.contains("time")) event.when.occurrence = ReadWhole(json, "time", 1, kMaxTimes);
  if (json.contains("after_ms")) event.after = Time(ReadWhole(json, "after_ms", 0, kMaxMs));
  event.action = ReadAction(json);
  if (event.action == Action::kSlow) event.slowness = Time(ReadWhole(json, "slow_ms", 0, kMaxSlownessMs));
  return event;
}

// ---- The rest

Json ReadCustomerScript(const Json& json) {
  const Json& customer = ReadObject(json, "customer");
  static_cast<void>(customer::ReadCustomer(customer));
  return customer;
}

faults::FaultRates ReadHostile(const Json& json) {
  const std::string rates = ReadText(json, "hostile");
  if (rates.find("seed=") == std::string::npos)
    Fail("\"hostile\" needs a seed, such as \"seed=7\", so that each run is the same");
  return faults::ParseRates(rates);
}

std::string ReadName(const Json& json) {
  static const std::regex form("[A-Za-z0-9][A-Za-z0-9._-]{0,63}");
  std::string name = ReadText(json, "name");
  if (!std::regex_match(name, form))
    Fail("\"name\" must be up to 64 letters, digits and \"-\", \"_\", \".\"");
  return name;
}

faults::FaultScript ReadFaultScript(const Json& json) {
  faults::FaultScript faults;
  if (json.contains("faults"))
    faults = In(json.at("faults"), "faults", [&] { return faults::ReadFaults(ReadObject(json, "faults")); });
  if (!json.contains("terminal") || !json.at("terminal").contains("storage_limit")) return faults;
  if (faults.storage_limit) Fail("\"storage_limit\" stands in \"terminal\" and in \"faults\"");
  faults.storage_limit = In(json.at("terminal"), "terminal",
                            [&] { return ReadWhole(json.at("terminal"), "storage_limit", 0, kMaxStorage); });
  return faults;
}

Scenario Read(const Json& json, const std::string& directory) {
  if (!json.is_object()) Fail("must hold an object");
  CheckMembers(json, {"$schema", "name", "description", "timeout_s", "terminal", "customer", "faults",
                      "hostile", "events", "expect"});
  Scenario scenario;
  scenario.name = ReadName(json);
  scenario.description = ReadText(json, "description");
  if (json.contains("$schema")) static_cast<void>(ReadText(json, "$schema"));
  if (json.contains("timeout_s"))
    scenario.time_limit = std::chrono::seconds(ReadWhole(json, "timeout_s", 1, kMaxSeconds));
  if (json.contains("terminal"))
    scenario.terminal = In(json.at("terminal"), "terminal",
                           [&] { return ReadTerminal(ReadObject(json, "terminal"), directory); });
  if (json.contains("customer"))
    scenario.customer = In(json.at("customer"), "customer", [&] { return ReadCustomerScript(json); });
  scenario.secrets = SecretsOf(scenario.customer);
  scenario.faults = ReadFaultScript(json);
  if (json.contains("hostile")) scenario.hostile = ReadHostile(json);
  if (json.contains("events"))
    scenario.events = ReadEach<ScriptedEvent>(ReadList(json, "events"), "events", ReadEvent);
  if (!json.contains("expect")) Fail("needs \"expect\"");
  scenario.expectations = ReadEach<Expectation>(ReadList(json, "expect"), "expect", ReadExpectation);
  return scenario;
}

}  // namespace

Scenario ParseScenario(const std::string& text, const std::string& directory) {
  return Script(text).ReadBy([&directory](const Json& json) { return Read(json, directory); });
}

Scenario LoadScenario(const std::string& path) {
  try {
    return ParseScenario(ReadScriptFile(path), std::filesystem::absolute(path).parent_path().string());
  } catch (const std::exception& error) {
    throw std::runtime_error("scenario " + path + ": " + error.what());
  }
}

}  // namespace gwq::terminal::scenarios
