// SPDX-License-Identifier: MIT
#include "naive.h"

#include <cstdint>
#include <cstring>

namespace gwq::bench {
namespace {

constexpr char kBase64[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

int HexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return c - 'a' + 10;
}

unsigned Base64Value(char c) {
  if (c >= 'A' && c <= 'Z') return static_cast<unsigned>(c - 'A');
  if (c >= 'a' && c <= 'z') return static_cast<unsigned>(c - 'a' + 26);
  if (c >= '0' && c <= '9') return static_cast<unsigned>(c - '0' + 52);
  return c == '+' ? 62 : 63;
}

}  // namespace

void NaiveSplit(const unsigned char* in, std::size_t count, char* out) {
  for (std::size_t i = 0; i < count; ++i) {
    out[2 * i] = static_cast<char>((in[i] >> 4) + 0x30);
    out[2 * i + 1] = static_cast<char>((in[i] & 0x0F) + 0x30);
  }
}

void NaiveJoin(const char* in, std::size_t count, unsigned char* out) {
  for (std::size_t i = 0; i + 1 < count; i += 2) {
    out[i / 2] = static_cast<unsigned char>((in[i] & 0x0F) * 16 + in[i + 1] - 0x30);
  }
}

void NaiveHexEncode(const unsigned char* in, std::size_t count, char* out) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  for (std::size_t i = 0; i < count; ++i) {
    out[2 * i] = kDigits[in[i] >> 4];
    out[2 * i + 1] = kDigits[in[i] & 0x0F];
  }
}

void NaiveHexDecode(const char* in, std::size_t count, unsigned char* out) {
  for (std::size_t i = 0; i + 1 < count; i += 2) {
    out[i / 2] = static_cast<unsigned char>(HexValue(in[i]) * 16 + HexValue(in[i + 1]));
  }
}

void NaiveBase64Encode(const unsigned char* in, std::size_t count, char* out) {
  for (std::size_t i = 0; i + 2 < count; i += 3) {
    *out++ = kBase64[in[i] >> 2];
    *out++ = kBase64[(in[i] & 3) << 4 | in[i + 1] >> 4];
    *out++ = kBase64[(in[i + 1] & 15) << 2 | in[i + 2] >> 6];
    *out++ = kBase64[in[i + 2] & 63];
  }
}

void NaiveBase64Decode(const char* in, std::size_t count, unsigned char* out) {
  for (std::size_t i = 0; i + 3 < count; i += 4) {
    const unsigned bits = Base64Value(in[i]) << 18 | Base64Value(in[i + 1]) << 12 |
                          Base64Value(in[i + 2]) << 6 | Base64Value(in[i + 3]);
    *out++ = static_cast<unsigned char>(bits >> 16);
    *out++ = static_cast<unsigned char>(bits >> 8);
    *out++ = static_cast<unsigned char>(bits);
  }
}

unsigned char NaiveXor(const unsigned char* in, std::size_t count) {
  unsigned char folded = 0;
  for (std::size_t i = 0; i < count; ++i) folded = static_cast<unsigned char>(folded ^ in[i]);
  return folded;
}

void ReadMemory(const unsigned char* in, std::size_t count) {
  using Block = std::uint64_t __attribute__((vector_size(16)));
  for (std::size_t i = 0; i + 64 <= count; i += 64) {
    Block blocks[4];
    std::memcpy(&blocks, in + i, sizeof blocks);
#if defined(__x86_64__)
    asm volatile("" ::"x"(blocks[0]), "x"(blocks[1]), "x"(blocks[2]), "x"(blocks[3]));
#else
    asm volatile("" ::"w"(blocks[0]), "w"(blocks[1]), "w"(blocks[2]), "w"(blocks[3]));
#endif
  }
}

}  // namespace gwq::bench
