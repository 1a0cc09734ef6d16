// SPDX-License-Identifier: MIT
#include <gwq/codec/text_forms.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <span>

#include "codec/internal/lanes.h"
#include "codec/internal/pairs.h"
#include "codec/internal/secret.h"
#include "codec/internal/split_form.h"
#include "codec/internal/xor_fold.h"

namespace gwq {
namespace {

using Bytes = std::span<const std::uint8_t>;
using UpperHexDigit = HexDigit<'A'>;
using LowerHexDigit = HexDigit<'a'>;

// Contract: the capacity is checked before each pair only, so that an odd one is exceeded by one
// byte.
Bytes FittingPairs(Bytes in, int out_capacity) {
  if (out_capacity < 1) return {};
  return in.first(std::min(in.size(), (static_cast<std::size_t>(out_capacity) + 1) / 2));
}

bool JoinFits(const void* in, int in_length, const void* out, int out_capacity) {
  return in != nullptr && out != nullptr && out_capacity >= (static_cast<long long>(in_length) + 1) / 2;
}

template <typename T>
auto IsHexDigit(T c) {
  return Or(InRange(c, '0', '9'), InRange(static_cast<T>(c | 0x20), 'a', 'f'));
}

// Joins the pairs of hexadecimal digits at the start of `text`. Returns the bytes written.
int JoinCheckedPairs(Bytes text, unsigned char* out) {
  std::size_t i = 0;
  for (; text.size() - i >= kBlockSize; i += kBlockSize) {
    const Block characters = LoadBlock(&text[i]);
    if (!AllTrue(IsHexDigit(characters))) break;
    const Block joined = JoinedWords<HexValue>(characters);
    StoreHalf(OddBytes(joined, joined), out + i / 2);
  }
  for (; i + 1 < text.size() && IsHexDigit(text[i]) && IsHexDigit(text[i + 1]); i += 2) {
    out[i / 2] = JoinPair<HexValue>(text[i], text[i + 1]);
  }
  return static_cast<int>(i / 2);
}

int BytesToHex(Bytes in, char* out, int out_capacity) {
  const Bytes converted = out == nullptr ? Bytes{} : FittingPairs(in, out_capacity);
  SplitInPairs<UpperHexDigit>(converted, out);
  return static_cast<int>(2 * converted.size());
}

// Contract: the last digit of an odd count is paired with a zero byte, not with the digit 0.
int HexToBytes(Bytes text, std::span<std::uint8_t> out) {
  return static_cast<int>(JoinPairsOf<HexValue>(text, 0, out));
}

// Whether writes to `out` overtake reads of `text`. With the same start they do not.
bool BeginsWithin(std::span<const std::uint8_t> out, Bytes text) {
  const std::less<> before;
  return before(text.data(), out.data()) && before(out.data(), text.data() + text.size());
}

}  // namespace

void SplitBytes(std::span<const std::uint8_t> in, char* out) {
  SplitInPairs<SplitDigit>(in, out);
}

std::size_t JoinPairs(std::span<const std::uint8_t> in, std::uint8_t following, std::span<std::uint8_t> out) {
  return JoinPairsOf<SplitValue>(in, following, out);
}

std::size_t MergePairs(std::span<const std::uint8_t> in, std::span<std::uint8_t> out) {
  return JoinPairsOf<NibbleValue>(in, 0, out);
}

}  // namespace gwq

using namespace gwq;

int GetHexString(const unsigned char* in, int inLen, char* out, int outCap) {
  return BytesToHex(BytesOf(in, inLen), out, outCap);
}

int AsciiToHexStr(char* in, int inLen, char* out, int outCap) {
  return BytesToHex(AsBytes(BytesOf<const char>(in, inLen)), out, outCap);
}

// Contract: unlike the overload above, writes lower case and a terminator after the last pair.
int AsciiToHexStr(const char* in, int inLen, char* out, int outCap) {
  if (out == nullptr) return 0;
  const Bytes converted = FittingPairs(AsBytes(BytesOf(in, inLen)), outCap);
  char* const end = SplitInPairs<LowerHexDigit>(converted, out);
  if (end != out) *end = '\0';
  return static_cast<int>(2 * converted.size());
}

