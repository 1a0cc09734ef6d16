// SPDX-License-Identifier: MIT
#include "screens/internal/screen.h"

#include "codec/internal/split_form.h"

namespace gwq {

int SetScreenTimeout(Endpoint endpoint, Channel channel, int seconds) {
  Command<64> command(channel, ";");
  return Tell(endpoint, command.Text(seconds, "T"), kSendTimeoutMs);
}

int CloseScreen(Endpoint endpoint, Channel channel) {
  Command<16> command(channel, "C");
  return Tell(endpoint, command, kSendTimeoutMs);
}

std::optional<int> MeaningOf(std::span<const Meaning> table, std::string_view answer) {
  for (const Meaning& row : table) {
    if (answer.starts_with(row.answer)) return row.value;
  }
  return std::nullopt;
}

std::string_view AnswerFrom(std::string_view answer, std::size_t first) {
  return answer.size() <= first ? std::string_view("") : answer.substr(first, answer.size() - first - 1);
}

void CopyTerminated(std::string_view text, char* out) {
  if (out != nullptr) out[text.copy(out, text.size())] = '\0';
}

std::string_view SplitInto(std::span<char> room, std::string_view text) {
  if (room.size() / 2 < text.size()) return {};
  SplitBytes(AsBytes(text), room.data());
  return {room.data(), 2 * text.size()};
}

SplitCopy::SplitCopy(std::string_view text)
    : countable_(text.size() <= kMaxTextSize), copy_(2 * text.size() + 255), split_((text.size() + 5) * 2) {
  if (!*this) return;
  text.copy(copy_.data(), text.size());
  text_ = SplitInto({split_.data(), split_.size()}, {copy_.data(), text.size()});
}

}  // namespace gwq
