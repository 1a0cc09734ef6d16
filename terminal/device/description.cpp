// SPDX-License-Identifier: MIT
#include "device/description.h"

#include <string>

namespace gwq::terminal::device {

using protocol::Match;
using protocol::Row;

void Description::AddTo(TextCommands& table) {
  table.Add(Row("GETGLOBALCONFIG"), [this](const Match& match) { TellConfiguration(match.numbers[0]); });
  table.Add(Row("GETVERSION", "of an item"), [this](const Match& match) { TellVersion(match.numbers[0]); });
}

void Description::TellConfiguration(int item) {
  host_.Describe(" " + std::to_string(item));
  if (item == 6 || item == 7) return AnswerText(host_, settings_.production_date, "production date");
  if (item == 8) return AnswerText(host_, settings_.model, "model");
  AnswerRefusal(host_);
}

void Description::TellVersion(int item) {
  host_.Describe(" " + std::to_string(item));
  if (item != 5) return AnswerRefusal(host_);
  AnswerText(host_, settings_.version + "|" + settings_.build_date, "firmware version");
}

}  // namespace gwq::terminal::device
