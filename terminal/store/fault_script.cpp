// SPDX-License-Identifier: MIT
#include "store/fault_script.h"

#include <limits>
#include <regex>
#include <stdexcept>
#include <vector>

#include "customer/json_script.h"

namespace gwq::terminal {
namespace {

constexpr std::uint64_t kMostLength = 0xFFFFFF;
constexpr std::uint64_t kMostReports = 1'000'000;
constexpr std::uint64_t kMostEmptyPackets = 16;

const Json& ListOf(const Json& object, const char* name) {
  static const Json empty = Json::array();
  if (!object.contains(name)) return empty;
  if (!object.at(name).is_array()) Fail(Quoted(name) + " must be a list");
  return object.at(name);
}

std::vector<std::string> ReadSteps(const Json& object, const char* name, const std::string& known) {
  const std::regex form("(" + known + ")(:[1-9][0-9]{0,8})?");
  std::vector<std::string> steps;
  for (const Json& step : ListOf(object, name)) {
    if (!step.is_string() || !std::regex_match(step.get<std::string>(), form))
      Fail(Quoted(name) + " knows no step " + step.dump());
    steps.push_back(step.get<std::string>());
  }
  return steps;
}

template <typename Number>
Number ReadNumber(const Json& value, const std::string& name, std::uint64_t most) {
  if (!value.is_number_unsigned() || value.get<std::uint64_t>() > most)
    Fail(Quoted(name) + " must be a whole number from 0 to " + std::to_string(most));
  return value.get<Number>();
}

template <typename Number>
std::optional<Number> ReadOptional(const Json& object, const char* name, std::uint64_t most) {
  if (!object.contains(name)) return std::nullopt;
  return ReadNumber<Number>(object.at(name), name, most);
}

bool ReadFlag(const Json& object, const char* name) {
  if (!object.contains(name)) return false;
  if (!object.at(name).is_boolean()) Fail(Quoted(name) + " must be true or false");
  return object.at(name).get<bool>();
}

PullFaults ReadPull(const Json& object) {
  if (!object.is_object()) Fail("must be an object");
  CheckMembers(object,
               {"bad_check", "announce_length", "packet_type", "stop_after_reports", "empty_packets_first"});
  PullFaults pull;
  pull.bad_check = ReadSteps(object, "bad_check", "data|end");
  pull.announce_length = ReadOptional<std::uint32_t>(object, "announce_length", kMostLength);
  pull.packet_type = ReadOptional<std::uint8_t>(object, "packet_type", 255);
  pull.stop_after_reports = ReadOptional<std::uint32_t>(object, "stop_after_reports", kMostReports);
  const Json& types = ListOf(object, "empty_packets_first");
  if (types.size() > kMostEmptyPackets) Fail("too many in \"empty_packets_first\"");
  for (const Json& type : types)
    pull.empty_packets_first.push_back(ReadNumber<std::uint8_t>(type, "empty_packets_first", 255));
  return pull;
}

FaultScript Read(const Json& script) {
  const std::string steps =
      "HIDCHANGE|start|data|end|PULLFILE|GETFILELIST|DELETE|DOWNLOAD|SPECQUERYFILE|QRCODEDELETE|UPDATE";
  if (!script.is_object()) Fail("must be an object");
  CheckMembers(script, {"refuse", "fail", "ignore", "storage_limit", "accept_cut_packets", "pull"});
  FaultScript result;
  result.faults.refuse = ReadSteps(script, "refuse", steps);
  result.faults.fail = ReadSteps(script, "fail", steps);
  result.faults.ignore = ReadSteps(script, "ignore", steps);
  result.faults.accept_cut_packets = ReadFlag(script, "accept_cut_packets");
  if (script.contains("pull")) result.faults.pull = ReadPull(script.at("pull"));
  constexpr auto kMost = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
  result.storage_limit = ReadOptional<std::uint64_t>(script, "storage_limit", kMost);
  return result;
}

}  // namespace

FaultScript ParseFaults(const std::string& json) {
  return Read(ParseScript(json));
}

FaultScript LoadFaults(const std::string& path) {
  try {
    return ParseFaults(ReadScriptFile(path));
  } catch (const std::exception& error) {
    throw std::runtime_error("faults file " + path + ": " + error.what());
  }
}

}  // namespace gwq::terminal
