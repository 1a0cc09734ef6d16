#include "customer/scripted.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <utility>

namespace gwq::terminal {
namespace {

using Json = nlohmann::json;

constexpr std::chrono::milliseconds kUsualDelay{200};
constexpr std::int64_t kLongestDelay = 3'600'000;
constexpr std::size_t kMostDigits = 14;

[[noreturn]] void Fail(const std::string& what) {
  throw std::runtime_error(what);
}

std::string Quoted(const std::string& text) {
  return '"' + text + '"';
}

void CheckMembers(const Json& object, std::initializer_list<std::string_view> known) {
  for (const auto& member : object.items()) {
    if (std::find(known.begin(), known.end(), member.key()) != known.end()) continue;
    std::string names;
    for (const std::string_view name : known) names += (names.empty() ? "" : ", ") + std::string(name);
    Fail("unknown member " + Quoted(member.key()) + " (known: " + names + ")");
  }
}

std::string ReadPin(const Json& step) {
  const Json& pin = step.at("pin");
  if (!pin.is_string()) Fail("\"pin\" must be a text of digits");
  auto digits = pin.get<std::string>();
  const bool fits = !digits.empty() && digits.size() <= kMostDigits &&
                    digits.find_first_not_of("0123456789") == std::string::npos;
  if (!fits) Fail("\"pin\" must be 1 to 14 digits");
  return digits;
}

std::chrono::milliseconds ReadDelay(const Json& step) {
  if (!step.contains("after_ms")) return kUsualDelay;
  const Json& delay = step.at("after_ms");
  const bool fits = delay.is_number_unsigned() && delay.get<std::uint64_t>() <= kLongestDelay;
  if (!fits) Fail("\"after_ms\" must be a whole number from 0 to " + std::to_string(kLongestDelay));
  return std::chrono::milliseconds(delay.get<std::int64_t>());
}

void CheckIsTrue(const Json& step, const char* name) {
  const Json& value = step.at(name);
  if (!value.is_boolean() || !value.get<bool>()) Fail(Quoted(name) + " can only be true");
}

PinAction ReadStep(const Json& step) {
  if (!step.is_object()) Fail("is not an object");
  CheckMembers(step, {"pin", "cancel", "walk_away", "after_ms"});
  const auto deeds = step.count("pin") + step.count("cancel") + step.count("walk_away");
  if (deeds != 1) Fail("needs exactly one of \"pin\", \"cancel\", \"walk_away\"");
  if (step.contains("pin")) return {PinAction::Kind::kEnter, ReadPin(step), ReadDelay(step)};
  if (step.contains("cancel")) {
    CheckIsTrue(step, "cancel");
    return {PinAction::Kind::kCancel, {}, ReadDelay(step)};
  }
  CheckIsTrue(step, "walk_away");
  if (step.contains("after_ms")) Fail("\"after_ms\" has no meaning beside \"walk_away\"");
  return {PinAction::Kind::kWalkAway, {}, {}};
}

const Json& StepsOf(const Json& script) {
  if (script.is_array()) return script;
  if (!script.is_object()) Fail("must hold an object or a list of steps");
  CheckMembers(script, {"pin_entries"});
  if (!script.contains("pin_entries")) Fail("has no \"pin_entries\"");
  const Json& steps = script.at("pin_entries");
  if (!steps.is_array()) Fail("\"pin_entries\" must be a list");
  return steps;
}

std::vector<PinAction> ReadSteps(const Json& script) {
  std::vector<PinAction> actions;
  for (const Json& step : StepsOf(script)) {
    try {
      actions.push_back(ReadStep(step));
    } catch (const std::runtime_error& error) {
      Fail("step " + std::to_string(actions.size() + 1) + ": " + error.what());
    }
  }
  return actions;
}

Json ReadScript(const std::string& path) {
  if (std::filesystem::is_directory(path)) Fail("is a directory");
  std::ifstream file(path);
  if (!file) Fail("cannot be read: " + std::generic_category().message(errno));
  return Json::parse(file, nullptr, true, true);
}

}  // namespace

ScriptedCustomer::ScriptedCustomer(std::vector<PinAction> pin_entries)
    : pin_entries_(std::move(pin_entries)) {
  if (pin_entries_.empty()) Fail("there must be at least one step");
}

PinAction ScriptedCustomer::KeyPin(const PinRequest&) {
  const PinAction& action = pin_entries_[next_];
  if (next_ + 1 < pin_entries_.size()) ++next_;
  return action;
}

std::unique_ptr<Customer> LoadCustomer(const std::string& path) {
  try {
    return std::make_unique<ScriptedCustomer>(ReadSteps(ReadScript(path)));
  } catch (const std::exception& error) {
    throw std::runtime_error("customer file " + path + ": " + error.what());
  }
}

}  // namespace gwq::terminal