int GetHexStr(const unsigned char* in, int inLen, char* out, int outCap) {
  if (out == nullptr) return 0;
  const Bytes converted = FittingPairs(BytesOf(in, inLen), outCap);
  SplitInPairs<SplitDigit>(converted, out);
  return static_cast<int>(2 * converted.size());
}

int HexAsc1Split(const unsigned char* in, int inLen, char* out, int outCap) {
  if (in == nullptr || out == nullptr || outCap < 2LL * inLen) return 0;
  return GetHexStr(in, inLen, out, outCap);
}

int SplitChar(const unsigned char* in, int inLen, char* out, int outCap) {
  return HexAsc1Split(in, inLen, out, outCap);
}

int GetAsciStr(const char* in, int inLen, unsigned char* out, int outCap) {
  const Bytes text = AsBytes(BytesOf(in, inLen));
  return static_cast<int>(JoinPairsOf<SplitValue>(text, 0, BytesOf(out, outCap)));
}

int HexAsc1Merge(const char* in, int inLen, unsigned char* out, int outCap) {
  if (!JoinFits(in, inLen, out, outCap)) return 0;
  return GetAsciStr(in, inLen, out, outCap);
}

int Merge(const char* in, int inLen, unsigned char* out, int outCap) {
  if (!JoinFits(in, inLen, out, outCap)) return 0;
  return static_cast<int>(MergePairs(AsBytes(BytesOf(in, inLen)), BytesOf(out, outCap)));
}

int HexStrToAscii(const char* in, int inLen, unsigned char* out, int outCap) {
  const Bytes text = AsBytes(BytesOf(in, inLen));
  const std::span<std::uint8_t> room = BytesOf(out, outCap);
  if (!BeginsWithin(room, text)) return HexToBytes(text, room);
  SecretHeap<std::uint8_t> copy(text.size());
  if (!copy) return 0;
  std::copy(text.begin(), text.end(), copy.data());
  return HexToBytes({copy.data(), copy.size()}, room);
}

int GetAsciString(const char* in, int inLen, unsigned char* out, int outCap) {
  return HexStrToAscii(in, inLen, out, outCap);
}

// Contract: despite its name, converts the split form to hexadecimal text.
int HexToBCD(const char* in, int inLen, char* out, int outCap) {
  SecretHeap<unsigned char> bytes((BytesOf(in, inLen).size() + 1) / 2);
  if (!bytes) return 0;
  const int count = GetAsciStr(in, inLen, bytes.data(), static_cast<int>(bytes.size()));
  return GetHexString(bytes.data(), count, out, outCap);
}

// Contract: despite its name, converts hexadecimal text to the split form.
int BCDToHex(const char* in, int inLen, char* out, int outCap) {
  SecretHeap<unsigned char> bytes((BytesOf(in, inLen).size() + 1) / 2);
  if (!bytes) return 0;
  const int count = GetAsciString(in, inLen, bytes.data(), static_cast<int>(bytes.size()));
  return GetHexStr(bytes.data(), count, out, outCap);
}

int HexToAscii(const unsigned char* in, int len, char* out) {
  if (out == nullptr) return 0;
  const Bytes bytes = BytesOf(in, len);
  *SplitInPairs<UpperHexDigit>(bytes, out) = '\0';
  return static_cast<int>(2 * bytes.size());
}

// Contract: stops at the first character that is no hexadecimal digit, without an error.
int AsciiToHex(const char* in, int len, unsigned char* out) {
  if (out == nullptr) return 0;
  return JoinCheckedPairs(AsBytes(BytesOf(in, len)), out);
}

unsigned char GetXorValue(unsigned char seed, const unsigned char* data, int len) {
  return XorFold(BytesOf(data, len), seed);
}

// Contract: returns the delimiter's own position and terminates `dst` only if there is no
// delimiter.
char* SplitData(const char* src, char* dst, const char* delim) {
  if (src == nullptr) return nullptr;
  const char* found = delim == nullptr ? nullptr : std::strstr(src, delim);
  if (found == nullptr) {
    if (dst != nullptr) std::memmove(dst, src, std::strlen(src) + 1);
    return const_cast<char*>(src);
  }
  if (dst != nullptr) std::memmove(dst, src, static_cast<std::size_t>(found - src));
  return const_cast<char*>(found);
}
