// SPDX-License-Identifier: MIT
// What a page says, line by line, ready to be set. HTML is read as a person would want to see it on
// a small screen: whatever is wrong with it, some text comes out.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace gwq::terminal::picture {

struct PageLine {
  enum class Kind { kText, kRule };
  Kind kind = Kind::kText;
  std::string text;           // a tab begins the next cell of a table
  int heading = 0;            // 1 to 6; 0: no heading
  int depth = 0;              // how many lists it stands in
  std::string marker;         // of a list's item, "•" or "1."
  bool begins_block = false;  // some room belongs above it

  friend bool operator==(const PageLine&, const PageLine&) = default;
};
using Page = std::vector<PageLine>;

// More than any screen takes; what comes behind that is not read.
inline constexpr std::size_t kMaxPageBytes = 8192;
inline constexpr std::size_t kMaxPageLines = 64;

// In UTF-8, whatever came.
[[nodiscard]] Page ReadHtml(std::string_view html);
// Bytes as they came: not always UTF-8.
[[nodiscard]] Page ReadPlainText(std::string_view text);

}  // namespace gwq::terminal::picture
