// SPDX-License-Identifier: MIT
#include "app/options_message.h"

#include <cstdint>
#include <nlohmann/json.hpp>
#include <vector>

namespace gwq::terminal::app {
namespace {

using Json = nlohmann::json;

// Numbers, texts and the like.
template <typename T>
Json Write(const T& value) {
  return value;
}
Json Write(const usb::UsbId& id) {
  return Json::array({id.vendor, id.product});
}
Json Write(const recording::BusAddress& address) {
  return Json::array({address.bus, address.device});
}
Json Write(const faults::FaultRates& rates) {
  return faults::RatesText(rates);
}
template <typename T>
Json Write(const std::optional<T>& value) {
  return value ? Write(*value) : Json();
}

template <typename T>
void Read(const Json& json, T& value) {
  json.get_to(value);
}
void Read(const Json& json, usb::UsbId& id) {
  id = {json.at(0).get<std::uint16_t>(), json.at(1).get<std::uint16_t>()};
}
void Read(const Json& json, recording::BusAddress& address) {
  address = {json.at(0).get<std::uint16_t>(), json.at(1).get<std::uint8_t>()};
}
void Read(const Json& json, faults::FaultRates& rates) {
  rates = faults::ParseRates(json.get<std::string>());
}
template <typename T>
void Read(const Json& json, std::optional<T>& value) {
  if (json.is_null()) return value.reset();
  Read(json, value.emplace());
}

}  // namespace

std::string OptionsMessage(const TerminalOptions& options) {
  Json message;
  VisitOptions(options, [&](const char* name, const auto& value) { message[name] = Write(value); });
  const std::vector<std::uint8_t> bytes = Json::to_cbor(message);
  return {bytes.begin(), bytes.end()};
}

TerminalOptions ReadOptionsMessage(const std::string& message) {
  const Json json = Json::from_cbor(message.begin(), message.end());
  TerminalOptions options;
  VisitOptions(options, [&](const char* name, auto& value) { Read(json.at(name), value); });
  return options;
}

}  // namespace gwq::terminal::app
