// SPDX-License-Identifier: MIT
#include <gwq/codec/encodings.h>

#include <iconv.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <span>

#include "codec/internal/lanes.h"
#include "codec/internal/split_form.h"

namespace gwq {
namespace {

constexpr std::uint8_t kFirstPairByte = 0x81;
constexpr std::size_t kGbkEntries = std::size(unicodeTables);
constexpr std::size_t kUnicodeEntries = std::size(gbkTables);

// An open conversion.
class Conversion {
 public:
  Conversion(const char* from, const char* to) : handle_(iconv_open(to, from)) {}
  ~Conversion() {
    if (*this) iconv_close(handle_);
  }
  Conversion(const Conversion&) = delete;
  Conversion& operator=(const Conversion&) = delete;

  // NOLINTNEXTLINE(performance-no-int-to-ptr): iconv's error value
  explicit operator bool() const { return handle_ != reinterpret_cast<iconv_t>(-1); }

  // Converts all of `in`. `out` is zeroed before the call, so that its rest terminates the text.
  [[nodiscard]] bool Run(std::span<const char> in, std::span<char> out) const {
    char* from = const_cast<char*>(in.data());  // iconv's signature lacks a const
    std::size_t from_left = in.size();
    char none = '\0';  // iconv needs a valid pointer, even for no room
    char* to = out.empty() ? &none : out.data();
    std::size_t to_left = out.size();
    return iconv(handle_, &from, &from_left, &to, &to_left) != static_cast<std::size_t>(-1);
  }

