// A command with parts that have no bound of their own, on the heap.
#pragma once

#include <algorithm>
#include <string_view>

#include "codec/secret.h"
#include "frame/ask.h"

namespace gwq {

class LongCommand {
 public:
  // Room for parts of so many bytes together, and for the command word and numbers around them. False as a
  // condition when there was no memory.
  explicit LongCommand(std::size_t parts) : bytes_(parts + kAround) {}

  explicit operator bool() const { return static_cast<bool>(bytes_); }

  LongCommand& operator<<(std::string_view text) {
    const std::size_t length = std::min(text.size(), bytes_.size() - 1 - size_);
    text.copy(bytes_.data() + size_, length);
    size_ += length;
    return *this;
  }
  LongCommand& operator<<(int number) {
    CommandText<16> digits;
    return *this << (digits << number).text();
  }

  char* data() { return bytes_.data(); }
  [[nodiscard]] int size() const { return static_cast<int>(size_); }

 private:
  static constexpr std::size_t kAround = 128;

  SecretHeap<char> bytes_;
  std::size_t size_ = 0;
};

template <std::size_t A>
int Ask(Line line, LongCommand& command, AnswerText<A>& answer, GwqEndOfRead end, int timeout_ms) {
  return TransProcByEnd(line.port, line.baud, command.data(), command.size(), answer.data(), answer.length(),
                        end, timeout_ms);
}

inline int Tell(Line line, LongCommand& command, int timeout_ms) {
  return TransProcOnlySend(line.port, line.baud, command.data(), command.size(), timeout_ms);
}

}  // namespace gwq
