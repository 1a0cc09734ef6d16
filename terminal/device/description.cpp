// SPDX-License-Identifier: MIT
#include "device/description.h"

#include <string>

namespace gwq::terminal {

void Description::AddTo(TextCommands& table) {
  table.Add({"\033[0GETGLOBALCONFIG\x02%d\x03",
             [this](const Match& match) { TellConfiguration(match.numbers[0]); }});
  table.Add({"\033[0GETVERSION\x02%d\x03", [this](const Match& match) { TellVersion(match.numbers[0]); }});
}

void Description::TellConfiguration(int item) {
  outlet_.Heard(std::string("GETGLOBALCONFIG ") + std::to_string(item));
  if (item == 6 || item == 7) return AnswerText(outlet_, settings_.production_date, "production date");
  if (item == 8) return AnswerText(outlet_, settings_.model, "model");
  AnswerRefusal(outlet_);
}

void Description::TellVersion(int item) {
  outlet_.Heard(std::string("GETVERSION ") + std::to_string(item));
  if (item != 5) return AnswerRefusal(outlet_);
  AnswerText(outlet_, settings_.version + "|" + settings_.build_date, "firmware version");
}

}  // namespace gwq::terminal