 private:
  iconv_t handle_;
};

struct Converted {
  std::size_t read;
  std::size_t written;
};

// Widens the single-byte characters at the start of `text`.
// Contract: 0x80, which GBK does not assign, is one of them.
Converted WidenSingles(std::span<const unsigned char> text, std::span<unsigned short> room) {
  const std::size_t most = std::min(text.size(), room.size());
  std::size_t i = 0;
  for (; most - i >= kBlockSize; i += kBlockSize) {
    const Block bytes = LoadBlock(&text[i]);
    if (!AllTrue(bytes < kFirstPairByte)) break;
    StoreBlock(InterleaveFirst(bytes, Block{}), &room[i]);
    StoreBlock(InterleaveLast(bytes, Block{}), &room[i + kHalfBlock]);
  }
  for (; i < most && text[i] < kFirstPairByte; ++i) room[i] = text[i];
  return {i, i};
}

// The index of a pair in the table; not below kGbkEntries for a pair that the table lacks.
std::size_t TableIndex(unsigned first, unsigned second) {
  return first * 256 + second - gbk_first_code;
}

// Converts the pairs at the start of `text` that are in the table. Not inlined, so that the loop
// has the registers to itself.
[[gnu::noinline]] Converted ConvertPairs(std::span<const unsigned char> text,
                                         std::span<unsigned short> room) {
  const std::size_t most = std::min(text.size() / 2, room.size());
  std::size_t i = 0;
#pragma GCC unroll 4
  for (; i < most; ++i) {
    const std::size_t index = TableIndex(text[2 * i], text[2 * i + 1]);
    if (index >= kGbkEntries) break;
    room[i] = unicodeTables[index];
  }
  return {2 * i, i};
}

// Contract: a pair that the table lacks is dropped, and so is a first byte without a second one.
Converted ConvertAnyPair(const unsigned char* in, std::span<unsigned short> room) {
  if (in[1] == 0) return {1, 0};
  const std::size_t index = TableIndex(in[0], in[1]);
  if (index >= kGbkEntries) return {2, 0};
  room[0] = unicodeTables[index];
  return {2, 1};
}

Converted ConvertRun(const unsigned char* in, std::span<const unsigned char> known,
                     std::span<unsigned short> room) {
  if (*in < kFirstPairByte) return WidenSingles(known, room);
  const Converted pairs = ConvertPairs(known, room);
  return pairs.read != 0 ? pairs : ConvertAnyPair(in, room);
}

constexpr char kBase64Digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// The two characters of each 12-bit value: three bytes take two look-ups.
constexpr auto kDigitPairs = [] {
  std::array<std::array<char, 2>, 1U << 12U> pairs{};
  for (std::size_t bits = 0; bits < pairs.size(); ++bits) {
    pairs[bits] = {kBase64Digits[bits >> 6U], kBase64Digits[bits & 0x3FU]};
  }
  return pairs;
}();

void EncodeTwelveBits(std::uint64_t bits, char* out) {
  std::memcpy(out, kDigitPairs[bits & 0xFFFU].data(), 2);
}

void EncodeGroup(std::uint32_t bits, char* out) {
  EncodeTwelveBits(bits >> 12U, out);
  EncodeTwelveBits(bits, out + 2);
}

// Encodes two groups per 8-byte load while 8 bytes are left. Returns the bytes encoded.
std::size_t EncodePairsOfGroups(std::span<const std::uint8_t> bytes, char* out) {
  std::size_t done = 0;
#pragma GCC unroll 2
  for (; bytes.size() - done >= sizeof(std::uint64_t); done += 6, out += 8) {
    const std::uint64_t bits = __builtin_bswap64(LoadWord(&bytes[done]));
    EncodeTwelveBits(bits >> 52U, out);
    EncodeTwelveBits(bits >> 40U, out + 2);
    EncodeTwelveBits(bits >> 28U, out + 4);
    EncodeTwelveBits(bits >> 16U, out + 6);
  }
  return done;
}

// Encodes the last group, of one or two bytes, with its padding.
void EncodeRest(std::span<const std::uint8_t> rest, char* out) {
  const std::uint32_t second = rest.size() > 1 ? rest[1] : 0U;
  EncodeGroup(static_cast<std::uint32_t>(rest[0]) << 16U | second << 8U, out);
  out[3] = '=';
  if (rest.size() == 1) out[2] = '=';
}

// What a character contributes to the three bytes of its group, by its place in the group; the
// first byte is the lowest one. "=" and characters outside the alphabet contribute kNoDigit, a bit
// that no digit sets.
constexpr std::uint32_t kNoDigit = 1U << 24U;
constexpr auto kContributions = [] {
  std::array<std::array<std::uint32_t, 256>, 4> places{};
  for (std::size_t place = 0; place < places.size(); ++place) {
    places[place].fill(kNoDigit);
    for (std::uint32_t i = 0; i < 64; ++i) {
      const std::uint32_t bits = i << (18U - 6U * place);
      places[place][static_cast<unsigned char>(kBase64Digits[i])] =
          bits >> 16U | (bits & 0xFF00U) | (bits & 0xFFU) << 16U;
    }
  }
  return places;
}();

std::uint32_t GroupBytes(const unsigned char* group) {
  return kContributions[0][group[0]] | kContributions[1][group[1]] | kContributions[2][group[2]] |
         kContributions[3][group[3]];
}

void StoreGroup(std::uint32_t bytes, unsigned char* out) {
  const auto first_two = static_cast<std::uint16_t>(bytes);
  std::memcpy(out, &first_two, sizeof first_two);
  out[2] = static_cast<unsigned char>(bytes >> 16U);
}

// Decodes the groups at the start of `text` that consist of digits only and fit in `room`. Returns
// their number.
[[gnu::noinline]] std::size_t DecodePlainGroups(std::span<const char> text, std::span<unsigned char> room) {
  const auto* group = reinterpret_cast<const unsigned char*>(text.data());
  unsigned char* out = room.data();
  const std::size_t most = std::min(text.size() / 4, room.size() / 3);
#pragma GCC unroll 4
  for (std::size_t done = 0; done < most; ++done, group += 4, out += 3) {
    const std::uint32_t bytes = GroupBytes(group);
    if (bytes >= kNoDigit) return done;
    StoreGroup(bytes, out);
  }
  return most;
}

// Byte k of a group, from the character at that place and the next one.
// Contract: a character outside the alphabet is not rejected; it contributes the bits of -1.
unsigned char DecodedByte(std::size_t k, char current, char next) {
  const int high = GetIndexFromBase64Table(current) * (4 << (2 * k));
  const int low = GetIndexFromBase64Table(next) >> (4 - 2 * k);
  return static_cast<unsigned char>(high | low);
}

}  // namespace
}  // namespace gwq

using namespace gwq;

int GbkToUnicode(const unsigned char* in, unsigned short* out, int cap) {
  if (in == nullptr || out == nullptr) return -1;
  std::span<unsigned short> room = BytesOf(out, cap);
  std::span<const unsigned char> known;  // contains no terminator, so that it can be read in blocks
  std::size_t count = 0;
  while (!room.empty() && *in != 0) {
    if (known.size() < kBlockSize) known = {in, strnlen(reinterpret_cast<const char*>(in), room.size())};
    const Converted run = ConvertRun(in, known, room);
    known = known.subspan(std::min(run.read, known.size()));
    room = room.subspan(run.written);
    in += run.read;
    count += run.written;
  }
  return static_cast<int>(count);
}

