// SPDX-License-Identifier: MIT
#include "device/pad/pad_settings.h"

#include <algorithm>

#include "protocol/marks.h"

namespace gwq::terminal::device {

using protocol::Match;
using protocol::Row;
namespace {

constexpr std::size_t kMaxAccountDigits = 19;
constexpr std::size_t kMaxDeviceId = 20;

struct Setting {
  const protocol::CommandRow* command;
  std::uint8_t PadValues::*value;
  bool (*allows)(int value);
};

constexpr Setting kSettings[] = {
    {&Row("set encryption type"), &PadValues::encryption_type, [](int value) { return value <= 1; }},
    {&Row("set PIN length"), &PadValues::pin_length, [](int value) { return value >= 4 && value <= 14; }},
    {&Row("set end rule"), &PadValues::end_rule, [](int value) { return value <= 1; }},
    {&Row("set fill type"), &PadValues::fill_type, [](int value) { return value == 0 || value == 0xFF; }},
    {&Row("set PIN mode"), &PadValues::pin_mode,
     [](int value) { return value == kWithAccount || value == kWithoutAccount || value == kOfFixedLength; }},
    {&Row("set sound type"), &PadValues::sound_type, [](int value) { return value <= 3; }},
};

bool IsDigit(std::uint8_t c) {
  return c >= '0' && c <= '9';
}
bool IsVisible(char c) {
  return c > ' ' && c <= '~';
}

}  // namespace

void PadSettings::AddTo(TextCommands& texts, FramedCommands& frames) {
  for (const Setting& setting : kSettings)
    frames.Add(*setting.command, [this, &setting](Arguments arguments) {
      const std::uint8_t value = ArgumentAt(arguments, 0);
      host_.Describe(" " + std::to_string(value));
      if (arguments.size() > 1 || !setting.allows(value)) return FramedAnswer{kStatusBadArgument, {}};
      values_.*setting.value = value;
      return FramedAnswer{};
    });
  frames.Add(Row("get encryption type"), [this](Arguments) {
    return FramedAnswer{kStatusOk, {values_.encryption_type}};
  });
  frames.Add(Row("get PIN length"), [this](Arguments) {
    return FramedAnswer{kStatusOk, {values_.pin_length}};
  });
  frames.Add(Row("set account"), [this](Arguments arguments) { return SetAccount(arguments); });
  frames.Add(Row("get device id"), [this](Arguments) {
    return FramedAnswer{kStatusOk, {values_.device_id.begin(), values_.device_id.end()}};
  });
  texts.Add(Row("JPOSTSETSN"), [this](const Match& match) { SetDeviceId(match.text); });
}

// Hosts fill a short account with zero bytes in front, and nothing of it arrives.
FramedAnswer PadSettings::SetAccount(Arguments arguments) {
  const Arguments digits = arguments.empty() ? arguments : arguments.subspan(1);
  host_.Describe(" (" + std::to_string(digits.size()) + " digits, masked)");
  const std::size_t length = ArgumentAt(arguments, 0);
  const bool fits = length <= kMaxAccountDigits && (digits.empty() || digits.size() == length) &&
                    std::all_of(digits.begin(), digits.end(), IsDigit);
  if (!fits) return {kStatusBadArgument, {}};
  values_.account.assign(digits.begin(), digits.end());
  return {};
}

void PadSettings::SetDeviceId(std::string_view id) {
  host_.Describe(" (" + std::to_string(id.size()) + " characters)");
  const bool good = !id.empty() && id.size() <= kMaxDeviceId && std::all_of(id.begin(), id.end(), IsVisible);
  if (!good) return host_.Answer({protocol::kStx, protocol::kNotAccepted, protocol::kEtx}, "not accepted");
  values_.device_id = id;
  AnswerDone(host_);
}

}  // namespace gwq::terminal::device
