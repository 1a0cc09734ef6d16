// The steps that showing, confirming and signing documents share. All on USB.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

#include "codec/internal/secret.h"
#include "frame/internal/ask.h"

namespace gwq {

// What the customer did; the done and refusal answers stand beside them (frame/ask.h).
inline constexpr std::string_view kCancelAnswer = "\x02\x66\x03";
inline constexpr std::string_view kTimeoutAnswer = "\x02w\x03";

// Logged where the arguments do not hold.
inline constexpr const char kParamError[] = "param Error,return\n";

// A list of documents as the terminal gets it, with a terminator behind its N bytes.
template <std::size_t N>
using DocumentList = SecretArray<char, N + 1>;

// What every call begins with. Returns 0; -1 for arguments that do not hold, with a complaint in the log where there is
// one; -3 when the link could not be opened to drain it.
int Begin(Endpoint endpoint, bool arguments_hold, const char* complaint);

void LogIfAny(const char* text);

// Whether the list of the documents' places on the terminal can be sent whole: a customer must not sign a shorter one.
bool DocumentsFit(const char* paths, std::size_t room);

// Sends the documents and tells their places on the terminal, in GBK.
int PushDocuments(const char* paths, std::span<char> list);

}  // namespace gwq
