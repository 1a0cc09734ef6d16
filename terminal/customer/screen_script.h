// SPDX-License-Identifier: MIT
// What a scripted customer does at the screens, a step for each screen that offers
// a key:
//
//   {"confirm": true}         agrees; of an evaluation's keys presses the best one
//   {"cancel": true}          presses the key that does not agree
//   {"key": 1}                presses this key, 0 to 3
//   {"digits": "42"}          types this on a keypad, and confirms
//   {"sign": true}            writes the usual signature, and confirms
//   {"sign": [[[10, 20], [300, 90]], [[40, 100], [60, 100]]]}   writes these strokes
//   {"answer": "B2F"}         has the terminal answer this whatever the screen; each
//                             character stands for a byte: "\u0002\u00aa\u0003"
//   {"walk_away": true}       lets the terminal's time-out come
//
// "after_ms" as for PINs. With "on": "evaluation" (or teller_card, information, html,
// keypad, document, confirm, signing, hand_sign, checkout) a step is only for screens
// of that kind. A screen takes the first step for it that no screen has taken; the
// last one for it is repeated.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/json_script.h"
#include "device/screens/customer.h"

namespace gwq::terminal::customer {

// The kinds of screens, for messages.
[[nodiscard]] std::string KnownScreens();

class ScreenScript {
 public:
  ScreenScript() = default;
  // Throws std::runtime_error when the list is no good.
  explicit ScreenScript(const Json& steps);

  // Nothing when the script has no step for this kind of screen.
  [[nodiscard]] std::optional<device::ScreenAction> Next(device::ScreenKind kind);

 private:
  struct Step {
    std::optional<device::ScreenKind> on;
    device::ScreenAction action;
    bool taken = false;
  };

  [[nodiscard]] static Step ReadStep(const Json& json);

  std::vector<Step> steps_;
};

}  // namespace gwq::terminal::customer
