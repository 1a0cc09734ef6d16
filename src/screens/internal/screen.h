// What the screens have in common: each is set up, shows something, waits for the customer, and is closed.
#pragma once

#include <optional>
#include <span>
#include <string_view>

#include <gwq/frame/port.h>
#include "codec/internal/secret.h"
#include "frame/internal/arguments.h"
#include "frame/internal/ask.h"

namespace gwq {

// Longest wait for a command that has no answer to go out.
inline constexpr int kSendTimeoutMs = 3000;

// What an answer gets beyond the customer's own time, unless a screen says otherwise.
inline constexpr int kAnswerMarginMs = 3000;

int SetScreenTimeout(Endpoint endpoint, Channel channel, int seconds);
int CloseScreen(Endpoint endpoint, Channel channel);

// A screen that waits for the customer; leaving the scope closes it, whatever the outcome.
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

// What the first three characters of an answer mean; nothing when they are not in the table.
struct Meaning {
  std::string_view answer;
  int value;
};
std::optional<int> MeaningOf(std::span<const Meaning> table, std::string_view answer);

// An answer from its character `first` on without its last one; empty when it is too short for that.
std::string_view AnswerFrom(std::string_view answer, std::size_t first);

// Copies a text with a terminator; a null output is passed over.
void CopyTerminated(std::string_view text, char* out);

// Puts a text into split form, whole or, when there is no room for all of it, not at all.
std::string_view SplitInto(std::span<char> room, std::string_view text);

// A caller's text of any length, copied and put into split form.
class SplitCopy {
 public:
  explicit SplitCopy(std::string_view text);

  // False when there was no memory for the copy.
  [[nodiscard]] bool Copied() const;
  // False when there was no memory for the copy or the split form.
  explicit operator bool() const { return Copied() && split_; }

  [[nodiscard]] std::string_view text() const { return text_; }

 private:
  // The split form of two such texts, and the command around them, can be counted in an int.
  static constexpr std::size_t kLongestText = 256U << 20U;

  bool countable_;
  SecretHeap<char> copy_;
  SecretHeap<char> split_;
  std::string_view text_;
};

}  // namespace gwq
