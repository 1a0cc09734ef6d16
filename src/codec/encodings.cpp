#include "codec/encodings.h"

#include <iconv.h>

#include <algorithm>
#include <cstring>
#include <span>

#include "codec/split_form.h"

namespace gwq {
namespace {

constexpr unsigned kFirstPairByte = 0x81;
constexpr std::size_t kGbkEntries = std::size(unicodeTables);
constexpr std::size_t kUnicodeEntries = std::size(gbkTables);

// An open conversion; closed on every path.
class Conversion {
 public:
  Conversion(const char* from, const char* to) : handle_(iconv_open(to, from)) {}
  ~Conversion() {
    if (*this) iconv_close(handle_);
  }
  Conversion(const Conversion&) = delete;
  Conversion& operator=(const Conversion&) = delete;

  // NOLINTNEXTLINE(performance-no-int-to-ptr): iconv's own mark of failure
  explicit operator bool() const { return handle_ != reinterpret_cast<iconv_t>(-1); }

  // Converts all of `in`; the zeros that are left of `out` end the text.
  [[nodiscard]] bool Run(std::span<const char> in, std::span<char> out) const {
    char* from = const_cast<char*>(in.data());  // iconv's signature; it does not write there
    std::size_t from_left = in.size();
    char none = '\0';  // iconv insists on a place, even without room
    char* to = out.empty() ? &none : out.data();
    std::size_t to_left = out.size();
    return iconv(handle_, &from, &from_left, &to, &to_left) != static_cast<std::size_t>(-1);
  }

 private:
  iconv_t handle_;
};

constexpr char kBase64Digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

void EncodeGroup(std::uint32_t bits, char* out) {
  for (unsigned i = 0; i < 4; ++i) out[i] = kBase64Digits[(bits >> (18U - 6U * i)) & 0x3FU];
}

// The last group of one or two bytes, padded.
void EncodeRest(std::span<const std::uint8_t> rest, char* out) {
  const std::uint32_t second = rest.size() > 1 ? rest[1] : 0U;
  EncodeGroup(static_cast<std::uint32_t>(rest[0]) << 16U | second << 8U, out);
  out[3] = '=';
  if (rest.size() == 1) out[2] = '=';
}

// The byte at place k of a group, from the character at that place and the next one.
unsigned char DecodedByte(std::size_t k, char current, char next) {
  const int high = GetIndexFromBase64Table(current) * (4 << (2 * k));
  const int low = GetIndexFromBase64Table(next) >> (4 - 2 * k);
  return static_cast<unsigned char>(high | low);
}

}  // namespace
}  // namespace gwq

int GbkToUnicode(const unsigned char* in, unsigned short* out, int cap) {
  if (in == nullptr || out == nullptr) return -1;
  int count = 0;
  while (count < cap && *in != 0) {
    const unsigned first = *in++;
    if (first < gwq::kFirstPairByte) {
      out[count++] = static_cast<unsigned short>(first);
      continue;
    }
    if (*in == 0) break;
    const unsigned code = first * 256 + *in++;
    if (code < gbk_first_code || code > gbk_last_code) continue;
    const std::size_t index = code - gbk_first_code;
    if (index < gwq::kGbkEntries) out[count++] = unicodeTables[index];
  }
  return count;
}

int UnicodeToGbk(const unsigned short* in, unsigned char* out, int cap) {
  if (in == nullptr || out == nullptr) return -1;
  int count = 0;
  for (; *in != 0 && count < cap; ++in) {
    const unsigned c = *in;
    if (c <= 0x7F) {
      *out++ = static_cast<unsigned char>(c);  // not counted, as designed
      continue;
    }
    const std::size_t index = c - unicode_first_code;  // huge for what lies before the table
    if (c < unicode_first_code || index >= gwq::kUnicodeEntries) continue;
    *out++ = static_cast<unsigned char>(gbkTables[index] >> 8U);
    *out++ = static_cast<unsigned char>(gbkTables[index] & 0xFFU);
    count += 2;
  }
  return count;
}

int code_convert(const char* from, const char* to, const char* in, int inLen, char* out, int outSize) {
  if (from == nullptr || to == nullptr) return -1;
  const gwq::Conversion conversion(from, to);
  if (!conversion) return -1;
  const std::span<char> room = gwq::BytesOf(out, outSize);
  std::fill(room.begin(), room.end(), '\0');
  return conversion.Run(gwq::BytesOf(in, inLen), room) ? 0 : -1;
}

int u2g(const char* in, int inLen, char* out, int outSize) {
  return code_convert("utf-8", "GB18030", in, inLen, out, outSize);
}

int g2u(const char* in, int inLen, char* out, int outSize) {
  return code_convert("GB18030", "utf-8", in, inLen, out, outSize);
}

int ANSIToUTF8(const char* /*in*/, int /*inLen*/, char* /*out*/) {
  return 0;
}

int EncryptBase64(const unsigned char* in, int len, char* out, int cap) {
  std::span<const std::uint8_t> bytes = gwq::BytesOf(in, len);
  const std::size_t need = 4 * ((bytes.size() + 2) / 3);
  if (in == nullptr || out == nullptr || cap < 0 || static_cast<std::size_t>(cap) < need) return -1;
  for (; bytes.size() >= 3; bytes = bytes.subspan(3), out += 4) {
    gwq::EncodeGroup(static_cast<std::uint32_t>(bytes[0]) << 16U | bytes[1] * 256U | bytes[2], out);
  }
  if (!bytes.empty()) gwq::EncodeRest(bytes, out);
  return static_cast<int>(need);
}

int DecryptBase64(const char* in, int len, unsigned char* out, int cap) {
  std::span<const char> text = gwq::BytesOf(in, len);
  const std::span<unsigned char> room = gwq::BytesOf(out, cap);
  std::size_t count = 0;
  for (; text.size() >= 4; text = text.subspan(4)) {
    for (std::size_t k = 0; k < 3; ++k) {
      if (text[k] == '=' || text[k + 1] == '=') return static_cast<int>(count);
      // The count may pass the capacity by one before it is refused; that byte is not stored.
      if (cap < 0 || count > room.size()) return -1;
      if (count < room.size()) room[count] = gwq::DecodedByte(k, text[k], text[k + 1]);
      ++count;
    }
  }
  return static_cast<int>(count);
}

int GetIndexFromBase64Table(char c) {
  if (c >= 'A' && c <= 'Z') return c - 'A';
  if (c >= 'a' && c <= 'z') return c - 'a' + 26;
  if (c >= '0' && c <= '9') return c - '0' + 52;
  if (c == '+') return 62;
  if (c == '/') return 63;
  return c == '=' ? 0 : -1;
}
