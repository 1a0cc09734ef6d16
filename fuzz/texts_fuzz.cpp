// SPDX-License-Identifier: MIT
// Text forms, Base64 and the character sets; and the sequences that are made of numbers alone.
#include <algorithm>
#include <array>
#include <string>

#include <gwq/codec/encodings.h>
#include <gwq/codec/text_forms.h>
#include <gwq/diag/log.h>
#include "exact.h"
#include "input.h"
#include "links/internal/aux_dialect.h"
#include "machine.h"
#include "overlap.h"

namespace gwq::fuzz {
namespace {

std::size_t Even(std::size_t count) {
  return (count + 1) / 2 * 2;
}

// Conversions whose output passes an odd capacity by one character.
void ToTexts(Exact<unsigned char>& in, std::size_t capacity) {
  const int room = static_cast<int>(capacity);
  for (auto* convert : {&GetHexString, &GetHexStr, &HexAsc1Split, &SplitChar}) {
    Exact<char> out(Even(capacity));
    const int length = convert(in.data(), in.length(), out.data(), room);
    Require(length >= 0 && length <= out.length(), "more text than there is room for");
  }
  Exact<char> terminated(Even(capacity) + 1);
  AsciiToHexStr(reinterpret_cast<const char*>(in.data()), in.length(), terminated.data(), room);
  Exact<char> upper(Even(capacity));
  AsciiToHexStr(reinterpret_cast<char*>(in.data()), in.length(), upper.data(), room);
  Exact<char> whole(2 * in.size() + 1);
  Require(HexToAscii(in.data(), in.length(), whole.data()) == 2 * in.length(),
          "hexadecimal text of another length");
  Require((GetXorValue(1, in.data(), in.length()) ^ GetXorValue(0, in.data(), in.length())) == 1,
          "a check without its seed");
  Exact<unsigned char> back(in.size());
  AsciiToHex(whole.data(), 2 * in.length(), back.data());
  Require(std::ranges::equal(back.first(in.size()), in.first(in.size())),
          "other bytes came back from hexadecimal");
}

void FromTexts(Exact<unsigned char>& bytes, std::size_t capacity) {
  const auto* in = reinterpret_cast<const char*>(bytes.data());
  for (auto* convert : {&GetAsciStr, &HexAsc1Merge, &Merge, &HexStrToAscii, &GetAsciString}) {
    Exact<unsigned char> out(capacity);
    const int length = convert(in, bytes.length(), out.data(), out.length());
    Require(length >= 0 && length <= out.length(), "more bytes than there is room for");
  }
  for (auto* convert : {&HexToBCD, &BCDToHex}) {
    Exact<char> out(Even(capacity));
    convert(in, bytes.length(), out.data(), static_cast<int>(capacity));
  }
  Exact<unsigned char> half(bytes.size() / 2);
  AsciiToHex(in, bytes.length(), half.data());
}

void Base64(Exact<unsigned char>& in, std::size_t capacity) {
  Exact<char> text((in.size() + 2) / 3 * 4);
  Require(EncryptBase64(in.data(), in.length(), text.data(), text.length()) == text.length(),
          "Base64 of another length");
  Exact<unsigned char> back(in.size());
  const int length = DecryptBase64(text.data(), text.length(), back.data(), back.length());
  Require(length == in.length() && std::ranges::equal(back.first(in.size()), in.first(in.size())),
          "other bytes came back from Base64");
  for (std::size_t i = 0; i < text.size(); ++i) {
    Require(GetIndexFromBase64Table(text.data()[i]) >= 0, "a character that is not of the alphabet");
  }
  Exact<char> small(capacity);
  EncryptBase64(in.data(), in.length(), small.data(), small.length());
  Exact<unsigned char> any(capacity);
  const int count =
      DecryptBase64(reinterpret_cast<const char*>(in.data()), in.length(), any.data(), any.length());
  Require(count >= -1 && count <= any.length() + 1, "more decoded than there is room for");
}

void CharacterSets(Exact<unsigned char>& in, std::size_t capacity) {
  const auto* text = reinterpret_cast<const char*>(in.data());
  Exact<char> gbk(capacity);
  u2g(text, in.length(), gbk.data(), gbk.length());
  static constexpr std::array kNames{"UTF-8", "GBK", "UCS-2LE", "GB18030", "ASCII", "none"};
  Exact<char> any(capacity);
  code_convert(kNames[in.size() % kNames.size()], kNames[capacity % kNames.size()], text, in.length(),
               any.data(), any.length());
  Exact<char> utf8(capacity);
  g2u(text, in.length(), utf8.data(), utf8.length());
  std::string terminated(text, in.size());
  terminated.resize(terminated.find('\0') == std::string::npos ? terminated.size() : terminated.find('\0'));
  Exact<unsigned char> narrow(
      {reinterpret_cast<const std::uint8_t*>(terminated.c_str()), terminated.size() + 1});
  Exact<unsigned short> wide(capacity);
  const int count = GbkToUnicode(narrow.data(), wide.data(), wide.length());
  Require(count >= 0 && count <= wide.length(), "more characters than there is room for");
}

void FromUcs2(std::span<const std::uint8_t> bytes, std::size_t capacity) {
  Exact<unsigned short> in(bytes.size() / 2 + 1);
  if (bytes.size() >= 2) std::memcpy(in.data(), bytes.data(), bytes.size() / 2 * 2);
  std::size_t singles = 0;
  for (std::size_t i = 0; in.data()[i] != 0; ++i) singles += in.data()[i] <= 0x7F ? 1 : 0;
  Exact<unsigned char> out(Even(capacity) + singles);
  UnicodeToGbk(in.data(), out.data(), static_cast<int>(capacity));
}

// Not of the conversions by iconv, which ends the process when its output changes its input.
void Overlaps(std::span<const std::uint8_t> in, std::size_t capacity) {
  const int length = static_cast<int>(in.size());
  const int room = static_cast<int>(capacity);
  for (auto* convert : {&GetHexString, &GetHexStr, &HexAsc1Split, &SplitChar}) {
    TryOverlaps<unsigned char, char>(in, Even(capacity), Promise::kNone, [&](const auto* from, auto* to) {
      return convert(from, length, to, room);
    });
  }
  for (auto* convert : {&GetAsciStr, &HexAsc1Merge, &Merge, &HexStrToAscii, &GetAsciString}) {
    const bool any = convert == &HexStrToAscii || convert == &GetAsciString;
    TryOverlaps<char, unsigned char>(
        in, capacity, any ? Promise::kAnyOverlap : Promise::kInPlace,
        [&](const auto* from, auto* to) { return convert(from, length, to, room); });
  }
  for (auto* convert : {&HexToBCD, &BCDToHex}) {
    TryOverlaps<char, char>(in, Even(capacity), Promise::kInPlace,
                            [&](const auto* from, auto* to) { return convert(from, length, to, room); });
  }
  TryOverlaps<char, unsigned char>(in, in.size() / 2, Promise::kInPlace,
                                   [&](const auto* from, auto* to) { return AsciiToHex(from, length, to); });
  TryOverlaps<unsigned char, char>(in, 2 * in.size() + 1, Promise::kNone,
                                   [&](const auto* from, auto* to) { return HexToAscii(from, length, to); });
  TryOverlaps<unsigned char, char>(in, capacity, Promise::kNone, [&](const auto* from, auto* to) {
    return EncryptBase64(from, length, to, room);
  });
  TryOverlaps<char, unsigned char>(in, capacity, Promise::kInPlace, [&](const auto* from, auto* to) {
    return DecryptBase64(from, length, to, room);
  });
}

// Text and output overlap in any way; so far as promised, the text before the delimiter comes out.
void CutInPlace(const std::string& text, const std::string& delimiter) {
  const std::string whole(text.c_str());
  const std::size_t found = whole.find(delimiter.c_str());
  const std::span in(reinterpret_cast<const std::uint8_t*>(whole.c_str()), whole.size() + 1);
  for (const int shift : {0, 1, 5, -1, -5}) {
    Overlap block(in, in.size(), shift);
    SplitData(block.in<char>(), block.out<char>(), delimiter.c_str());
    const std::string_view cut = std::string_view(whole).substr(0, found);
    Require(std::equal(cut.begin(), cut.end(), block.out<char>()), "an overlap changes what is cut");
  }
}

// What the library takes for a pointer that is missing.
void Nothing(std::span<const std::uint8_t> bytes) {
  Exact<unsigned char> in(bytes);
  const auto* text = reinterpret_cast<const char*>(in.data());
  const int length = in.length();
  Exact<char> out(Even(in.size()) * 2 + 1);
  auto* raw = reinterpret_cast<unsigned char*>(out.data());
  for (auto* convert : {&HexAsc1Split, &SplitChar}) {
    Require(convert(nullptr, length, out.data(), length) == 0, "text of nothing");
    Require(convert(in.data(), length, nullptr, 2 * length) == 0, "text into nothing");
  }
  for (auto* convert : {&HexAsc1Merge, &Merge}) {
    Require(convert(nullptr, length, raw, length) == 0, "bytes of nothing");
    Require(convert(text, length, nullptr, length) == 0, "bytes into nothing");
  }
  const int none = length == 0 ? 0 : -1;
  Require(EncryptBase64(nullptr, length, out.data(), out.length()) == none, "Base64 of nothing");
  Require(EncryptBase64(in.data(), length, nullptr, out.length()) == none, "Base64 into nothing");
  Exact<unsigned short> wide(in.size());
  Require(GbkToUnicode(nullptr, wide.data(), wide.length()) == -1, "characters of nothing");
  Require(UnicodeToGbk(nullptr, raw, length) == -1, "GBK of nothing");
  Require(SplitData(nullptr, out.data(), "x") == nullptr, "a cut of nothing");
  for (const char* name : {static_cast<const char*>(nullptr), "UTF-8"}) {
    code_convert(name, "GBK", nullptr, length, out.data(), out.length());
    code_convert("GBK", name, text, length, nullptr, length);
  }
  u2g(nullptr, length, out.data(), out.length());
  g2u(text, length, nullptr, length);
}

void CutText(const std::string& text, const std::string& delimiter) {
  Exact<char> out(text.size() + 1);
  const char* at = SplitData(text.c_str(), out.data(), delimiter.c_str());
  Require(at >= text.c_str() && at <= text.c_str() + text.size(), "cut outside the text");
}

void Numbers(Input input) {
  const int type = input.Int();
  const int port = input.Int();
  const AuxSequence sequence = AuxSwitchOn(type, port, input.Int());
  Require(std::find(sequence.begin(), sequence.end(), '\0') != sequence.end(), "a sequence without an end");
  Require(AuxSwitchOff(type) != nullptr && AuxWrappingOf(type).prefix.size() <= 1024, "no such dialect");
  const int month = input.Int();
  const int year = input.Int();
  GetAbsDays(year, month, input.Int());
}

}  // namespace
}  // namespace gwq::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace gwq::fuzz;
  Input input(data, size);
  const std::size_t capacity = input.Short() % 3000;
  Numbers(input);
  const auto bytes = input.Rest();
  Exact<unsigned char> in(bytes);
  ToTexts(in, capacity);
  FromTexts(in, capacity);
  Base64(in, capacity);
  CharacterSets(in, capacity);
  FromUcs2(bytes, capacity);
  const std::string text(bytes.begin(), bytes.end());
  CutText(text, text.substr(0, capacity % 4));
  CutInPlace(text, text.substr(std::min(text.size(), capacity % 7), capacity % 4));
  Overlaps(bytes, capacity);
  Nothing(bytes);
  return 0;
}
