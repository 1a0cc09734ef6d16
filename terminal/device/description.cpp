// SPDX-License-Identifier: MIT
#include "device/description.h"

#include <string>

namespace gwq::terminal {

void Description::AddTo(TextCommands& table) {
  table.Add(Row("GETGLOBALCONFIG"), [this](const Match& match) { TellConfiguration(match.numbers[0]); });
  table.Add(Row("GETVERSION", "of an item"), [this](const Match& match) { TellVersion(match.numbers[0]); });
}

void Description::TellConfiguration(int item) {
  outlet_.Describe(" " + std::to_string(item));
  if (item == 6 || item == 7) return AnswerText(outlet_, settings_.production_date, "production date");
  if (item == 8) return AnswerText(outlet_, settings_.model, "model");
  AnswerRefusal(outlet_);
}

void Description::TellVersion(int item) {
  outlet_.Describe(" " + std::to_string(item));
  if (item != 5) return AnswerRefusal(outlet_);
  AnswerText(outlet_, settings_.version + "|" + settings_.build_date, "firmware version");
}

}  // namespace gwq::terminal
