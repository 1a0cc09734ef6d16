// What every device function does: drain, build a command, ask, look at the answer.
#pragma once

#include <algorithm>
#include <charconv>
#include <cstring>
#include <span>
#include <string_view>

#include <gwq/frame/transaction.h>
#include "codec/internal/secret.h"

namespace gwq {

// A command under construction in a buffer of a given size; what does not fit is cut, and told by IsCut.
template <typename Storage>
class CommandIn {
 public:
  CommandIn() = default;
  explicit CommandIn(std::size_t size) : bytes_(size) {}

  CommandIn& operator<<(std::string_view text) {
    const std::size_t length = std::min(text.size(), bytes_.size() - 1 - size_);
    cut_ = cut_ || length < text.size();
    text.copy(bytes_.data() + size_, length);
    size_ += length;
    return *this;
  }
  CommandIn& operator<<(int number) {
    char digits[12];
    const auto [end, error] = std::to_chars(digits, digits + sizeof digits, number);
    return *this << std::string_view(digits, static_cast<std::size_t>(end - digits));
  }

  // False when there was no memory; nothing can be written then.
  explicit operator bool() const { return bytes_.data() != nullptr; }

  char* data() { return bytes_.data(); }
  [[nodiscard]] int size() const { return static_cast<int>(size_); }
  [[nodiscard]] std::string_view text() const { return {bytes_.data(), size_}; }
  [[nodiscard]] bool IsCut() const { return cut_; }

 private:
  Storage bytes_;
  std::size_t size_ = 0;
  bool cut_ = false;
};

template <std::size_t N>
using CommandText = CommandIn<SecretArray<char, N>>;

// For commands whose size comes from the caller.
using HeapCommand = CommandIn<SecretHeap<char>>;

// Room for an answer of at most N bytes, and for the report that a USB read may bring beyond.
template <std::size_t N>
class AnswerText {
 public:
  char* data() { return bytes_.data(); }
  int* length() { return &length_; }
  [[nodiscard]] std::string_view text() const { return {bytes_.data(), static_cast<std::size_t>(length_)}; }
  [[nodiscard]] std::span<const unsigned char> bytes() const {
    return {reinterpret_cast<const unsigned char*>(bytes_.data()), static_cast<std::size_t>(length_)};
  }

 private:
  SecretArray<char, N + 1024> bytes_;
  int length_ = N;
};

// The terminal's short answers.
inline constexpr std::string_view kDoneAnswer = "\x02\xAA\x03";
inline constexpr std::string_view kRefusalAnswer = "\x02U\x03";

struct Line {
  int port;
  int baud;
};

template <typename Storage, std::size_t A>
int Ask(Line line, CommandIn<Storage>& command, AnswerText<A>& answer, GwqEndOfRead end, int timeout_ms) {
  return TransProcByEnd(line.port, line.baud, command.data(), command.size(), answer.data(), answer.length(),
                        end, timeout_ms);
}

template <typename Storage>
int Tell(Line line, CommandIn<Storage>& command, int timeout_ms) {
  return TransProcOnlySend(line.port, line.baud, command.data(), command.size(), timeout_ms);
}

// Reads and throws away what an earlier screen left on the link. Returns the read's status.
int Drain(Line line);

// Drains USB and logs the status, as the multimedia functions do.
int DrainLogged(int baud);

// How long to wait for the customer, who has so many seconds, and for the terminal to tell. Never beyond what an
// int holds.
int WaitMs(int seconds, int margin_ms);

// What stands between the first and the last byte of an answer, STX and ETX.
std::string_view WithoutMarks(std::string_view answer);

}  // namespace gwq
