// "|"-separated lists of names.
#pragma once

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>

namespace gwq {

// Cuts a list into its elements, in place: a terminator is written over each "|" that ends an element, which
// callers of the interface can see in their list afterwards. Empty elements are skipped.
class PathList {
 public:
  explicit PathList(char* list) : rest_(list) {}

  // The next element, null when there is none.
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

// The part behind the last "/"; empty when there is none.
inline std::string_view BaseName(const char* path) {
  const char* slash = path == nullptr ? nullptr : std::strrchr(path, '/');
  return slash == nullptr ? std::string_view("") : std::string_view(slash + 1);
}

}  // namespace gwq
