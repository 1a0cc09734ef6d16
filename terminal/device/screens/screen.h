// SPDX-License-Identifier: MIT
// What the customer sees, as data: enough to draw it, and to answer it.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace gwq::terminal::device {

enum class ScreenKind {
  kIdle,
  kTellerCard,
  kEvaluation,
  kInformation,
  kHtml,
  kKeypad,
  kDocument,  // only shown
  kConfirm,   // a document to agree to
  kSigning,   // documents to sign
  kHandSign,  // a page to write on
  kCheckout,
};

// As scripts and the trace call it: "teller_card".
[[nodiscard]] std::string_view NameOf(ScreenKind kind);
[[nodiscard]] std::optional<ScreenKind> ScreenKindNamed(std::string_view name);

inline constexpr int kMaxStars = 6;

struct TellerCard {
  std::string name;
  std::string number;
  int stars = 0;           // 0 to kMaxStars
  std::string photo;       // as the host names it, UTF-8
  std::string photo_path;  // of the photo among the terminal's files; empty if it is not there
};

// A button. The sign key takes what was written, the confirm key of a keypad what
// was typed.
struct ScreenKey {
  enum class Role { kPlain, kConfirm, kCancel, kSign };
  Role role = Role::kPlain;
  std::string name;  // "0" to "3", or what it does
  std::string label;
  std::string answer;  // what the host is told
};

// All texts are UTF-8.
struct Screen {
  ScreenKind kind = ScreenKind::kIdle;
  std::string title;
  std::string text;                    // of an HTML screen the page, unless it is a file
  std::string second_text;             // of a checkout, and the extra text of a page file
  std::vector<std::string> documents;  // paths of the terminal, pages of HTML too
  std::vector<ScreenKey> keys;         // none: there is nothing to answer
  std::optional<TellerCard> teller;
  std::string voice;                       // spoken while the screen is there
  std::string location;                    // of the signature, in the host's words
  int countdown = 0;                       // seconds shown on the confirm key
  bool hides_digits = false;               // the keypad shows stars
  bool keeps_picture = false;              // the terminal keeps a picture of it once it is answered
  std::chrono::milliseconds time_left{0};  // when it appeared; 0 for the idle screen, which stays
  std::optional<std::string> late_answer;  // what the host is told when the time is up

  [[nodiscard]] bool AsksCustomer() const { return !keys.empty(); }
  [[nodiscard]] const ScreenKey* KeyNamed(std::string_view name) const;
  [[nodiscard]] const ScreenKey* KeyFor(ScreenKey::Role role) const;
};

}  // namespace gwq::terminal::device
