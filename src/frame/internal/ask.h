// SPDX-License-Identifier: MIT
// What every device function does: drain the link, send a command, check the answer.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

#include <gwq/frame/transaction.h>
#include <gwq/links/end_of_read.h>
#include "codec/internal/secret.h"
#include "frame/internal/device_command.h"
#include "frame/internal/exchange.h"

namespace gwq {

// A buffer for an answer of at most N bytes and the report that a USB read may append.
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

// Sends a command or a text and reads the answer. Returns the exchange's status.
template <typename Bytes, std::size_t A>
int Ask(Endpoint endpoint, Bytes& command, AnswerText<A>& answer, GwqEndOfRead end, int timeout_ms) {
  return Exchange(kAsk, endpoint, {command.data(), command.size()}, {end, timeout_ms},
                  {answer.data(), answer.length()});
}

// Sends a command or a text that has no answer.
template <typename Bytes>
int Tell(Endpoint endpoint, Bytes& command, int timeout_ms) {
  return RunExchange(kTell, endpoint, {command.data(), command.size()}, {&EndOfRead2, timeout_ms}, nullptr);
}

// Reads and discards what an earlier screen has left on the link. Returns the read's status.
int Drain(Endpoint endpoint);

// Whether a drain logs its status.
enum class DrainLog { kSilent, kLogged };

// Drains at the start of a call.
// Contract: returns GWQ_NOT_OPENED or GWQ_OK; every other failure of the drain is ignored.
int DrainFirst(Endpoint endpoint, DrainLog log = DrainLog::kSilent);

// Drains port 0, but no serial port.
// Contract: its status is ignored, even GWQ_NOT_OPENED.
void DrainUsb(Endpoint endpoint);

// The customer's seconds plus a margin for the terminal's answer, in milliseconds; clamped to the
// range of int.
int WaitMs(int seconds, int margin_ms);

// The answer without its first and last byte, STX and ETX.
std::string_view WithoutMarks(std::string_view answer);

}  // namespace gwq
