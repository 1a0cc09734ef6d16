// SPDX-License-Identifier: MIT
#include "customer/screen_script.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "device/screens/pen.h"

namespace gwq::terminal::customer {
namespace {

constexpr std::size_t kLongestAnswer = 4096;
constexpr int kSampleMs = 8;
constexpr int kPressure = 500;

constexpr std::array<const char*, 7> kActions{"confirm", "cancel", "key",      "digits",
                                              "sign",    "answer", "walk_away"};

std::string ReadKey(const Json& value) {
  const bool fits = value.is_number_unsigned() && value.get<std::uint64_t>() <= 3;
  if (!fits) FailAt(value, "\"key\" must be 0, 1, 2 or 3");
  return std::to_string(value.get<int>());
}

std::string ReadTyped(const Json& value) {
  auto digits = value.is_string() ? value.get<std::string>() : "?";
  const bool fits =
      digits.size() <= device::kMaxTypedDigits && digits.find_first_not_of("0123456789") == std::string::npos;
  if (!fits)
    FailAt(value,
           "\"digits\" must be a text of at most " + std::to_string(device::kMaxTypedDigits) + " digits");
  return digits;
}

// Turns each character up to U+00FF into a byte. JSON texts are always good UTF-8.
std::string ReadAnswer(const Json& value) {
  if (!value.is_string()) FailAt(value, "\"answer\" must be a text");
  std::string bytes;
  const auto text = value.get<std::string>();
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto first = static_cast<unsigned char>(text[i]);
    if (first > 0xC3) Fail("\"answer\" can only hold characters up to \\u00ff");
    if (first >= 0xC2) bytes += static_cast<char>((first & 0x03) << 6 | (text[++i] & 0x3F));
    if (first < 0x80) bytes += text[i];
  }
  if (bytes.size() > kLongestAnswer) Fail("\"answer\" is too long");
  return bytes;
}

std::string PointRule() {
  return "a point of \"sign\" must be [x, y] inside " + std::to_string(device::kSignatureWidth) + " by " +
         std::to_string(device::kSignatureHeight);
}

int ReadCoordinate(const Json& value, int limit) {
  const bool fits = value.is_number_unsigned() && value.get<std::uint64_t>() < static_cast<unsigned>(limit);
  if (!fits) FailAt(value, PointRule());
  return value.get<int>();
}

// The pen goes up after each stroke.
void AddStroke(std::vector<device::PenPoint>& points, const Json& stroke) {
  if (!stroke.is_array() || stroke.empty()) Fail("\"sign\" must be true or a list of strokes");
  for (const Json& point : stroke) {
    if (!point.is_array() || point.size() != 2) Fail(PointRule());
    if (points.size() == device::kMaxPenPoints) Fail("\"sign\" has too many points");
    points.push_back({ReadCoordinate(point[0], device::kSignatureWidth),
                      ReadCoordinate(point[1], device::kSignatureHeight), kPressure,
                      static_cast<int>(points.size()) * kSampleMs});
  }
  points.back().pressure = 0;
}

std::vector<device::PenPoint> ReadStrokes(const Json& value) {
  if (value.is_boolean() && value.get<bool>()) return device::DefaultSignature();
  if (!value.is_array() || value.empty()) Fail("\"sign\" must be true or a list of strokes");
  std::vector<device::PenPoint> points;
  for (const Json& stroke : value) AddStroke(points, stroke);
  return points;
}

std::string ActionOf(const Json& step) {
  std::string found;
  for (const char* action : kActions) {
    if (!step.contains(action)) continue;
    if (!found.empty()) Fail(Quoted(found) + " and " + Quoted(action) + " are two steps");
    found = action;
  }
  if (found.empty()) Fail("says nothing to do");
  return found;
}

device::ScreenAction ReadDeed(const Json& step) {
  using Kind = device::ScreenAction::Kind;
  const std::string action = ActionOf(step);
  const Json& value = step.at(action);
  if (action == "key") return {Kind::kKey, ReadKey(value), {}, {}};
  if (action == "digits") return {Kind::kDigits, ReadTyped(value), {}, {}};
  if (action == "answer") return {Kind::kAnswer, ReadAnswer(value), {}, {}};
  if (action == "sign") return {Kind::kSign, {}, ReadStrokes(value), {}};
  CheckIsTrue(step, action.c_str());
  if (action == "confirm") return {Kind::kConfirm, {}, {}, {}};
  if (action == "cancel") return {Kind::kCancel, {}, {}, {}};
  CheckHasNoDelay(step);
  return {Kind::kWalkAway, {}, {}, {}};
}

std::optional<device::ScreenKind> ReadKind(const Json& step) {
  if (!step.contains("on")) return std::nullopt;
  const auto name = step.at("on").is_string() ? step.at("on").get<std::string>() : "";
  const auto kind = device::ScreenKindNamed(name);
  if (!kind) FailAt(step.at("on"), "\"on\" names no kind of screen " + KnownScreens());
  return kind;
}

}  // namespace

std::string KnownScreens() {
  std::vector<std::string_view> names;
  for (int kind = 0; kind <= static_cast<int>(device::ScreenKind::kCheckout); ++kind)
    names.push_back(NameOf(static_cast<device::ScreenKind>(kind)));
  return Known(names);
}

ScreenScript::ScreenScript(const Json& steps) {
  if (!steps.is_array()) FailAt(steps, "\"screens\" must be a list");
  if (steps.empty()) FailAt(steps, "there must be at least one step");
  steps_ = ReadEach<Step>(steps, "screen step", ReadStep);
}

ScreenScript::Step ScreenScript::ReadStep(const Json& json) {
  CheckMembers(json, {"confirm", "cancel", "key", "digits", "sign", "answer", "walk_away", "on", "after_ms"});
  Step step;
  step.action = ReadDeed(json);
  step.action.after = ReadDelay(json, device::Customer::kUsualDelay);
  step.on = ReadKind(json);
  return step;
}

std::optional<device::ScreenAction> ScreenScript::Next(device::ScreenKind kind) {
  Step* last = nullptr;
  for (Step& step : steps_) {
    if (step.on.value_or(kind) != kind) continue;
    last = &step;
    if (!step.taken) break;
  }
  if (last == nullptr) return std::nullopt;
  last->taken = true;
  return last->action;
}

}  // namespace gwq::terminal::customer
