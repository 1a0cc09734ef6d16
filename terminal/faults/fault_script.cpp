// SPDX-License-Identifier: MIT
#include "faults/fault_script.h"

#include <algorithm>
#include <array>
#include <limits>
#include <regex>
#include <span>
#include <stdexcept>
#include <string_view>
#include <vector>

namespace gwq::terminal::faults {
namespace {

constexpr std::uint64_t kMaxLength = 0xFFFFFF;
constexpr std::uint64_t kMaxReports = 1'000'000;
constexpr std::uint64_t kMaxEmptyPackets = 16;
constexpr std::uint64_t kMaxType = 255;
constexpr std::array<std::string_view, 11> kSteps{"HIDCHANGE",     "start",        "data",   "end",
                                                  "PULLFILE",      "GETFILELIST",  "DELETE", "DOWNLOAD",
                                                  "SPECQUERYFILE", "QRCODEDELETE", "UPDATE"};
constexpr std::array<std::string_view, 2> kPullSteps{"data", "end"};

const Json& ListOf(const Json& object, const char* name) {
  static const Json empty = Json::array();
  if (!object.contains(name)) return empty;
  if (!object.at(name).is_array()) FailAt(object.at(name), Quoted(name) + " must be a list");
  return object.at(name);
}

// A step such as "data", or "data:2" for the second time.
bool IsStep(const std::string& text, std::span<const std::string_view> known) {
  static const std::regex form("([A-Za-z]+)(:[1-9][0-9]{0,8})?");
  std::smatch match;
  return std::regex_match(text, match, form) && std::ranges::find(known, match[1].str()) != known.end();
}

std::vector<std::string> ReadSteps(const Json& object, const char* name,
                                   std::span<const std::string_view> known) {
  std::vector<std::string> steps;
  for (const Json& step : ListOf(object, name)) {
    if (!step.is_string() || !IsStep(step.get<std::string>(), known))
      FailAt(step, Quoted(name) + " knows no step " + step.dump() + " " + Known(known));
    steps.push_back(step.get<std::string>());
  }
  return steps;
}

template <typename Number>
std::optional<Number> ReadOptional(const Json& object, const char* name, std::uint64_t max) {
  if (!object.contains(name)) return std::nullopt;
  return static_cast<Number>(ReadWhole(object, name, 0, max));
}

std::uint8_t ReadType(const Json& value) {
  const bool fits = value.is_number_unsigned() && value.get<std::uint64_t>() <= kMaxType;
  if (!fits) FailAt(value, "\"empty_packets_first\" must be a list of whole numbers from 0 to 255");
  return value.get<std::uint8_t>();
}

device::PullFaults ReadPull(const Json& object) {
  CheckMembers(object,
               {"bad_check", "announce_length", "packet_type", "stop_after_reports", "empty_packets_first"});
  device::PullFaults pull;
  pull.bad_check = ReadSteps(object, "bad_check", kPullSteps);
  pull.announce_length = ReadOptional<std::uint32_t>(object, "announce_length", kMaxLength);
  pull.packet_type = ReadOptional<std::uint8_t>(object, "packet_type", kMaxType);
  pull.stop_after_reports = ReadOptional<std::uint32_t>(object, "stop_after_reports", kMaxReports);
  const Json& types = ListOf(object, "empty_packets_first");
  if (types.size() > kMaxEmptyPackets)
    FailAt(types, "\"empty_packets_first\" must have at most " + std::to_string(kMaxEmptyPackets) + " types");
  for (const Json& type : types) pull.empty_packets_first.push_back(ReadType(type));
  return pull;
}

}  // namespace

FaultScript ReadFaults(const Json& script) {
  CheckMembers(script, {"refuse", "fail", "ignore", "storage_limit", "accept_cut_packets", "pull"});
  FaultScript result;
  result.faults.refuse = ReadSteps(script, "refuse", kSteps);
  result.faults.fail = ReadSteps(script, "fail", kSteps);
  result.faults.ignore = ReadSteps(script, "ignore", kSteps);
  if (script.contains("accept_cut_packets"))
    result.faults.accept_cut_packets = ReadFlag(script, "accept_cut_packets");
  if (script.contains("pull"))
    result.faults.pull = In(script.at("pull"), "pull", [&] { return ReadPull(script.at("pull")); });
  constexpr auto kMax = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
  result.storage_limit = ReadOptional<std::uint64_t>(script, "storage_limit", kMax);
  return result;
}

FaultScript ParseFaults(const std::string& json) {
  return Script(json).ReadBy(ReadFaults);
}

FaultScript LoadFaults(const std::string& path) {
  try {
    return ParseFaults(ReadScriptFile(path));
  } catch (const std::exception& error) {
    throw std::runtime_error("faults file " + path + ": " + error.what());
  }
}

}  // namespace gwq::terminal::faults
