// What every device function does: drain, ask, look at the answer.
#pragma once

#include <span>
#include <string_view>

#include <gwq/frame/transaction.h>
#include "codec/internal/secret.h"
#include "frame/internal/device_command.h"
#include "frame/internal/exchange.h"

namespace gwq {

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

// Sends a command or a text, and reads the answer. Returns the exchange's status.
template <typename Bytes, std::size_t A>
int Ask(Endpoint endpoint, Bytes& command, AnswerText<A>& answer, GwqEndOfRead end, int timeout_ms) {
  return Exchange(kAsk, endpoint, {command.data(), command.size()}, {end, timeout_ms},
                  {answer.data(), answer.length()});
}

// Sends one that has no answer.
template <typename Bytes>
int Tell(Endpoint endpoint, Bytes& command, int timeout_ms) {
  return RunExchange(kTell, endpoint, {command.data(), command.size()}, {&EndOfRead2, timeout_ms}, nullptr);
}

// Reads and drops what an earlier screen left on the link. Returns the read's status.
int Drain(Endpoint endpoint);

// How the status of a drain is used. Only GWQ_NOT_OPENED ever ends a call.
enum class DrainLog { kSilent, kLogged };

// Drains before a call. Returns GWQ_OK, or GWQ_NOT_OPENED: the terminal is not there.
int DrainFirst(Endpoint endpoint, DrainLog log = DrainLog::kSilent);

// Drains USB alone. Contract: no status of it counts.
void DrainUsb(Endpoint endpoint);

// How long to wait for the customer, who has so many seconds, and for the terminal to tell. Never beyond what an
// int holds.
int WaitMs(int seconds, int margin_ms);

// The answer without its first and its last byte, STX and ETX.
std::string_view WithoutMarks(std::string_view answer);

}  // namespace gwq
