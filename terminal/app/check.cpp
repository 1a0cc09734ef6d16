// SPDX-License-Identifier: MIT
#include "app/check.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <set>
#include <span>
#include <stdexcept>
#include <utility>

#include "app/failures.h"
#include "app/supervisor.h"
#include "scenarios/masking.h"
#include "scenarios/report.h"
#include "scenarios/scenario.h"
#include "scenarios/shipped.h"
#include "store/file_store.h"
#include "usbip/vhci.h"

namespace gwq::terminal::app {
namespace {

constexpr int kFailed = 1;
constexpr int kUsageError = 2;
constexpr std::chrono::seconds kUsualLimit{60};

struct Chosen {
  std::string file;
  scenarios::Scenario scenario;
};

// All of them are good before the first is run.
std::vector<Chosen> LoadAll(const std::vector<std::string>& names) {
  std::vector<Chosen> all;
  std::set<std::string> taken;
  for (const std::string& name : names) {
    Chosen chosen;
    chosen.file = std::filesystem::absolute(scenarios::FindScenario(name)).string();
    chosen.scenario = scenarios::LoadScenario(chosen.file);
    if (!taken.insert(chosen.scenario.name).second)
      throw std::runtime_error("two scenarios have the name \"" + chosen.scenario.name + "\"");
    all.push_back(std::move(chosen));
  }
  return all;
}

std::ofstream OpenJunit(const std::string& path) {
  std::ofstream file;
  if (path.empty()) return file;
  file.open(path, std::ios::trunc);
  if (!file) throw std::runtime_error("cannot write " + path);
  return file;
}

// What a run leaves on disk, besides what the terminal itself leaves there.
struct Places {
  explicit Places(const std::string& dir)
      : storage(dir + "/files"),
        history(dir + "/history"),
        output(dir + "/output"),
        errors(dir + "/errors") {}
  std::string storage;
  std::string history;
  std::string output;
  std::string errors;
};

void PutFiles(const std::vector<scenarios::InitialFile>& files, const std::string& storage) {
  store::FileStore store(storage);
  for (const scenarios::InitialFile& file : files) {
    const std::span content(reinterpret_cast<const std::uint8_t*>(file.content.data()), file.content.size());
    if (device::StoreFile(store, file.path, content) != device::FileResult::kDone)
      throw std::runtime_error("the terminal's file " + file.path + " cannot be made");
  }
}

usb::UsbId IdentityOf(const scenarios::ScriptedTerminal& terminal, usb::UsbId usual) {
  if (!terminal.usb_identity) return usual;
  const std::string& text = *terminal.usb_identity;
  const std::size_t colon = text.find(':');
  const auto hex = [](const std::string& part) {
    return static_cast<std::uint16_t>(std::stoul(part, nullptr, 16));
  };
  return {hex(text.substr(0, colon)), hex(text.substr(colon + 1))};
}

ExecOptions OptionsFor(const CheckRequest& request, const Chosen& chosen, const Places& places) {
  const scenarios::ScriptedTerminal& terminal = chosen.scenario.terminal;
  ExecOptions options;
  if (terminal.has_usb) options.terminal.usb = IdentityOf(terminal, request.usb);
  options.terminal.serial_port = terminal.serial_port;
  options.terminal.keys_dir = terminal.keys_dir;
  options.terminal.storage_dir = places.storage;
  options.terminal.hostile = chosen.scenario.hostile;
  options.terminal.scenario_file = chosen.file;
  options.terminal.history_file = places.history;
  if (request.pty) options.terminal = OnPseudoTerminal(options.terminal);
  if (request.usbip) options.terminal = AtKernel(options.terminal, request.usb);
  options.command = request.command;
  options.time_limit = request.time_limit_s > 0 ? std::chrono::seconds(request.time_limit_s)
                                                : chosen.scenario.time_limit.value_or(kUsualLimit);
  options.output_file = places.output;
  options.errors_file = places.errors;
  return options;
}

// A failure that leaves nothing to judge.
std::optional<scenarios::Failure> ProblemOf(const CommandOutcome& outcome, std::chrono::seconds limit) {
  constexpr int kFirstSignal = 128;
  constexpr int kLastSignal = 128 + 64;
  if (!outcome.start_problem.empty())
    return scenarios::Failure{"a command that can be started", outcome.start_problem};
  if (outcome.interrupted) return scenarios::Failure{"a run to the end", "it was interrupted"};
  if (outcome.timed_out)
    return scenarios::Failure{"an end within " + std::to_string(limit.count()) + " s",
                              "the command hung and was ended"};
  if (outcome.status <= kFirstSignal || outcome.status > kLastSignal) return std::nullopt;
  const int signal = outcome.status - kFirstSignal;
  return scenarios::Failure{"an exit of the command", "it died by signal " + std::to_string(signal) + " (" +
                                                          sigdescr_np(signal) + "), or exited with " +
                                                          std::to_string(outcome.status)};
}

std::string ContentOf(const std::string& path) {
  return std::filesystem::exists(path) ? ReadScriptFile(path) : "";
}

std::string LastLines(const std::string& text) {
  constexpr int kLines = 15;
  std::size_t begin = text.size();
  for (int lines = 0; begin > 0; --begin) {
    if (text[begin - 1] == '\n' && begin < text.size() && ++lines == kLines) break;
  }
  return text.substr(begin);
}

// Where the command ended badly, the rest is judged too: it tells how far it came.
scenarios::ScenarioResult Judged(const scenarios::Scenario& scenario, const CommandOutcome& outcome,
                                 std::chrono::seconds limit, const Places& places) {
  const scenarios::Run run{outcome.status, outcome.took, ContentOf(places.output),
                           scenarios::ReadHistory(places.history)};
  scenarios::ScenarioResult result;
  result.took = outcome.took;
  if (auto problem = ProblemOf(outcome, limit)) result.failures.push_back(std::move(*problem));
  if (outcome.start_problem.empty()) {
    for (const scenarios::Expectation& expectation : scenario.expectations) {
      if (auto failure = scenarios::Judge(expectation, run)) result.failures.push_back(std::move(*failure));
    }
  }
  result.output = LastLines(run.output) + LastLines(ContentOf(places.errors));
  return result;
}

void Mask(scenarios::ScenarioResult& result, const std::set<std::string>& secrets) {
  for (scenarios::Failure& failure : result.failures)
    failure = {scenarios::Masked(failure.expected, secrets), scenarios::Masked(failure.seen, secrets)};
  result.output = scenarios::Masked(result.output, secrets);
}

struct Played {
  scenarios::ScenarioResult result;
  bool interrupted = false;
};

Played Play(const CheckRequest& request, const Chosen& chosen, const SignalWatch& signals) {
  Played played;
  try {
    const PrivateDir dir;
    const Places places(dir.Path());
    PutFiles(chosen.scenario.terminal.files, places.storage);
    const ExecOptions options = OptionsFor(request, chosen, places);
    const CommandOutcome outcome = RunWatched(options, signals, dir);
    played.interrupted = outcome.interrupted;
    played.result = Judged(chosen.scenario, outcome, *options.time_limit, places);
  } catch (const std::exception& error) {
    played.result.failures = {{"a terminal", WithAdvice(ReasonOf(error))}};
  }
  played.result.name = chosen.scenario.name;
  Mask(played.result, chosen.scenario.secrets);
  return played;
}

void Print(const std::string& text) {
  std::fputs(text.c_str(), stdout);
  std::fflush(stdout);
}

std::vector<scenarios::ScenarioResult> PlayAll(const CheckRequest& request, const std::vector<Chosen>& all) {
  const SignalWatch signals = WatchSignals();
  std::vector<scenarios::ScenarioResult> results;
  for (const Chosen& chosen : all) {
    Played played = Play(request, chosen, signals);
    Print(scenarios::ResultText(played.result));
    results.push_back(std::move(played.result));
    if (played.interrupted) break;
  }
  return results;
}

}  // namespace

int RunCheck(const CheckRequest& request) {
  std::vector<Chosen> all;
  std::ofstream junit;
  try {
    all = LoadAll(request.scenarios);
    junit = OpenJunit(request.junit_file);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "gwq-terminal: %s\n", error.what());
    return kUsageError;
  }
  if (request.usbip) usbip::Vhci().Check();  // once for all
  const std::vector<scenarios::ScenarioResult> results = PlayAll(request, all);
  Print(scenarios::SummaryText(results));
  if (junit.is_open() && !(junit << scenarios::JunitText(results) << std::flush))
    throw std::runtime_error("cannot write " + request.junit_file);
  return std::all_of(results.begin(), results.end(), [](const auto& result) { return result.Passed(); })
             ? 0
             : kFailed;
}

int ListScenarios() {
  for (const std::string& file : scenarios::ShippedScenarios()) {
    const scenarios::Scenario scenario = scenarios::LoadScenario(file);
    std::printf("%-28s %s\n", scenario.name.c_str(), scenario.description.c_str());
  }
  return 0;
}

}  // namespace gwq::terminal::app
