// SPDX-License-Identifier: MIT
#include "scenarios/event.h"

#include <sstream>

#include "base/json_script.h"

namespace gwq::terminal::scenarios {
namespace {

void AddLine(std::string& text, const std::string& line) {
  if (!line.empty()) text.append(line).append(1, '\n');
}

}  // namespace

std::string HistoryLine(const Event& event) {
  const Json json = {static_cast<int>(event.kind), event.name, event.text, event.size, event.at.count()};
  return json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

History ReadHistory(const std::string& path) {
  std::istringstream lines(ReadScriptFile(path));
  History history;
  for (std::string line; std::getline(lines, line);) {
    const Json json = Json::parse(line, nullptr, false);
    if (json.is_discarded()) continue;
    Event event;
    event.kind = static_cast<Event::Kind>(json.at(0).get<int>());
    event.name = json.at(1).get<std::string>();
    event.text = json.at(2).get<std::string>();
    event.size = json.at(3).get<std::uint64_t>();
    event.at = Time(json.at(4).get<Time::rep>());
    history.push_back(std::move(event));
  }
  return history;
}

std::string TextOn(const device::Screen& screen) {
  std::string text;
  for (const std::string* part : {&screen.title, &screen.text, &screen.second_text, &screen.voice})
    AddLine(text, *part);
  for (const std::string& document : screen.documents) AddLine(text, document);
  for (const device::ScreenKey& key : screen.keys) AddLine(text, key.label);
  if (screen.teller) {
    AddLine(text, screen.teller->name);
    AddLine(text, screen.teller->number);
  }
  return text;
}

}  // namespace gwq::terminal::scenarios
