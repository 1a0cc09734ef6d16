// SPDX-License-Identifier: MIT
#include "device/screens/screen.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace gwq::terminal::device {
namespace {

constexpr std::array<std::string_view, 11> kNames{"idle",    "teller_card", "evaluation", "information",
                                                  "html",    "keypad",      "document",   "confirm",
                                                  "signing", "hand_sign",   "checkout"};

template <typename Fits>
const ScreenKey* Find(const std::vector<ScreenKey>& keys, Fits fits) {
  const auto key = std::find_if(keys.begin(), keys.end(), fits);
  return key == keys.end() ? nullptr : &*key;
}

}  // namespace

std::string_view NameOf(ScreenKind kind) {
  return kNames.at(static_cast<std::size_t>(kind));
}

std::optional<ScreenKind> ScreenKindNamed(std::string_view name) {
  const auto* const found = std::find(kNames.begin(), kNames.end(), name);
  if (found == kNames.end()) return std::nullopt;
  return static_cast<ScreenKind>(found - kNames.begin());
}

const ScreenKey* Screen::KeyNamed(std::string_view name) const {
  return Find(keys, [name](const ScreenKey& key) { return key.name == name; });
}

const ScreenKey* Screen::KeyFor(ScreenKey::Role role) const {
  return Find(keys, [role](const ScreenKey& key) { return key.role == role; });
}

}  // namespace gwq::terminal::device
