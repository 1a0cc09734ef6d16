// SPDX-License-Identifier: MIT
// The terminal on USB for the customer's screens, with the clock in hand.
#pragma once

#include <string>

#include <gwq/frame/transaction.h>
#include "support/guarded_buffer.h"
#include "unit/files/files_rig.h"
#include "wire/screen_frames.h"

namespace gwq::test {

inline std::string Split(std::string_view text) {
  std::string split;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    split.push_back(static_cast<char>(0x30 + byte / 16));
    split.push_back(static_cast<char>(0x30 + byte % 16));
  }
  return split;
}

// Texts from nothing to a megabyte, of all byte values but zero.
inline std::string LongText(std::size_t size) {
  std::string text(size, '\0');
  for (std::size_t i = 0; i < size; ++i) text[i] = static_cast<char>(1 + (i * 7 + i / 255) % 255);
  return text;
}

}  // namespace gwq::test
