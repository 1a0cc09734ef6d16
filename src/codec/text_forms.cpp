#include <gwq/codec/text_forms.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>

#include "codec/internal/pairs.h"
#include "codec/internal/secret.h"
#include "codec/internal/split_form.h"
#include "codec/internal/xor_fold.h"

namespace gwq {
namespace {

using Bytes = std::span<const std::uint8_t>;
using UpperHexDigit = HexDigit<'A'>;
using LowerHexDigit = HexDigit<'a'>;

// The input that finds room when the room is looked at before each pair only.
Bytes FittingPairs(Bytes in, int out_capacity) {
  if (out_capacity < 1) return {};
  return in.first(std::min(in.size(), (static_cast<std::size_t>(out_capacity) + 1) / 2));
}

int WrittenPairs(Bytes in) {
  return static_cast<int>(2 * in.size());
}

bool SplitFits(const void* in, int in_length, const void* out, int out_capacity) {
  return in != nullptr && out != nullptr && out_capacity >= 2LL * in_length;
}

bool JoinFits(const void* in, int in_length, const void* out, int out_capacity) {
  return in != nullptr && out != nullptr && out_capacity >= (static_cast<long long>(in_length) + 1) / 2;
}

template <typename T>
auto IsHexDigit(T c) {
  return Either(Within(c, '0', '9'), Within(static_cast<T>(c | 0x20), 'a', 'f'));
}

// As many pairs of hexadecimal digits as stand at the start of `text`; returns the bytes written.
int JoinCheckedPairs(Bytes text, unsigned char* out) {
  std::size_t i = 0;
  for (; text.size() - i >= kBlockSize; i += kBlockSize) {
    const Block characters = LoadBlock(&text[i]);
    if (!AllHold(IsHexDigit(characters))) break;
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
  return WrittenPairs(converted);
}

int HexToBytes(Bytes text, std::span<std::uint8_t> out) {
  return static_cast<int>(JoinPairsOf<HexValue>(text, 0, out));
}

// Whether writing to `out` overtakes the reading of `text`: in place it does not.
bool BeginsWithin(std::span<const std::uint8_t> out, Bytes text) {
  const std::less<> before;
  return before(text.data(), out.data()) && before(out.data(), text.data() + text.size());
}

std::size_t HalfRoundedUp(std::span<const char> text) {
  return (text.size() + 1) / 2;
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

using gwq::AsBytes;
using gwq::BytesOf;

int GetHexString(const unsigned char* in, int inLen, char* out, int outCap) {
  return gwq::BytesToHex(BytesOf(in, inLen), out, outCap);
}

int AsciiToHexStr(char* in, int inLen, char* out, int outCap) {
  return gwq::BytesToHex(AsBytes(BytesOf<const char>(in, inLen)), out, outCap);
}

int AsciiToHexStr(const char* in, int inLen, char* out, int outCap) {
  if (out == nullptr) return 0;
  const gwq::Bytes converted = gwq::FittingPairs(AsBytes(BytesOf(in, inLen)), outCap);
  char* const end = gwq::SplitInPairs<gwq::LowerHexDigit>(converted, out);
  if (end != out) *end = '\0';
  return gwq::WrittenPairs(converted);
}

int GetHexStr(const unsigned char* in, int inLen, char* out, int outCap) {
  if (out == nullptr) return 0;
  const gwq::Bytes converted = gwq::FittingPairs(BytesOf(in, inLen), outCap);
  gwq::SplitInPairs<gwq::SplitDigit>(converted, out);
  return gwq::WrittenPairs(converted);
}

int HexAsc1Split(const unsigned char* in, int inLen, char* out, int outCap) {
  if (!gwq::SplitFits(in, inLen, out, outCap)) return 0;
  return GetHexStr(in, inLen, out, outCap);
}

int SplitChar(const unsigned char* in, int inLen, char* out, int outCap) {
  return HexAsc1Split(in, inLen, out, outCap);
}

int GetAsciStr(const char* in, int inLen, unsigned char* out, int outCap) {
  const gwq::Bytes text = AsBytes(BytesOf(in, inLen));
  return static_cast<int>(gwq::JoinPairsOf<gwq::SplitValue>(text, 0, BytesOf(out, outCap)));
}

int HexAsc1Merge(const char* in, int inLen, unsigned char* out, int outCap) {
  if (!gwq::JoinFits(in, inLen, out, outCap)) return 0;
  return GetAsciStr(in, inLen, out, outCap);
}

int Merge(const char* in, int inLen, unsigned char* out, int outCap) {
  if (!gwq::JoinFits(in, inLen, out, outCap)) return 0;
  return static_cast<int>(gwq::MergePairs(AsBytes(BytesOf(in, inLen)), BytesOf(out, outCap)));
}

int HexStrToAscii(const char* in, int inLen, unsigned char* out, int outCap) {
  const gwq::Bytes text = AsBytes(BytesOf(in, inLen));
  const std::span<std::uint8_t> room = BytesOf(out, outCap);
  if (!gwq::BeginsWithin(room, text)) return gwq::HexToBytes(text, room);
  gwq::SecretHeap<std::uint8_t> copy(text.size());
  if (!copy) return 0;
  std::copy(text.begin(), text.end(), copy.data());
  return gwq::HexToBytes({copy.data(), copy.size()}, room);
}

int GetAsciString(const char* in, int inLen, unsigned char* out, int outCap) {
  return HexStrToAscii(in, inLen, out, outCap);
}

int HexToBCD(const char* in, int inLen, char* out, int outCap) {
  gwq::SecretHeap<unsigned char> bytes(gwq::HalfRoundedUp(BytesOf(in, inLen)));
  if (!bytes) return 0;
  const int count = GetAsciStr(in, inLen, bytes.data(), static_cast<int>(bytes.size()));
  return GetHexString(bytes.data(), count, out, outCap);
}

int BCDToHex(const char* in, int inLen, char* out, int outCap) {
  gwq::SecretHeap<unsigned char> bytes(gwq::HalfRoundedUp(BytesOf(in, inLen)));
  if (!bytes) return 0;
  const int count = GetAsciString(in, inLen, bytes.data(), static_cast<int>(bytes.size()));
  return GetHexStr(bytes.data(), count, out, outCap);
}

int HexToAscii(const unsigned char* in, int len, char* out) {
  if (out == nullptr) return 0;
  const gwq::Bytes bytes = BytesOf(in, len);
  *gwq::SplitInPairs<gwq::UpperHexDigit>(bytes, out) = '\0';
  return gwq::WrittenPairs(bytes);
}

int AsciiToHex(const char* in, int len, unsigned char* out) {
  if (out == nullptr) return 0;
  return gwq::JoinCheckedPairs(AsBytes(BytesOf(in, len)), out);
}

unsigned char GetXorValue(unsigned char seed, const unsigned char* data, int len) {
  return gwq::XorFold(BytesOf(data, len), seed);
}

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
