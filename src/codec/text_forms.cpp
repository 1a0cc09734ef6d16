#include "codec/text_forms.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "codec/secret.h"
#include "codec/split_form.h"

namespace gwq {
namespace {

constexpr char kUpperDigits[] = "0123456789ABCDEF";
constexpr char kLowerDigits[] = "0123456789abcdef";

using Bytes = std::span<const std::uint8_t>;

void HexBytes(Bytes in, const char* digits, char* out) {
  for (const std::uint8_t byte : in) {
    *out++ = digits[byte >> 4U];
    *out++ = digits[byte & 0x0FU];
  }
}

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

std::uint8_t ToUpper(std::uint8_t c) {
  return c >= 'a' && c <= 'z' ? static_cast<std::uint8_t>(c - 0x20) : c;
}

// Arithmetic on any character, digit or not; wraps around at 8 bits.
std::uint8_t HexPair(std::uint8_t c0, std::uint8_t c1) {
  const unsigned high = static_cast<unsigned>(c0 < 'A' ? c0 : c0 + 9) & 0x0FU;
  const unsigned low = static_cast<unsigned>(c1 < 'A' ? c1 - 0x30 : c1 - 0x37);
  return static_cast<std::uint8_t>(high * 16 + low);
}

int HexToBytes(Bytes in, std::span<std::uint8_t> out) {
  std::size_t o = 0;
  for (std::size_t i = 0; i < in.size() && o < out.size(); i += 2) {
    const std::uint8_t second = i + 1 < in.size() ? ToUpper(in[i + 1]) : std::uint8_t{0};
    out[o++] = HexPair(ToUpper(in[i]), second);
  }
  return static_cast<int>(o);
}

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

int BytesToHex(Bytes in, char* out, int out_capacity) {
  const Bytes converted = out == nullptr ? Bytes{} : FittingPairs(in, out_capacity);
  HexBytes(converted, kUpperDigits, out);
  return WrittenPairs(converted);
}

std::size_t HalfRoundedUp(std::span<const char> text) {
  return (text.size() + 1) / 2;
}

}  // namespace

void SplitBytes(std::span<const std::uint8_t> in, char* out) {
  for (const std::uint8_t byte : in) {
    *out++ = static_cast<char>((byte >> 4U) + 0x30);
    *out++ = static_cast<char>((byte & 0x0FU) + 0x30);
  }
}

std::size_t JoinPairs(std::span<const std::uint8_t> in, std::uint8_t following, std::span<std::uint8_t> out) {
  std::size_t o = 0;
  for (std::size_t i = 0; i < in.size() && o < out.size(); i += 2) {
    const unsigned second = i + 1 < in.size() ? in[i + 1] : following;
    out[o++] = static_cast<std::uint8_t>((in[i] & 0x0FU) * 16 + second - 0x30);
  }
  return o;
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
  gwq::HexBytes(converted, gwq::kLowerDigits, out);
  if (!converted.empty()) out[2 * converted.size()] = '\0';
  return gwq::WrittenPairs(converted);
}

int GetHexStr(const unsigned char* in, int inLen, char* out, int outCap) {
  if (out == nullptr) return 0;
  const gwq::Bytes converted = gwq::FittingPairs(BytesOf(in, inLen), outCap);
  gwq::SplitBytes(converted, out);
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
  return static_cast<int>(gwq::JoinPairs(AsBytes(BytesOf(in, inLen)), 0, BytesOf(out, outCap)));
}

int HexAsc1Merge(const char* in, int inLen, unsigned char* out, int outCap) {
  if (!gwq::JoinFits(in, inLen, out, outCap)) return 0;
  return GetAsciStr(in, inLen, out, outCap);
}

int Merge(const char* in, int inLen, unsigned char* out, int outCap) {
  if (!gwq::JoinFits(in, inLen, out, outCap)) return 0;
  const gwq::Bytes text = AsBytes(BytesOf(in, inLen));
  std::size_t o = 0;
  for (std::size_t i = 0; i < text.size(); i += 2) {
    const unsigned second = i + 1 < text.size() ? text[i + 1] : 0U;
    out[o++] = static_cast<unsigned char>((text[i] & 0x0FU) * 16 + (second & 0x0FU));
  }
  return static_cast<int>(o);
}

int HexStrToAscii(const char* in, int inLen, unsigned char* out, int outCap) {
  return gwq::HexToBytes(AsBytes(BytesOf(in, inLen)), BytesOf(out, outCap));
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
  gwq::HexBytes(bytes, gwq::kUpperDigits, out);
  out[2 * bytes.size()] = '\0';
  return gwq::WrittenPairs(bytes);
}

int AsciiToHex(const char* in, int len, unsigned char* out) {
  if (out == nullptr) return 0;
  const std::span<const char> text = BytesOf(in, len);
  int written = 0;
  for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
    const int high = gwq::HexDigit(text[i]);
    const int low = gwq::HexDigit(text[i + 1]);
    if (high < 0 || low < 0) break;
    out[written++] = static_cast<unsigned char>(high * 16 + low);
  }
  return written;
}

unsigned char GetXorValue(unsigned char seed, const unsigned char* data, int len) {
  for (const unsigned char byte : BytesOf(data, len)) seed = static_cast<unsigned char>(seed ^ byte);
  return seed;
}

char* SplitData(const char* src, char* dst, const char* delim) {
  if (src == nullptr) return nullptr;
  const char* found = delim == nullptr ? nullptr : std::strstr(src, delim);
  if (found == nullptr) {
    if (dst != nullptr) std::strcpy(dst, src);
    return const_cast<char*>(src);
  }
  if (dst != nullptr) std::memcpy(dst, src, static_cast<std::size_t>(found - src));
  return const_cast<char*>(found);
}
