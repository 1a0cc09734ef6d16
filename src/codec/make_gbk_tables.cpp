// SPDX-License-Identifier: MIT
// Writes the two character tables as C++ initialisers, from the mapping of iconv. Runs on the build
// machine, also when cross-compiling.
//
//   make_gbk_tables DIRECTORY     writes unicode_tables.inc and gbk_tables.inc there
#include <iconv.h>

#include <cstddef>
#include <cstdio>
#include <exception>
#include <map>
#include <stdexcept>
#include <string>

namespace {

constexpr unsigned kFirstGbk = 0x8140;
constexpr unsigned kLastGbk = 0xFE9F;
constexpr unsigned kFirstIdeograph = 0x4E00;
constexpr unsigned kLastIdeograph = 0x9FA5;

class Mapping {
 public:
  explicit Mapping(const char* name) : handle_(iconv_open("UCS-2LE", name)) {
    // NOLINTNEXTLINE(performance-no-int-to-ptr): iconv's error value
    if (handle_ == reinterpret_cast<iconv_t>(-1))
      throw std::runtime_error(std::string("iconv knows no ") + name);
  }
  ~Mapping() { iconv_close(handle_); }
  Mapping(const Mapping&) = delete;
  Mapping& operator=(const Mapping&) = delete;

  // The code point of a pair; 0 if the pair is not exactly one character.
  [[nodiscard]] unsigned CodePointOf(unsigned gbk) const {
    char pair[] = {static_cast<char>(gbk >> 8U), static_cast<char>(gbk & 0xFFU)};
    unsigned char code[8] = {};
    char* in = pair;
    char* out = reinterpret_cast<char*>(code);
    std::size_t in_left = sizeof pair;
    std::size_t out_left = sizeof code;
    iconv(handle_, nullptr, nullptr, nullptr, nullptr);
    const bool whole = iconv(handle_, &in, &in_left, &out, &out_left) != static_cast<std::size_t>(-1) &&
                       in_left == 0 && out_left == sizeof code - 2;
    return whole ? static_cast<unsigned>(code[0] + 256 * code[1]) : 0;
  }

 private:
  iconv_t handle_;
};

void Write(const std::string& path, unsigned first, unsigned last,
           const std::map<unsigned, unsigned>& table) {
  std::FILE* file = std::fopen(path.c_str(), "w");
  if (file == nullptr) throw std::runtime_error("cannot write " + path);
  for (unsigned i = first; i <= last; ++i) {
    const auto entry = table.find(i);
    std::fprintf(file, "0x%04X,%c", entry == table.end() ? 0U : entry->second,
                 (i - first) % 16 == 15 ? '\n' : ' ');
  }
  if (std::fclose(file) != 0) throw std::runtime_error("cannot write " + path);
}

void WriteTables(const std::string& directory) {
  // GBK takes precedence; GB 18030 adds the two-byte characters that were assigned later.
  const Mapping gbk("GBK");
  const Mapping gb18030("GB18030");
  std::map<unsigned, unsigned> to_unicode;
  std::map<unsigned, unsigned> to_gbk;
  for (unsigned code = kFirstGbk; code <= kLastGbk; ++code) {
    unsigned point = gbk.CodePointOf(code);
    if (point != 0) to_gbk.try_emplace(point, code);
    if (point == 0) point = gb18030.CodePointOf(code);
    if (point != 0) to_unicode[code] = point;
  }
  Write(directory + "/unicode_tables.inc", kFirstGbk, kLastGbk, to_unicode);
  Write(directory + "/gbk_tables.inc", kFirstIdeograph, kLastIdeograph, to_gbk);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  try {
    WriteTables(argv[1]);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "make_gbk_tables: %s\n", error.what());
    return 1;
  }
}
