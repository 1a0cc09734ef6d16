// SPDX-License-Identifier: MIT
// Texts in other encodings, as the platform's iconv has them.
#pragma once

#include <iconv.h>

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace gwq::test {

class Iconv {
 public:
  Iconv(const char* from, const char* to) : handle_(iconv_open(to, from)) {
    // NOLINTNEXTLINE(performance-no-int-to-ptr): iconv's own mark of failure
    if (handle_ == reinterpret_cast<iconv_t>(-1)) throw std::runtime_error("iconv knows no such encoding");
  }
  ~Iconv() { iconv_close(handle_); }
  Iconv(const Iconv&) = delete;
  Iconv& operator=(const Iconv&) = delete;

  // Nothing when the text is not valid, not whole, or has no counterpart.
  [[nodiscard]] std::optional<std::string> operator()(std::string text) const {
    iconv(handle_, nullptr, nullptr, nullptr, nullptr);
    std::string result(4 * text.size() + 16, '\0');
    char* in = text.data();
    char* out = result.data();
    std::size_t in_left = text.size();
    std::size_t out_left = result.size();
    if (iconv(handle_, &in, &in_left, &out, &out_left) != 0 || in_left != 0) return std::nullopt;
    result.resize(result.size() - out_left);
    return result;
  }

 private:
  iconv_t handle_;
};

// A text of a source file, which is UTF-8, as the log and the terminal have it.
inline std::string InGbk(std::string_view utf8) {
  return Iconv("UTF-8", "GBK")(std::string(utf8)).value();
}

}  // namespace gwq::test
