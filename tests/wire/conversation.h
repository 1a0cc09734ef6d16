// SPDX-License-Identifier: MIT
// What goes over the wire between host and terminal in one piece of business. The library's tests let each
// conversation be held by calls of the library; the terminal's tests hold it with the terminal. Both find
// their part of it by its name.
#pragma once

#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "support/bytes.h"

namespace gwq::wire {

struct Exchange {
  explicit Exchange(std::string_view sent, std::string_view answered = {}) : host(sent), answer(answered) {}
  Exchange(const test::Bytes& sent, std::string_view answered) : Exchange(TextOf(sent), answered) {}
  Exchange(const test::Bytes& sent, const test::Bytes& answered) : Exchange(TextOf(sent), TextOf(answered)) {}
  Exchange(std::string_view sent, const test::Bytes& answered) : Exchange(sent, TextOf(answered)) {}

  // The host does not wait for the answer; the next command makes the terminal withdraw it.
  [[nodiscard]] Exchange Unread() && {
    is_read = false;
    return std::move(*this);
  }

  std::string host;    // without the zeros that fill its last report
  std::string answer;  // the same; empty when there is none
  bool is_read = true;

 private:
  static std::string TextOf(const test::Bytes& bytes) { return {bytes.begin(), bytes.end()}; }
};

using Exchanges = std::vector<Exchange>;

struct Conversation {
  std::string name;
  Exchanges exchanges;
};

inline void PrintTo(const Conversation& conversation, std::ostream* out) {
  *out << conversation.name;
}

inline Exchanges operator+(Exchanges first, const Exchanges& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

}  // namespace gwq::wire
