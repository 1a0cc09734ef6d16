// SPDX-License-Identifier: MIT
// Frames put together byte by byte, the long way.
#pragma once

#include <string_view>

#include "unit/codec/buffers.h"

namespace gwq::test {

inline void AppendSplit(ByteVector& out, unsigned byte) {
  out.push_back(static_cast<std::uint8_t>(byte / 16 % 16 + 0x30));
  out.push_back(static_cast<std::uint8_t>(byte % 16 + 0x30));
}

inline unsigned XorOf(const ByteVector& bytes) {
  unsigned folded = 0;
  for (const std::uint8_t byte : bytes) folded ^= byte;
  return folded;
}

inline ByteVector Framed(unsigned length, const ByteVector& covered, unsigned check) {
  ByteVector frame{0x02};
  AppendSplit(frame, length / 256);
  AppendSplit(frame, length % 256);
  for (const std::uint8_t byte : covered) AppendSplit(frame, byte);
  AppendSplit(frame, check);
  frame.push_back(0x03);
  return frame;
}

inline ByteVector RequestFrame(const ByteVector& body) {
  return Framed(static_cast<unsigned>(body.size()), body, XorOf(body));
}

// An answer whose length field says `declared`.
inline ByteVector AnswerFrame(unsigned status, const ByteVector& data, unsigned declared) {
  ByteVector covered{static_cast<std::uint8_t>(status / 256), static_cast<std::uint8_t>(status % 256)};
  covered.insert(covered.end(), data.begin(), data.end());
  return Framed(declared, covered, XorOf(covered));
}

inline ByteVector AnswerFrame(unsigned status, const ByteVector& data) {
  return AnswerFrame(status, data, static_cast<unsigned>(data.size()) + 2);
}

// STX, the characters, ETX.
inline ByteVector BetweenMarks(std::string_view characters) {
  ByteVector frame{0x02};
  for (const char c : characters) frame.push_back(static_cast<std::uint8_t>(c));
  frame.push_back(0x03);
  return frame;
}

}  // namespace gwq::test
