// SPDX-License-Identifier: MIT
#include "web/messages.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <utility>

#include "device/files/file_names.h"

namespace gwq::terminal::web {
namespace {

using Json = nlohmann::json;

constexpr std::size_t kLongestRates = 500;
constexpr int kMaxTimeMs = 3'600'000;  // of a signature

// Whatever the bytes are, the page gets a text.
std::string Text(const Json& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string_view NameOf(device::ScreenKey::Role role) {
  constexpr std::array<std::string_view, 4> kNames{"plain", "confirm", "cancel", "sign"};
  return kNames.at(static_cast<std::size_t>(role));
}

std::string_view NameOf(device::NumberRequest::Display display) {
  constexpr std::array<std::string_view, 3> kNames{"clear", "stars", "nothing"};
  return kNames.at(static_cast<std::size_t>(display));
}

// In the order of TraceEvent::What.
constexpr std::array kSpeakers{"host", "terminal", "customer", "note"};

Json KeysOf(const device::Screen& screen) {
  Json keys = Json::array();
  for (const device::ScreenKey& key : screen.keys)
    keys.push_back({{"role", NameOf(key.role)}, {"name", key.name}, {"label", key.label}});
  return keys;
}

Json CardOf(const device::Screen& screen) {
  if (!screen.teller) return nullptr;
  const device::TellerCard& card = *screen.teller;
  return {{"name", card.name}, {"number", card.number}, {"stars", card.stars}, {"photo", card.photo_path}};
}

Json About(const device::PinRequest& request) {
  return {{"what", "pin"},          {"min", request.min_digits}, {"max", request.max_digits},
          {"again", request.again}, {"prompt", request.shown},   {"display", "stars"}};
}

Json About(const device::NumberRequest& request) {
  return {{"what", "number"},          {"min", 1},
          {"max", request.max_digits}, {"again", false},
          {"prompt", request.prompt},  {"display", NameOf(request.display)}};
}

// A whole number from 0 to `most`.
std::optional<int> ReadNumber(const Json& json, int most) {
  if (!json.is_number_unsigned() || json.get<std::uint64_t>() > static_cast<unsigned>(most))
    return std::nullopt;
  return json.get<int>();
}

std::uint64_t ReadCount(const Json& json, const char* name) {
  const auto member = json.find(name);
  return member != json.end() && member->is_number_unsigned() ? member->get<std::uint64_t>() : 0;
}

std::string ReadText(const Json& json, const char* name) {
  const auto member = json.find(name);
  return member != json.end() && member->is_string() ? member->get<std::string>() : "";
}

std::optional<device::PenPoint> ReadPoint(const Json& json) {
  if (!json.is_array() || json.size() != 4) return std::nullopt;
  const auto x = ReadNumber(json[0], device::kSignatureWidth - 1);
  const auto y = ReadNumber(json[1], device::kSignatureHeight - 1);
  const auto pressure = ReadNumber(json[2], device::kMaxPressure);
  const auto time = ReadNumber(json[3], kMaxTimeMs);
  if (!x || !y || !pressure || !time) return std::nullopt;
  return device::PenPoint{*x, *y, *pressure, *time};
}

// The pen has left the pad at the end.
std::optional<std::vector<device::PenPoint>> ReadStrokes(const Json& json) {
  const auto strokes = json.find("strokes");
  if (strokes == json.end() || !strokes->is_array() || strokes->size() > device::kMaxPenPoints)
    return std::nullopt;
  std::vector<device::PenPoint> points;
  for (const Json& point : *strokes) {
    const auto read = ReadPoint(point);
    if (!read) return std::nullopt;
    points.push_back(*read);
  }
  if (points.empty()) return std::nullopt;
  points.back().pressure = 0;
  return points;
}

std::optional<device::ScreenAction> ReadAction(const Json& json) {
  using Kind = device::ScreenAction::Kind;
  const std::string kind = ReadText(json, "kind");
  std::string text = ReadText(json, "text");
  if (kind == "confirm") return device::ScreenAction{Kind::kConfirm, {}, {}, {}};
  if (kind == "cancel") return device::ScreenAction{Kind::kCancel, {}, {}, {}};
  if (kind == "walk_away") return device::ScreenAction{};
  if (text.size() > device::kMaxTypedDigits) return std::nullopt;
  if (kind == "key") return device::ScreenAction{Kind::kKey, std::move(text), {}, {}};
  if (kind == "digits" && text.find_first_not_of("0123456789") == std::string::npos)
    return device::ScreenAction{Kind::kDigits, std::move(text), {}, {}};
  auto strokes = kind == "sign" ? ReadStrokes(json) : std::nullopt;
  if (!strokes) return std::nullopt;
  return device::ScreenAction{Kind::kSign, {}, std::move(*strokes), {}};
}

std::optional<device::PadKey> ReadKey(const std::string& name) {
  if (name.size() == 1 && name[0] >= '0' && name[0] <= '9')
    return device::PadKey{device::PadKey::Kind::kDigit, name[0]};
  if (name == "back") return device::PadKey{device::PadKey::Kind::kBack};
  if (name == "clear") return device::PadKey{device::PadKey::Kind::kClear};
  if (name == "enter") return device::PadKey{device::PadKey::Kind::kEnter};
  if (name == "cancel") return device::PadKey{device::PadKey::Kind::kCancel};
  return std::nullopt;
}

std::optional<faults::FaultRates> ReadRates(const std::string& text) {
  try {
    if (text.empty() || text.size() > kLongestRates) return std::nullopt;
    return faults::ParseRates(text);
  } catch (const std::runtime_error&) {
    return std::nullopt;
  }
}

}  // namespace

std::string UnitMessage() {
  const Json signature{{"width", device::kSignatureWidth},
                       {"height", device::kSignatureHeight},
                       {"max_points", device::kMaxPenPoints},
                       {"max_pressure", device::kMaxPressure},
                       {"max_time_ms", kMaxTimeMs}};
  return Text({{"type", "unit"},
               {"signature", signature},
               {"max_digits", device::kMaxTypedDigits},
               {"max_stars", device::kMaxStars},
               {"max_lines", kMaxTraceLines},
               {"picture_directory", device::MediaDirectory(device::kIdlePictureType)}});
}

std::string ScreenMessage(const ShownScreen& shown) {
  const device::Screen& screen = shown.screen;
  return Text({{"type", "screen"},
               {"number", shown.number},
               {"kind", NameOf(screen.kind)},
               {"title", screen.title},
               {"text", screen.text},
               {"second_text", screen.second_text},
               {"documents", screen.documents},
               {"keys", KeysOf(screen)},
               {"teller", CardOf(screen)},
               {"voice", screen.voice},
               {"location", screen.location},
               {"countdown", screen.countdown},
               {"hides_digits", screen.hides_digits},
               {"time_left_ms", shown.time_left.count()}});
}

std::string EntryMessage(const std::optional<device::EntryState>& entry, Time now) {
  if (!entry) return Text({{"type", "entry"}, {"number", 0}});
  Json json = std::visit([](const auto& request) { return About(request); }, entry->request);
  json["type"] = "entry";
  json["number"] = entry->number;
  json["keyed"] = json["display"] == "nothing" ? 0 : entry->keyed;
  json["shown"] = entry->shown;
  json["time_left_ms"] = std::max(entry->ends_at - now, Time{0}).count();
  return Text(json);
}

std::string TraceMessage(const std::vector<device::TraceEvent>& events) {
  Json lines = Json::array();
  for (const device::TraceEvent& event : events)
    lines.push_back({{"time_ms", event.time.count()},
                     {"from", kSpeakers.at(event.what.index())},
                     {"text", device::TextOf(event)}});
  return Text({{"type", "trace"}, {"lines", std::move(lines)}});
}

std::string FilesMessage(const std::vector<std::string>& paths) {
  return Text({{"type", "files"}, {"paths", paths}});
}

std::string LinkMessage(bool plugged, bool pluggable, const faults::FaultRates& rates) {
  return Text({{"type", "link"},
               {"plugged", plugged},
               {"pluggable", pluggable},
               {"faults", faults::RatesText(rates)}});
}

std::optional<PageRequest> ReadPageRequest(std::string_view message) {
  if (message.size() > kMaxRequestSize) return std::nullopt;
  const Json json = Json::parse(message, nullptr, false);
  if (!json.is_object()) return std::nullopt;
  const std::string type = ReadText(json, "type");
  if (type == "act") {
    auto action = ReadAction(json);
    if (action) return ActRequest{ReadCount(json, "screen"), std::move(*action)};
  } else if (type == "press") {
    const auto key = ReadKey(ReadText(json, "key"));
    if (key) return PressRequest{ReadCount(json, "entry"), *key};
  } else if (type == "plug" && json.contains("plugged") && json["plugged"].is_boolean()) {
    return PlugRequest{json["plugged"].get<bool>()};
  } else if (type == "faults") {
    const auto rates = ReadRates(ReadText(json, "rates"));
    if (rates) return FaultsRequest{*rates};
  }
  return std::nullopt;
}

}  // namespace gwq::terminal::web
