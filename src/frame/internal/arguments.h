// SPDX-License-Identifier: MIT
// Argument checks shared by the exported functions.
#pragma once

#include <string_view>

namespace gwq {

inline bool IsSet(const char* text) {
  return text != nullptr && *text != '\0';
}

inline std::string_view OrEmpty(const char* text) {
  return text == nullptr ? "" : text;
}

inline bool Within(int value, int low, int high) {
  return value >= low && value <= high;
}

// Whether `seconds` is a valid time-out for the customer.
inline bool IsCustomerTimeout(int seconds) {
  return Within(seconds, 1, 999);
}

}  // namespace gwq
