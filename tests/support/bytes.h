// SPDX-License-Identifier: MIT
// Byte strings of the tests.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace gwq::test {

using Bytes = std::vector<std::uint8_t>;

inline constexpr std::size_t kReportBytes = 1024;

inline Bytes BytesOf(std::string_view text) {
  return {text.begin(), text.end()};
}

inline Bytes Concat(Bytes first, const Bytes& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

// Zeros behind it up to a whole number of 1024-byte reports.
inline Bytes PaddedToReports(Bytes bytes) {
  bytes.resize((bytes.size() + kReportBytes - 1) / kReportBytes * kReportBytes);
  return bytes;
}

// The reports that a command is cut into.
inline std::vector<Bytes> CutIntoReports(const Bytes& bytes) {
  const Bytes padded = PaddedToReports(bytes);
  std::vector<Bytes> reports;
  for (auto at = padded.begin(); at != padded.end(); at += kReportBytes)
    reports.emplace_back(at, at + kReportBytes);
  return reports;
}

// As a C literal would show it; trailing zeros are only counted.
inline std::string Readable(const Bytes& bytes) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  std::size_t used = bytes.size();
  while (used > 0 && bytes[used - 1] == 0) --used;
  std::string text = "\"";
  for (std::size_t i = 0; i < used; ++i) {
    const std::uint8_t byte = bytes[i];
    if (byte >= 0x20 && byte < 0x7F && byte != '"' && byte != '\\') {
      text += static_cast<char>(byte);
    } else {
      text += {'\\', 'x', kDigits[byte >> 4U], kDigits[byte & 0x0FU]};
    }
  }
  text += '"';
  if (used < bytes.size()) text += " + " + std::to_string(bytes.size() - used) + " zeros";
  return text;
}

}  // namespace gwq::test
