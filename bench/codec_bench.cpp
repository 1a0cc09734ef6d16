// SPDX-License-Identifier: MIT
// The codecs against plain loops, against other libraries, and against copying or reading the same memory.
#include <glib.h>
#include <iconv.h>
#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <sodium.h>

#include <boost/algorithm/hex.hpp>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

#include <gwq/codec/encodings.h>
#include <gwq/codec/packet.h>
#include <gwq/codec/text_forms.h>
#include "naive.h"
#include "side.h"

namespace gwq::bench {
namespace {

constexpr std::size_t kSizes[] = {16, 32, 100, 300, 65536, 1048576};

// What every side of one size works on; made once, kept to the end.
struct Material {
  explicit Material(std::size_t size)
      : text_size(static_cast<int>(size)),
        bytes_size(text_size / 2),
        triples_size(text_size / 4 * 3),
        bytes(size),
        split(size + 1),
        hex(size + 1),
        base64(size + 4),
        text_out(size + 4),
        bytes_out(size + 4) {
    std::mt19937 random(1);
    for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(random());
    GetHexStr(bytes.data(), bytes_size, split.data(), text_size);
    HexToAscii(bytes.data(), bytes_size, hex.data());
    EncryptBase64(bytes.data(), triples_size, base64.data(), text_size);
  }

