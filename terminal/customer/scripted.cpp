#include "customer/scripted.h"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace gwq::terminal {
namespace {

constexpr std::size_t kMostDigits = 14;

std::string ReadPin(const Json& step) {
  const Json& pin = step.at("pin");
  if (!pin.is_string()) Fail("\"pin\" must be a text of digits");
  auto digits = pin.get<std::string>();
  const bool fits = !digits.empty() && digits.size() <= kMostDigits &&
                    digits.find_first_not_of("0123456789") == std::string::npos;
  if (!fits) Fail("\"pin\" must be 1 to 14 digits");
  return digits;
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
  CheckHasNoDelay(step);
  return {PinAction::Kind::kWalkAway, {}, {}};
}

std::vector<PinAction> ReadSteps(const Json& steps) {
  if (!steps.is_array()) Fail("\"pin_entries\" must be a list");
  std::vector<PinAction> actions;
  for (const Json& step : steps) {
    try {
      actions.push_back(ReadStep(step));
    } catch (const std::runtime_error& error) {
      Fail("step " + std::to_string(actions.size() + 1) + ": " + error.what());
    }
  }
  return actions;
}

ScriptedCustomer::Steps ReadPins(const Json& script) {
  if (!script.contains("pin_entries")) return std::nullopt;
  return ReadSteps(script.at("pin_entries"));
}

std::unique_ptr<Customer> ReadCustomer(const Json& script) {
  if (script.is_array()) return std::make_unique<ScriptedCustomer>(ReadSteps(script));
  if (!script.is_object()) Fail("must hold an object or a list of steps");
  CheckMembers(script, {"pin_entries", "screens"});
  if (script.empty()) Fail("has neither \"pin_entries\" nor \"screens\"");
  return std::make_unique<ScriptedCustomer>(
      ReadPins(script), script.contains("screens") ? ScreenScript(script.at("screens")) : ScreenScript());
}

Json ReadScript(const std::string& path) {
  if (std::filesystem::is_directory(path)) Fail("is a directory");
  std::ifstream file(path);
  if (!file) Fail("cannot be read: " + std::generic_category().message(errno));
  return Json::parse(file, nullptr, true, true);
}

}  // namespace

ScriptedCustomer::ScriptedCustomer(Steps pin_entries, ScreenScript screens)
    : pin_entries_(std::move(pin_entries)), screens_(std::move(screens)) {
  if (pin_entries_ && pin_entries_->empty()) Fail("there must be at least one step");
}

PinAction ScriptedCustomer::KeyPin(const PinRequest& request) {
  if (!pin_entries_) return agreeable_.KeyPin(request);
  const PinAction& action = (*pin_entries_)[next_];
  if (next_ + 1 < pin_entries_->size()) ++next_;
  return action;
}

ScreenAction ScriptedCustomer::Respond(const Screen& screen) {
  if (auto action = screens_.Next(screen.kind)) return std::move(*action);
  return agreeable_.Respond(screen);
}

std::unique_ptr<Customer> LoadCustomer(const std::string& path) {
  try {
    return ReadCustomer(ReadScript(path));
  } catch (const std::exception& error) {
    throw std::runtime_error("customer file " + path + ": " + error.what());
  }
}

}  // namespace gwq::terminal
