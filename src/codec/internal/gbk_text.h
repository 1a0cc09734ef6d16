// SPDX-License-Identifier: MIT
// Chinese texts of the log. Sources are UTF-8, the log is GBK: Gbk("...") converts a literal at
// compile time, and a character that GBK lacks does not compile.
#pragma once

#include <array>
#include <cstddef>

namespace gwq {
namespace gbk_text {

inline constexpr unsigned short kUnicodeOfGbk[] = {
#include "codec/unicode_tables.inc"
};
inline constexpr unsigned short kGbkOfIdeograph[] = {
#include "codec/gbk_tables.inc"
};
inline constexpr unsigned kFirstGbk = 0x8140;
inline constexpr unsigned kFirstIdeograph = 0x4E00;
inline constexpr unsigned kLastIdeograph = 0x9FA5;

// GBK's rows of punctuation and full-width forms.
inline constexpr unsigned kFirstSymbol = 0xA1A1;
inline constexpr unsigned kLastSymbol = 0xA3FE;

// Not constexpr: a call at compile time fails the build, and the name says why.
unsigned CharacterIsNotInGbk();

constexpr unsigned CodeOf(unsigned point) {
  if (point >= kFirstIdeograph && point <= kLastIdeograph) return kGbkOfIdeograph[point - kFirstIdeograph];
  for (unsigned code = kFirstSymbol; code <= kLastSymbol; ++code) {
    if (kUnicodeOfGbk[code - kFirstGbk] == point) return code;
  }
  return CharacterIsNotInGbk();
}

constexpr unsigned Low6(char c) {
  return static_cast<unsigned char>(c) & 0x3FU;
}

}  // namespace gbk_text

// Never longer than the UTF-8 text: three bytes become two.
template <std::size_t N>
class GbkText {
 public:
  constexpr GbkText(const char (&utf8)[N]) : bytes_{} {  // NOLINT(google-explicit-constructor)
    using gbk_text::Low6;
    std::size_t out = 0;
    for (std::size_t i = 0; i + 1 < N;) {
      const auto lead = static_cast<unsigned char>(utf8[i]);
      if (lead < 0x80) {
        bytes_[out++] = utf8[i++];
        continue;
      }
      const bool three_bytes = (lead & 0xF0U) == 0xE0U;
      const unsigned point = (lead & 0x0FU) << 12U | Low6(utf8[i + 1]) << 6U | Low6(utf8[i + 2]);
      const unsigned code = three_bytes ? gbk_text::CodeOf(point) : gbk_text::CharacterIsNotInGbk();
      bytes_[out++] = static_cast<char>(code >> 8U);
      bytes_[out++] = static_cast<char>(code & 0xFFU);
      i += 3;
    }
  }

  [[nodiscard]] constexpr const char* c_str() const { return bytes_.data(); }

 private:
  std::array<char, N> bytes_;
};

template <std::size_t N>
consteval GbkText<N> Gbk(const char (&utf8)[N]) {
  return utf8;
}

}  // namespace gwq
