// SPDX-License-Identifier: MIT
// The person in front of the terminal, as the device sees them.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

#include "device/screens/pen.h"
#include "device/screens/screen.h"

namespace gwq::terminal::device {

// A request to key a PIN, as it stands on the terminal's screen.
struct PinRequest {
  int min_digits = 4;
  int max_digits = 12;
  std::chrono::milliseconds time_left{0};
  bool again = false;           // the screen asks for the PIN once more
  bool ends_when_full = false;  // the last of `max_digits` ends the entry without Enter
  std::string shown = {};       // what the host has the screen say, UTF-8
};

// What the person does about it, and how long after the request appeared.
// Walking away means that the terminal's own time-out will end the entry.
struct PinAction {
  enum class Kind { kEnter, kCancel, kWalkAway };
  Kind kind = Kind::kEnter;
  std::string digits;
  std::chrono::milliseconds after{0};
};

// A request to key some other number. What a person can do about it is the same.
struct NumberRequest {
  enum class Display { kClear, kStars, kNothing };
  std::string prompt;  // UTF-8
  int max_digits = 20;
  Display display = Display::kClear;
  std::chrono::milliseconds time_left{0};
};
using NumberAction = PinAction;

// A key of the PIN pad, pressed by a customer who keys one after the other (Device::Press).
struct PadKey {
  enum class Kind { kDigit, kBack, kClear, kEnter, kCancel };
  Kind kind = Kind::kDigit;
  char digit = '0';
};

inline constexpr std::size_t kMaxTypedDigits = 32;  // on a keypad

// What the person does about any other screen. What the screen offers no key for is not taken,
// and leaves the screen to its time-out.
struct ScreenAction {
  enum class Kind {
    kKey,      // presses the key with the name `text`
    kDigits,   // types `text` on a keypad, and confirms
    kSign,     // writes `strokes`, and confirms
    kConfirm,  // presses the key that agrees, the best one of an evaluation
    kCancel,
    kAnswer,  // not a person's action: the terminal answers just `text`, whatever the screen
    kWalkAway,
  };
  Kind kind = Kind::kWalkAway;
  std::string text;
  std::vector<PenPoint> strokes;
  std::chrono::milliseconds after{0};
};

// Is asked once what they will do. Who cannot tell yet walks away, and does it later by
// Device::Act and Device::Press, as long as the terminal waits.
class Customer {
 public:
  static constexpr std::chrono::milliseconds kUsualDelay{200};

  virtual ~Customer() = default;
  virtual PinAction KeyPin(const PinRequest& request) = 0;
  virtual NumberAction KeyNumber(const NumberRequest&) { return {NumberAction::Kind::kWalkAway, {}, {}}; }
  // Asked once for each screen that offers a key. Agrees, unless told otherwise.
  virtual ScreenAction Respond(const Screen& screen);
  // Told of each screen when it appears, the idle one too.
  virtual void See(const Screen&) {}
};

}  // namespace gwq::terminal::device
