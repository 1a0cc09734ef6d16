// SPDX-License-Identifier: MIT
#include "device/screens/customer.h"

namespace gwq::terminal::device {

ScreenAction Customer::Respond(const Screen& screen) {
  ScreenAction action;
  action.kind = ScreenAction::Kind::kConfirm;
  action.after = kUsualDelay;
  if (screen.kind == ScreenKind::kKeypad) {
    action.kind = ScreenAction::Kind::kDigits;
    action.text = "1234";
  }
  if (screen.KeyFor(ScreenKey::Role::kSign) != nullptr) {
    action.kind = ScreenAction::Kind::kSign;
    action.strokes = DefaultSignature();
  }
  return action;
}

}  // namespace gwq::terminal::device
