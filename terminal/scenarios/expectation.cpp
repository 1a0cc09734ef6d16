// SPDX-License-Identifier: MIT
#include "scenarios/expectation.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "customer/screen_script.h"
#include "device/screens/screen.h"
#include "protocol/commands.h"

namespace gwq::terminal::scenarios {
namespace {

using Kind = Event::Kind;

constexpr int kMaxFailure = 125;
constexpr int kMaxStatus = 255;
constexpr std::uint64_t kMaxSeconds = 3600;
constexpr std::uint64_t kMaxTimes = 1'000'000;
constexpr std::size_t kMaxListed = 30;

constexpr std::array<const char*, 12> kExpectations{
    "exit_status", "output_contains", "output_lacks", "at_most_s", "screens",   "commands",
    "screen",      "command",         "stored",       "pin_asked", "pin_keyed", "unplugged"};
constexpr const char* kLastScreen = "last_screen";

// ---- Reading

std::string ReadScreenKind(const Json& value) {
  std::string name = value.is_string() ? value.get<std::string>() : value.dump();
  if (!device::ScreenKindNamed(name))
    FailAt(value, Quoted(name) + " is no kind of screen " + customer::KnownScreens());
  return name;
}

std::string ReadCommandName(const Json& value) {
  std::string name = value.is_string() ? value.get<std::string>() : value.dump();
  if (!protocol::IsCommandName(name))
    FailAt(value, Quoted(name) + " is no command (docs/scenarios.md lists them)");
  return name;
}

Pattern ReadScreenPattern(const Json& value) {
  Pattern pattern;
  if (!value.is_object()) {
    pattern.name = ReadScreenKind(value);
    return pattern;
  }
  CheckMembers(value, {"kind", "contains"});
  if (!value.contains("kind")) Fail("a screen needs \"kind\"");
  pattern.name = ReadScreenKind(value.at("kind"));
  if (value.contains("contains")) pattern.contains = ReadText(value, "contains");
  return pattern;
}

Pattern CommandPattern(const Json& value) {
  return {Kind::kCommand, ReadCommandName(value), {}, {}};
}

Expectation ReadOrder(const Json& json, const char* what, Pattern (*read)(const Json&)) {
  CheckMembers(json, {what});
  OrderExpectation order;
  for (const Json& item : ReadList(json, what)) order.patterns.push_back(read(item));
  return order;
}

Expectation ReadExitStatus(const Json& json) {
  CheckMembers(json, {"exit_status"});
  if (json.at("exit_status") == "failure") return ExitStatusIs{};
  if (!json.at("exit_status").is_number_unsigned()) Fail("\"exit_status\" must be 0 to 255 or \"failure\"");
  return ExitStatusIs{static_cast<int>(ReadWhole(json, "exit_status", 0, kMaxStatus))};
}

Expectation ReadOutput(const Json& json, const char* what, bool lacks) {
  CheckMembers(json, {what});
  return OutputHas{ReadText(json, what), lacks};
}

Expectation ReadLimit(const Json& json) {
  CheckMembers(json, {"at_most_s"});
  return TakesAtMost{std::chrono::seconds(ReadWhole(json, "at_most_s", 1, kMaxSeconds))};
}

Expectation ReadLastScreen(const Json& json) {
  CheckMembers(json, {kLastScreen});
  return EndsWithScreen{ReadScreenKind(json.at(kLastScreen))};
}

void ReadCount(const Json& json, CountExpectation& often) {
  const bool never = json.contains("never");
  const bool exact = json.contains("times");
  const bool range = json.contains("at_least") || json.contains("at_most");
  if (int{never} + int{exact} + int{range} > 1)
    Fail("\"never\", \"times\" and \"at_least\" or \"at_most\" exclude each other");
  if (never) CheckIsTrue(json, "never");
  if (never) often.least = 0, often.most = 0;
  if (exact) often.most = often.least = ReadWhole(json, "times", 0, kMaxTimes);
  if (json.contains("at_least")) often.least = ReadWhole(json, "at_least", 1, kMaxTimes);
  if (!json.contains("at_most")) return;
  often.most = ReadWhole(json, "at_most", 1, kMaxTimes);
  if (!json.contains("at_least")) often.least = 0;
  if (often.least > *often.most) Fail("\"at_least\" is more than \"at_most\"");
}

CountExpectation ReadOften(const Json& json, const char* what, std::initializer_list<std::string_view> more) {
  std::vector<std::string_view> known(more);
  known.insert(known.begin(), what);
  known.insert(known.end(), {"times", "at_least", "at_most", "never"});
  CheckMembers(json, known);
  CountExpectation often;
  ReadCount(json, often);
  return often;
}

Expectation ReadScreen(const Json& json) {
  CountExpectation often = ReadOften(json, "screen", {"contains"});
  often.pattern.name = ReadScreenKind(json.at("screen"));
  if (json.contains("contains")) often.pattern.contains = ReadText(json, "contains");
  return often;
}

Expectation ReadCommand(const Json& json) {
  CountExpectation often = ReadOften(json, "command", {});
  often.pattern = CommandPattern(json.at("command"));
  return often;
}

Expectation ReadStored(const Json& json) {
  CountExpectation often = ReadOften(json, "stored", {"size"});
  often.pattern.kind = Kind::kStored;
  often.pattern.name = ReadText(json, "stored");
  if (json.contains("size")) often.pattern.size = ReadWhole(json, "size", 0, std::uint64_t{1} << 40);
  return often;
}

Expectation ReadPlain(const Json& json, const char* what, Kind kind) {
  CountExpectation often = ReadOften(json, what, {});
  CheckIsTrue(json, what);
  often.pattern.kind = kind;
  return often;
}

std::string WhatIn(const Json& json) {
  std::vector<std::string> found;
  for (const char* what : kExpectations) {
    if (json.contains(what)) found.emplace_back(what);
  }
  if (json.contains(kLastScreen)) found.emplace_back(kLastScreen);
  if (found.size() > 1) Fail(Quoted(found[0]) + " and " + Quoted(found[1]) + " are two expectations");
  return found.empty() ? "" : found.front();
}

// ---- Saying

std::string Seconds(std::chrono::milliseconds time) {
  char text[32];
  std::snprintf(text, sizeof text, "%.1f s", static_cast<double>(time.count()) / 1000);
  return text;
}

std::string Times(std::uint64_t count) {
  return count == 0 ? "never" : count == 1 ? "once" : std::to_string(count) + " times";
}

std::string CountText(const CountExpectation& often) {
  if (often.most == often.least) return Times(often.least);
  if (!often.most) return "at least " + Times(often.least);
  if (often.least == 0) return "at most " + Times(*often.most);
  return std::to_string(often.least) + " to " + Times(*often.most);
}

// What was seen of a kind, in order; as much as helps.
std::string Listed(const History& history, Kind kind) {
  std::string list;
  std::size_t count = 0;
  for (const Event& event : history) {
    if (event.kind != kind || (kind == Kind::kScreen && event.name == "idle")) continue;
    if (++count > kMaxListed) continue;
    list += (list.empty() ? "" : ", ") + event.name;
    if (kind == Kind::kStored) list += " (" + std::to_string(event.size) + " bytes)";
  }
  if (count > kMaxListed) list += " and " + std::to_string(count - kMaxListed) + " more";
  return list.empty() ? "none" : list;
}

std::string GroupOf(Kind kind) {
  switch (kind) {
    case Kind::kScreen:
      return "screens";
    case Kind::kCommand:
      return "commands";
    case Kind::kStored:
      return "stored files";
    default:
      return "";
  }
}

std::string SeenOf(const History& history, Kind kind) {
  const std::string group = GroupOf(kind);
  return group.empty() ? "" : "; " + group + ": " + Listed(history, kind);
}

std::string EndOf(const std::string& output) {
  constexpr std::size_t kShown = 300;
  if (output.empty()) return "nothing on standard output";
  return output.size() <= kShown ? output : "..." + output.substr(output.size() - kShown);
}

std::string StatusText(int status) {
  return "exit status " + std::to_string(status);
}

// ---- Judging

using Verdict = std::optional<Failure>;

Verdict JudgeOne(const ExitStatusIs& expected, const Run& run) {
  const int status = run.exit_status;
  const bool fits = expected.status ? status == *expected.status : status >= 1 && status <= kMaxFailure;
  if (fits) return std::nullopt;
  return Failure{expected.status ? StatusText(*expected.status)
                                 : "exit status 1 to 125, a failure that the command tells",
                 StatusText(status)};
}

Verdict JudgeOne(const OutputHas& expected, const Run& run) {
  const bool there = run.output.find(expected.text) != std::string::npos;
  if (there != expected.lacks) return std::nullopt;
  return Failure{
      std::string("standard output ") + (expected.lacks ? "without " : "with ") + Quoted(expected.text),
      EndOf(run.output)};
}

Verdict JudgeOne(const TakesAtMost& expected, const Run& run) {
  if (run.took <= expected.limit) return std::nullopt;
  return Failure{"an end within " + std::to_string(expected.limit.count()) + " s",
                 "it took " + Seconds(run.took)};
}

Verdict JudgeOne(const OrderExpectation& expected, const Run& run) {
  auto next = expected.patterns.begin();
  for (const Event& event : run.history) {
    if (next != expected.patterns.end() && next->Fits(event)) ++next;
  }
  if (next == expected.patterns.end()) return std::nullopt;
  std::string wanted;
  for (const Pattern& pattern : expected.patterns)
    wanted += (wanted.empty() ? "" : ", then ") + pattern.Text();
  const std::string missing = next == expected.patterns.begin() ? "" : " behind those before it";
  return Failure{wanted, "no " + next->Text() + missing + SeenOf(run.history, next->kind)};
}

Verdict JudgeOne(const CountExpectation& expected, const Run& run) {
  const auto fits = [&](const Event& event) { return expected.pattern.Fits(event); };
  const auto count = static_cast<std::uint64_t>(std::count_if(run.history.begin(), run.history.end(), fits));
  if (count >= expected.least && count <= expected.most.value_or(count)) return std::nullopt;
  return Failure{expected.pattern.Text() + " " + CountText(expected),
                 Times(count) + SeenOf(run.history, expected.pattern.kind)};
}

Verdict JudgeOne(const EndsWithScreen& expected, const Run& run) {
  std::string last = "idle";
  for (const Event& event : run.history) {
    if (event.kind == Kind::kScreen) last = event.name;
  }
  if (last == expected.kind) return std::nullopt;
  return Failure{"screen " + expected.kind + " at the end", "screen " + last};
}

// A name without directories is the last part of a path.
bool NameFits(const std::string& wanted, const Event& event) {
  if (wanted.empty() || wanted == event.name) return true;
  return event.kind == Kind::kStored && wanted.find('/') == std::string::npos &&
         event.name.ends_with("/" + wanted);
}

}  // namespace

bool Pattern::Fits(const Event& event) const {
  return event.kind == kind && NameFits(name, event) && event.text.find(contains) != std::string::npos &&
         size.value_or(event.size) == event.size;
}

std::string Pattern::Text() const {
  switch (kind) {
    case Kind::kScreen:
      return "screen " + name + (contains.empty() ? "" : " with " + Quoted(contains));
    case Kind::kCommand:
      return "command " + name;
    case Kind::kStored:
      return "file " + name + (size ? " of " + std::to_string(*size) + " bytes" : "") + " stored";
    case Kind::kPinAsked:
      return "a PIN asked for";
    case Kind::kPinKeyed:
      return "a PIN keyed";
    case Kind::kUnplugged:
      return "the terminal unplugged";
    case Kind::kPlugged:
      return "the terminal plugged in";
  }
  return "something";
}

Expectation ReadExpectation(const Json& json) {
  if (!json.is_object()) Fail("is not an object");
  const std::string what = WhatIn(json);
  if (what == "exit_status") return ReadExitStatus(json);
  if (what == "output_contains") return ReadOutput(json, "output_contains", false);
  if (what == "output_lacks") return ReadOutput(json, "output_lacks", true);
  if (what == "at_most_s") return ReadLimit(json);
  if (what == "screens") return ReadOrder(json, "screens", ReadScreenPattern);
  if (what == "commands") return ReadOrder(json, "commands", CommandPattern);
  if (what == "screen") return ReadScreen(json);
  if (what == "command") return ReadCommand(json);
  if (what == "stored") return ReadStored(json);
  if (what == "pin_asked") return ReadPlain(json, "pin_asked", Kind::kPinAsked);
  if (what == "pin_keyed") return ReadPlain(json, "pin_keyed", Kind::kPinKeyed);
  if (what == "unplugged") return ReadPlain(json, "unplugged", Kind::kUnplugged);
  if (what == kLastScreen) return ReadLastScreen(json);
  std::string known;
  for (const char* name : kExpectations) known.append(name).append(", ");
  const std::string unknown =
      json.empty() ? "says nothing" : "unknown expectation " + Quoted(json.begin().key());
  Fail(unknown + " (known: " + known + kLastScreen + ")");
}

std::optional<Failure> Judge(const Expectation& expectation, const Run& run) {
  return std::visit([&run](const auto& one) { return JudgeOne(one, run); }, expectation);
}

}  // namespace gwq::terminal::scenarios
