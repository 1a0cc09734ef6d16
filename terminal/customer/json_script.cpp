// SPDX-License-Identifier: MIT
#include "customer/json_script.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <stdexcept>
#include <system_error>
#include <vector>

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

// The parser itself would keep the last of several members with one name.
Json ParseScript(const std::string& text) {
  std::vector<std::set<std::string>> names;  // of the objects that are open
  const auto look = [&names](int /*depth*/, Json::parse_event_t event, Json& parsed) {
    if (event == Json::parse_event_t::object_start) names.emplace_back();
    if (event == Json::parse_event_t::object_end) names.pop_back();
    if (event == Json::parse_event_t::key && !names.back().insert(parsed.get<std::string>()).second)
      Fail("member " + Quoted(parsed.get<std::string>()) + " stands there twice");
    return true;
  };
  try {
    return Json::parse(text, look, true, true);
  } catch (const Json::exception& error) {
    Fail(error.what());
  }
}

std::string ReadScriptFile(const std::string& path) {
  if (std::filesystem::is_directory(path)) Fail("is a directory");
  std::ifstream file(path, std::ios::binary);
  if (!file) Fail("cannot be read: " + std::generic_category().message(errno));
  return {std::istreambuf_iterator<char>(file), {}};
}

void CheckMembers(const Json& object, std::span<const std::string_view> known) {
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

std::string ReadText(const Json& object, const char* name) {
  if (!object.contains(name)) Fail("needs " + Quoted(name));
  const Json& value = object.at(name);
  if (!value.is_string() || value.get<std::string>().empty()) Fail(Quoted(name) + " must be a text");
  return value.get<std::string>();
}

std::uint64_t ReadWhole(const Json& object, const char* name, std::uint64_t least, std::uint64_t most) {
  const Json& value = object.at(name);
  const bool fits =
      value.is_number_unsigned() && value.get<std::uint64_t>() >= least && value.get<std::uint64_t>() <= most;
  if (!fits)
    Fail(Quoted(name) + " must be a whole number from " + std::to_string(least) + " to " +
         std::to_string(most));
  return value.get<std::uint64_t>();
}

const Json& ReadList(const Json& object, const char* name) {
  const Json& value = object.at(name);
  if (!value.is_array() || value.empty()) Fail(Quoted(name) + " must be a list that is not empty");
  return value;
}

}  // namespace gwq::terminal