int UnicodeToGbk(const unsigned short* in, unsigned char* out, int cap) {
  if (in == nullptr || out == nullptr) return -1;
  int count = 0;
  for (; *in != 0 && count < cap; ++in) {
    const unsigned c = *in;
    if (c <= 0x7F) {
      // Contract: ASCII is written but not counted, neither in the result nor against `cap`.
      *out++ = static_cast<unsigned char>(c);
      continue;
    }
    // Contract: a character outside the ideograph block, such as punctuation, is dropped.
    const std::size_t index = c - unicode_first_code;
    if (c < unicode_first_code || index >= kUnicodeEntries) continue;
    *out++ = static_cast<unsigned char>(gbkTables[index] >> 8U);
    *out++ = static_cast<unsigned char>(gbkTables[index] & 0xFFU);
    count += 2;
  }
  return count;
}

// Contract: the whole output is zeroed, also if the conversion then fails.
int code_convert(const char* from, const char* to, const char* in, int inLen, char* out, int outSize) {
  if (from == nullptr || to == nullptr) return -1;
  const Conversion conversion(from, to);
  if (!conversion) return -1;
  const std::span<char> room = BytesOf(out, outSize);
  std::fill(room.begin(), room.end(), '\0');
  return conversion.Run(BytesOf(in, inLen), room) ? 0 : -1;
}

int u2g(const char* in, int inLen, char* out, int outSize) {
  return code_convert("utf-8", "GB18030", in, inLen, out, outSize);
}

int g2u(const char* in, int inLen, char* out, int outSize) {
  return code_convert("GB18030", "utf-8", in, inLen, out, outSize);
}

// Contract: a placeholder that does nothing and returns 0.
int ANSIToUTF8(const char* /*in*/, int /*inLen*/, char* /*out*/) {
  return 0;
}

int EncryptBase64(const unsigned char* in, int len, char* out, int cap) {
  std::span<const std::uint8_t> bytes = BytesOf(in, len);
  const std::size_t need = 4 * ((bytes.size() + 2) / 3);
  if (cap < 0 || static_cast<std::size_t>(cap) < need) return -1;
  if (len < 1) return 0;
  if (in == nullptr || out == nullptr) return -1;
  const std::size_t done = EncodePairsOfGroups(bytes, out);
  bytes = bytes.subspan(done);
  out += done / 3 * 4;
  for (; bytes.size() >= 3; bytes = bytes.subspan(3), out += 4) {
    EncodeGroup(static_cast<std::uint32_t>(bytes[0]) << 16U | bytes[1] * 256U | bytes[2], out);
  }
  if (!bytes.empty()) EncodeRest(bytes, out);
  return static_cast<int>(need);
}

int DecryptBase64(const char* in, int len, unsigned char* out, int cap) {
  std::span<const char> text = BytesOf(in, len);
  const std::span<unsigned char> room = BytesOf(out, cap);
  std::size_t count = 0;
  while (true) {
    const std::size_t plain = DecodePlainGroups(text, room.subspan(std::min(count, room.size())));
    count += 3 * plain;
    text = text.subspan(4 * plain);
    // Contract: a trailing group of fewer than four characters is ignored.
    if (text.size() < 4) return static_cast<int>(count);
    // A group with padding or other characters, or one that does not fit.
    for (std::size_t k = 0; k < 3; ++k) {
      if (text[k] == '=' || text[k + 1] == '=') return static_cast<int>(count);
      // Contract: the result may exceed `cap` by one; that byte is counted but not stored.
      if (cap < 0 || count > room.size()) return -1;
      if (count < room.size()) room[count] = DecodedByte(k, text[k], text[k + 1]);
      ++count;
    }
    text = text.subspan(4);
  }
}

// Contract: "=" returns 0, as "A" does.
int GetIndexFromBase64Table(char c) {
  if (c >= 'A' && c <= 'Z') return c - 'A';
  if (c >= 'a' && c <= 'z') return c - 'a' + 26;
  if (c >= '0' && c <= '9') return c - '0' + 52;
  if (c == '+') return 62;
  if (c == '/') return 63;
  return c == '=' ? 0 : -1;
}
