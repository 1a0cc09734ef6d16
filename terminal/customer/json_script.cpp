#include "customer/json_script.h"

#include <algorithm>
#include <cstdint>
#include <stdexcept>

#include "device/customer.h"

namespace gwq::terminal {
namespace {

constexpr std::int64_t kLongestDelay = 3'600'000;

}  // namespace

void Fail(const std::string& what) {
  throw std::runtime_error(what);
}

std::string Quoted(std::string_view text) {
  return std::string(1, '"').append(text).append(1, '"');
}

void CheckMembers(const Json& object, std::initializer_list<std::string_view> known) {
  for (const auto& member : object.items()) {
    if (std::find(known.begin(), known.end(), member.key()) != known.end()) continue;
    std::string names;
    for (const std::string_view name : known) names += (names.empty() ? "" : ", ") + std::string(name);
    Fail("unknown member " + Quoted(member.key()) + " (known: " + names + ")");
  }
}

std::chrono::milliseconds ReadDelay(const Json& step) {
  if (!step.contains("after_ms")) return Customer::kUsualDelay;
  const Json& delay = step.at("after_ms");
  const bool fits = delay.is_number_unsigned() && delay.get<std::uint64_t>() <= kLongestDelay;
  if (!fits) Fail("\"after_ms\" must be a whole number from 0 to " + std::to_string(kLongestDelay));
  return std::chrono::milliseconds(delay.get<std::int64_t>());
}

void CheckHasNoDelay(const Json& step) {
  if (step.contains("after_ms")) Fail("\"after_ms\" has no meaning beside \"walk_away\"");
}

void CheckIsTrue(const Json& step, const char* name) {
  const Json& value = step.at(name);
  if (!value.is_boolean() || !value.get<bool>()) Fail(Quoted(name) + " can only be true");
}

}  // namespace gwq::terminal