  int text_size;
  int bytes_size;
  int triples_size;
  std::vector<unsigned char> bytes;
  std::vector<char> split;
  std::vector<char> hex;
  std::vector<char> base64;
  std::vector<char> text_out;
  std::vector<unsigned char> bytes_out;
};

Material& Kept(std::size_t size) {
  return *new Material(size);
}

std::size_t Size(int size) {
  return static_cast<std::size_t>(size);
}

void SplitEncode(std::size_t size) {
  Material& m = Kept(size);
  Side("split encode", size, "gwq",
       [&] { GetHexStr(m.bytes.data(), m.bytes_size, m.text_out.data(), m.text_size); });
  Side("split encode", size, "loop",
       [&] { NaiveSplit(m.bytes.data(), Size(m.bytes_size), m.text_out.data()); });
  Side("split encode", size, "memcpy", [&, size] { std::memcpy(m.text_out.data(), m.split.data(), size); });
}

void SplitDecode(std::size_t size) {
  Material& m = Kept(size);
  Side("split decode", size, "gwq",
       [&] { GetAsciStr(m.split.data(), m.text_size, m.bytes_out.data(), m.bytes_size); });
  Side("split decode", size, "loop", [&, size] { NaiveJoin(m.split.data(), size, m.bytes_out.data()); });
  Side("split decode", size, "memcpy", [&, size] { std::memcpy(m.text_out.data(), m.split.data(), size); });
}

void HexEncode(std::size_t size) {
  Material& m = Kept(size);
  Side("hex encode", size, "gwq",
       [&] { GetHexString(m.bytes.data(), m.bytes_size, m.text_out.data(), m.text_size); });
  Side("hex encode", size, "loop",
       [&] { NaiveHexEncode(m.bytes.data(), Size(m.bytes_size), m.text_out.data()); });
  Side("hex encode", size, "Boost",
       [&] { boost::algorithm::hex(m.bytes.data(), m.bytes.data() + m.bytes_size, m.text_out.data()); });
  Side("hex encode", size, "OpenSSL", [&] {
    std::size_t written = 0;
    OPENSSL_buf2hexstr_ex(m.text_out.data(), m.text_out.size(), &written, m.bytes.data(), Size(m.bytes_size),
                          '\0');
  });
  Side("hex encode", size, "libsodium",
       [&] { sodium_bin2hex(m.text_out.data(), m.text_out.size(), m.bytes.data(), Size(m.bytes_size)); });
}

void HexDecode(std::size_t size) {
  Material& m = Kept(size);
  Side("hex decode", size, "gwq",
       [&] { HexStrToAscii(m.hex.data(), m.text_size, m.bytes_out.data(), m.bytes_size); });
  Side("hex decode checked", size, "gwq", [&] { AsciiToHex(m.hex.data(), m.text_size, m.bytes_out.data()); });
  for (const char* work : {"hex decode", "hex decode checked"}) {
    Side(work, size, "loop", [&, size] { NaiveHexDecode(m.hex.data(), size, m.bytes_out.data()); });
    Side(work, size, "Boost",
         [&, size] { boost::algorithm::unhex(m.hex.data(), m.hex.data() + size, m.bytes_out.data()); });
    Side(work, size, "OpenSSL", [&] {
      std::size_t written = 0;
      OPENSSL_hexstr2buf_ex(m.bytes_out.data(), m.bytes_out.size(), &written, m.hex.data(), '\0');
    });
    Side(work, size, "libsodium", [&, size] {
      std::size_t written = 0;
      sodium_hex2bin(m.bytes_out.data(), m.bytes_out.size(), m.hex.data(), size, nullptr, &written, nullptr);
    });
  }
}

void Base64Encode(std::size_t size) {
  Material& m = Kept(size);
  Side("Base64 encode", size, "gwq",
       [&] { EncryptBase64(m.bytes.data(), m.triples_size, m.text_out.data(), m.text_size); });
  Side("Base64 encode", size, "loop",
       [&] { NaiveBase64Encode(m.bytes.data(), Size(m.triples_size), m.text_out.data()); });
  Side("Base64 encode", size, "OpenSSL", [&] {
    EVP_EncodeBlock(reinterpret_cast<unsigned char*>(m.text_out.data()), m.bytes.data(), m.triples_size);
  });
  Side("Base64 encode", size, "libsodium", [&] {
    sodium_bin2base64(m.text_out.data(), m.text_out.size(), m.bytes.data(), Size(m.triples_size),
                      sodium_base64_VARIANT_ORIGINAL);
  });
  Side("Base64 encode", size, "GLib", [&] {
    gint state = 0;
    gint save = 0;
    g_base64_encode_step(m.bytes.data(), Size(m.triples_size), FALSE, m.text_out.data(), &state, &save);
  });
}

void Base64Decode(std::size_t size) {
  Material& m = Kept(size);
  Side("Base64 decode", size, "gwq",
       [&] { DecryptBase64(m.base64.data(), m.text_size, m.bytes_out.data(), m.triples_size); });
  Side("Base64 decode", size, "loop",
       [&, size] { NaiveBase64Decode(m.base64.data(), size, m.bytes_out.data()); });
  Side("Base64 decode", size, "OpenSSL", [&] {
    EVP_DecodeBlock(m.bytes_out.data(), reinterpret_cast<unsigned char*>(m.base64.data()), m.text_size);
  });
  Side("Base64 decode", size, "libsodium", [&, size] {
    std::size_t written = 0;
    sodium_base642bin(m.bytes_out.data(), m.bytes_out.size(), m.base64.data(), size, nullptr, &written,
                      nullptr, sodium_base64_VARIANT_ORIGINAL);
  });
  Side("Base64 decode", size, "GLib", [&, size] {
    gint state = 0;
    guint save = 0;
    g_base64_decode_step(m.base64.data(), size, m.bytes_out.data(), &state, &save);
  });
}

void Lrc(std::size_t size) {
  Material& m = Kept(size);
  Side("LRC", size, "gwq", [&] { benchmark::DoNotOptimize(GetDataLRC(m.bytes.data(), m.text_size)); });
  Side("LRC", size, "loop", [&, size] { benchmark::DoNotOptimize(NaiveXor(m.bytes.data(), size)); });
  Side("LRC", size, "memory read", [&, size] { ReadMemory(m.bytes.data(), size); });
}

// GBK text of this many bytes, zero-terminated.
std::vector<char> ChineseText(std::size_t size) {
  std::mt19937 random(2);
  std::vector<char> text(size + 1);
  for (std::size_t i = 0; i + 1 < size; i += 2) {
    text[i] = static_cast<char>(0xB0 + random() % 0x27);
    text[i + 1] = static_cast<char>(0xA1 + random() % 0x5E);
  }
  return text;
}

std::vector<char> AsciiText(std::size_t size) {
  std::vector<char> text(size, 'a');
  text.push_back('\0');
  return text;
}

// Chinese with a word or number of ASCII here and there, as on the terminal's screens.
std::vector<char> MixedText(std::size_t size) {
  std::vector<char> text = ChineseText(size);
  for (std::size_t i = 0; i + 28 <= size; i += 28) std::memcpy(&text[i], "100.00", 6);
  return text;
}

void GbkToUcs2(const char* work, std::size_t size, std::vector<char> content) {
  auto& text = *new std::vector<char>(std::move(content));
  auto& out = *new std::vector<unsigned short>(size + 1);
  const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
  Side(work, size, "gwq", [&, bytes, size] { GbkToUnicode(bytes, out.data(), static_cast<int>(size)); });
  Side(work, size, "iconv", [&, size, conversion = iconv_open("UCS-2LE", "GBK")] {
    char* from = text.data();
    char* to = reinterpret_cast<char*>(out.data());
    std::size_t from_left = size;
    std::size_t to_left = 2 * out.size();
    if (iconv(conversion, &from, &from_left, &to, &to_left) != 0) std::exit(1);
  });
}

const bool kRegistered = [] {
  for (const std::size_t size : kSizes) {
    SplitEncode(size);
    SplitDecode(size);
    HexEncode(size);
    HexDecode(size);
    Base64Encode(size);
    Base64Decode(size);
    Lrc(size);
    GbkToUcs2("GBK to UCS-2, Chinese", size, ChineseText(size));
    GbkToUcs2("GBK to UCS-2, ASCII", size, AsciiText(size));
    GbkToUcs2("GBK to UCS-2, mixed", size, MixedText(size));
  }
  return true;
}();

}  // namespace
}  // namespace gwq::bench
