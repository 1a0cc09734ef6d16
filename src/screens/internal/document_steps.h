// SPDX-License-Identifier: MIT
// The steps that showing, confirming and signing documents share. All use USB.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

#include "codec/internal/secret.h"
#include "frame/internal/ask.h"

namespace gwq {

// What the customer did. kDoneAnswer and kRefusalAnswer (frame/internal/ask.h) belong to them.
inline constexpr std::string_view kCancelAnswer = "\x02\x66\x03";
inline constexpr std::string_view kTimeoutAnswer = "\x02w\x03";

// Logged for invalid arguments.
inline constexpr const char kParamError[] = "param Error,return\n";

// A list of documents as it is sent to the terminal: N bytes and a terminator.
template <std::size_t N>
using DocumentList = SecretArray<char, N + 1>;

// The first steps of every call. Returns GWQ_OK; GWQ_BAD_ARGUMENT for invalid arguments, after
// logging `complaint`, which may be null; GWQ_NOT_OPENED when the link cannot be opened for the
// drain.
int CheckAndDrain(Endpoint endpoint, bool valid, const char* complaint);

// `text` may be null.
void LogIfSet(const char* text);

// Whether the list of the documents' paths on the terminal fits into `room`: a customer must not
// sign a shorter list.
bool DocumentsFit(const char* paths, std::size_t room);

// Pushes the documents and writes their paths on the terminal to `list`, in GBK.
int PushDocuments(const char* paths, std::span<char> list);

}  // namespace gwq
