// SPDX-License-Identifier: MIT
// The commands that begin with ESC. Most have one of these forms, with fields in decimal or as
// text:
//
//     ESC [ channel WORD
//     ESC [ channel WORD STX field separator field ... ETX
#pragma once

#include <cstddef>
#include <string_view>

#include "codec/internal/secret.h"
#include "codec/internal/text_builder.h"

namespace gwq {

// The part of the terminal that a command goes to.
enum class Channel : char {
  kDevice = '0',
  kPinPad = '1',
  kInformation = '2',
  kEvaluation = '4',
  kKeyboard = '5'
};

template <typename Storage>
class CommandIn {
 public:
  CommandIn(Channel channel, std::string_view word) { Begin(channel, word); }
  // `room` includes the envelope and a terminator.
  CommandIn(Channel channel, std::string_view word, std::size_t room) : text_(room) { Begin(channel, word); }
  // ESC WORD
  explicit CommandIn(std::string_view word) { text_ << "\x1B" << word; }

  template <typename First, typename... Rest>
  CommandIn& Fields(char separator, const First& first, const Rest&... rest) {
    text_ << "\x02" << first;
    (void(text_ << std::string_view(&separator, 1) << rest), ...);
    text_ << "\x03";
    return *this;
  }
  // Appends the parts as they are, without an envelope.
  template <typename... Parts>
  CommandIn& Text(const Parts&... parts) {
    (void(text_ << parts), ...);
    return *this;
  }

  explicit operator bool() const { return static_cast<bool>(text_); }
  char* data() { return text_.data(); }
  [[nodiscard]] int size() const { return text_.size(); }
  [[nodiscard]] bool IsCut() const { return text_.IsCut(); }

 private:
  void Begin(Channel channel, std::string_view word) {
    const char letter = static_cast<char>(channel);
    text_ << "\x1B[" << std::string_view(&letter, 1) << word;
  }

  TextBuilder<Storage> text_;
};

template <std::size_t N>
using Command = CommandIn<SecretArray<char, N>>;

// For commands whose size depends on the caller. False if the allocation failed.
using HeapCommand = CommandIn<SecretHeap<char>>;

inline constexpr std::string_view kLineEnd = "\r\n";

}  // namespace gwq
