// SPDX-License-Identifier: MIT
// What the screens share: each is set up, shows something, waits for the customer, and is closed.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

#include <gwq/frame/port.h>
#include "codec/internal/secret.h"
#include "frame/internal/arguments.h"
#include "frame/internal/ask.h"

namespace gwq {

// Time-out of a command that has no answer.
inline constexpr int kSendTimeoutMs = 3000;

// Added to the customer's time when waiting for an answer. Some screens have a margin of their own.
inline constexpr int kAnswerMarginMs = 3000;

int SetScreenTimeout(Endpoint endpoint, Channel channel, int seconds);
int CloseScreen(Endpoint endpoint, Channel channel);

// A screen that waits for the customer; the destructor closes it on every path.
class WaitingScreen {
 public:
  WaitingScreen(Endpoint endpoint, Channel channel) : endpoint_(endpoint), channel_(channel) {}
  ~WaitingScreen() { CloseScreen(endpoint_, channel_); }
  WaitingScreen(const WaitingScreen&) = delete;
  WaitingScreen& operator=(const WaitingScreen&) = delete;

 private:
  Endpoint endpoint_;
  Channel channel_;
};

// What an answer means.
struct Meaning {
  std::string_view answer;
  int value;
};

// The value of the first row whose `answer` begins the answer; nullopt when there is none.
std::optional<int> MeaningOf(std::span<const Meaning> table, std::string_view answer);

// The answer from index `first`, without its last character; empty when the answer is too short.
std::string_view AnswerFrom(std::string_view answer, std::size_t first);

// Copies a text and a terminator. `out` may be null.
void CopyTerminated(std::string_view text, char* out);

// Writes a text in split form.
// Contract: a text that does not fit is left out completely; the screen shows none.
std::string_view SplitInto(std::span<char> room, std::string_view text);

// A caller's text of any length, copied and converted to split form.
class SplitCopy {
 public:
  explicit SplitCopy(std::string_view text);

  // False without memory for the copy.
  [[nodiscard]] bool IsCopied() const { return countable_ && copy_; }
  // False without memory for the copy or the split form.
  explicit operator bool() const { return IsCopied() && split_; }

  [[nodiscard]] std::string_view text() const { return text_; }

 private:
  // The size of a command with two such texts in split form fits into an int.
  static constexpr std::size_t kMaxTextSize = 256U << 20U;

  bool countable_;
  SecretHeap<char> copy_;
  SecretHeap<char> split_;
  std::string_view text_;
};

}  // namespace gwq
