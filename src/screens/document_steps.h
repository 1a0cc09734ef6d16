// The steps that showing, confirming and signing documents share. All on USB.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

#include "codec/secret.h"
#include "frame/ask.h"

namespace gwq {

// What the customer did; the done and refusal answers stand beside them (frame/ask.h).
inline constexpr std::string_view kCancelAnswer = "\x02\x66\x03";
inline constexpr std::string_view kTimeoutAnswer = "\x02w\x03";

inline constexpr int kSendTimeoutMs = 3000;

// A list of documents as the terminal gets it, with a terminator behind its N bytes.
template <std::size_t N>
using DocumentList = SecretArray<char, N + 1>;

bool Given(const char* text);
bool IsScreenTimeout(int seconds);
// How long to wait for a customer who has so many seconds.
int WaitMs(int seconds);

// The text that stands in the answer's buffer, also after a failed exchange.
template <std::size_t N>
std::string_view Arrived(AnswerText<N>& answer) {
  return answer.data();
}

// Sends the documents and tells their places on the terminal, in GBK; what does not fit or convert is left out.
int PushDocuments(const char* paths, std::span<char> list);

void CloseScreen(int baud);

}  // namespace gwq
