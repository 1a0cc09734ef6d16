// SPDX-License-Identifier: MIT
// Paths, and "|"-separated lists of them.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string_view>
#include <utility>

namespace gwq {

// Splits a list at each "|". Empty elements are skipped.
// Contract: each "|" that ends an element is overwritten with a terminator, and the caller of
// MP_DownloadFile finds its list cut at the first one.
class PathList {
 public:
  explicit PathList(char* list) : rest_(list) {}

  // Returns the next element; null after the last one.
  const char* Next() { return strtok_r(std::exchange(rest_, nullptr), "|", &state_); }

 private:
  char* rest_;
  char* state_ = nullptr;
};

inline std::size_t LongestElement(std::string_view list) {
  std::size_t longest = 0;
  while (!list.empty()) {
    const std::size_t length = std::min(list.find('|'), list.size());
    longest = std::max(longest, length);
    list.remove_prefix(std::min(length + 1, list.size()));
  }
  return longest;
}

// The part of a path after the last `mark`; null when there is none, or no path.
inline const char* AfterLast(const char* path, char mark) {
  const char* found = path == nullptr ? nullptr : std::strrchr(path, mark);
  return found == nullptr ? nullptr : found + 1;
}

// Contract: a path without "/" has an empty name.
inline std::string_view BaseName(const char* path) {
  const char* name = AfterLast(path, '/');
  return name == nullptr ? "" : name;
}

}  // namespace gwq
