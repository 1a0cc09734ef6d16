// SPDX-License-Identifier: MIT
// Bytes and transfers for the tests of recordings.
#pragma once

#include <array>
#include <initializer_list>
#include <string>
#include <string_view>

#include "recording/recording.h"
#include "recording/transfer.h"

namespace gwq::terminal {

using namespace recording;

inline void PrintTo(const MaskedSpan& span, std::ostream* out) {
  *out << span.offset << "+" << span.size;
}

namespace test {

inline constexpr std::size_t kReport = 1024;

inline Bytes ToBytes(std::string_view text) {
  return {text.begin(), text.end()};
}

inline std::string ToText(std::span<const std::uint8_t> bytes) {
  return {bytes.begin(), bytes.end()};
}

inline std::string Padded(std::string text) {
  text.resize(kReport);
  return text;
}

// As on USB: from the host at endpoint 0x02, to it at 0x81.
inline WireTransfer Usb(std::int64_t time_us, bool to_host, std::string_view text, Masks masks = {}) {
  WireTransfer transfer;
  transfer.time_us = time_us;
  transfer.endpoint = to_host ? 0x81 : 0x02;
  transfer.data = ToBytes(text);
  transfer.length = transfer.data.size();
  transfer.masks = std::move(masks);
  return transfer;
}

inline std::string Split(std::string_view bytes) {
  std::string text;
  for (const char byte : bytes) {
    const auto value = static_cast<unsigned char>(byte);
    text += static_cast<char>('0' + (value >> 4));
    text += static_cast<char>('0' + (value & 0x0F));
  }
  return text;
}

// A PIN-pad frame with this body.
inline std::string Frame(std::string_view body) {
  unsigned char lrc = 0;
  for (const char byte : body) lrc = static_cast<unsigned char>(lrc ^ static_cast<unsigned char>(byte));
  const std::string length{static_cast<char>(body.size() >> 8), static_cast<char>(body.size() & 0xFF)};
  std::string frame = "\x02";
  frame += Split(length);
  frame += Split(body);
  frame += Split(std::string(1, static_cast<char>(lrc)));
  return frame + "\x03";
}

}  // namespace test
}  // namespace gwq::terminal
