// SPDX-License-Identifier: MIT
#include "customer/scripted.h"

#include <stdexcept>
#include <utility>

namespace gwq::terminal::customer {
namespace {

// What the steps of a list key.
struct Kind {
  const char* list;
  const char* member;
  std::size_t most_digits;
};
constexpr Kind kPins{"pin_entries", "pin", 14};
constexpr Kind kNumbers{"number_entries", "number", 20};
constexpr const char* kScreens = "screens";

std::string ReadDigits(const Json& step, const Kind& kind) {
  const Json& value = step.at(kind.member);
  if (!value.is_string()) FailAt(value, Quoted(kind.member) + " must be a text of digits");
  auto digits = value.get<std::string>();
  const bool fits = !digits.empty() && digits.size() <= kind.most_digits &&
                    digits.find_first_not_of("0123456789") == std::string::npos;
  if (!fits)
    FailAt(value, Quoted(kind.member) + " must be 1 to " + std::to_string(kind.most_digits) + " digits");
  return digits;
}

device::PinAction ReadStep(const Json& step, const Kind& kind) {
  CheckMembers(step, {kind.member, "cancel", "walk_away", "after_ms"});
  const auto actions = step.count(kind.member) + step.count("cancel") + step.count("walk_away");
  if (actions != 1) Fail("needs exactly one of " + Quoted(kind.member) + ", \"cancel\", \"walk_away\"");
  if (step.contains(kind.member))
    return {device::PinAction::Kind::kEnter, ReadDigits(step, kind),
            ReadDelay(step, device::Customer::kUsualDelay)};
  if (step.contains("cancel")) {
    CheckIsTrue(step, "cancel");
    return {device::PinAction::Kind::kCancel, {}, ReadDelay(step, device::Customer::kUsualDelay)};
  }
  CheckIsTrue(step, "walk_away");
  CheckHasNoDelay(step);
  return {device::PinAction::Kind::kWalkAway, {}, {}};
}

ScriptedCustomer::Steps ReadSteps(const Json& steps, const Kind& kind) {
  if (!steps.is_array()) FailAt(steps, Quoted(kind.list) + " must be a list");
  if (steps.empty()) FailAt(steps, "there must be at least one step");
  return ReadEach<device::PinAction>(steps, "step",
                                     [&kind](const Json& step) { return ReadStep(step, kind); });
}

ScriptedCustomer::Steps ReadEntries(const Json& script, const Kind& kind) {
  if (!script.contains(kind.list)) return std::nullopt;
  return ReadSteps(script.at(kind.list), kind);
}

device::PinAction Next(const std::vector<device::PinAction>& steps, std::size_t& next) {
  const device::PinAction& action = steps[next];
  if (next + 1 < steps.size()) ++next;
  return action;
}

}  // namespace

ScriptedCustomer::ScriptedCustomer(Steps pin_entries, Steps number_entries, ScreenScript screens)
    : pin_entries_(std::move(pin_entries)),
      number_entries_(std::move(number_entries)),
      screens_(std::move(screens)) {
  for (const Steps* steps : {&pin_entries_, &number_entries_}) {
    if (*steps && (*steps)->empty()) Fail("there must be at least one step");
  }
}

device::PinAction ScriptedCustomer::KeyPin(const device::PinRequest& request) {
  return pin_entries_ ? Next(*pin_entries_, next_pin_) : agreeable_.KeyPin(request);
}

device::NumberAction ScriptedCustomer::KeyNumber(const device::NumberRequest& request) {
  return number_entries_ ? Next(*number_entries_, next_number_) : agreeable_.KeyNumber(request);
}

device::ScreenAction ScriptedCustomer::Respond(const device::Screen& screen) {
  if (auto action = screens_.Next(screen.kind)) return std::move(*action);
  return agreeable_.Respond(screen);
}

std::unique_ptr<device::Customer> ReadCustomer(const Json& script) {
  if (script.is_array()) return std::make_unique<ScriptedCustomer>(ReadSteps(script, kPins));
  if (!script.is_object()) Fail("must hold an object or a list of steps");
  CheckMembers(script, {kPins.list, kNumbers.list, kScreens});
  if (script.empty()) Fail("has none of \"pin_entries\", \"number_entries\", \"screens\"");
  return std::make_unique<ScriptedCustomer>(
      ReadEntries(script, kPins), ReadEntries(script, kNumbers),
      script.contains(kScreens) ? ScreenScript(script.at(kScreens)) : ScreenScript());
}

std::unique_ptr<device::Customer> LoadCustomer(const std::string& path) {
  try {
    return Script(ReadScriptFile(path)).ReadBy(ReadCustomer);
  } catch (const std::exception& error) {
    throw std::runtime_error("customer file " + path + ": " + error.what());
  }
}

}  // namespace gwq::terminal::customer
