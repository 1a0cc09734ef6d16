// SPDX-License-Identifier: MIT
// A fuzzer's input, taken apart from its beginning; behind its end stand zeros.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace gwq::fuzz {

class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : rest_(data, size) {}
  explicit Input(std::span<const std::uint8_t> bytes) : rest_(bytes) {}

  [[nodiscard]] bool Empty() const { return rest_.empty(); }
  [[nodiscard]] std::size_t Left() const { return rest_.size(); }

  std::span<const std::uint8_t> Take(std::size_t count) {
    const auto taken = rest_.first(std::min(count, rest_.size()));
    rest_ = rest_.subspan(taken.size());
    return taken;
  }
  std::span<const std::uint8_t> Rest() { return Take(rest_.size()); }

  std::uint8_t Byte() { return static_cast<std::uint8_t>(Number(1)); }
  unsigned Short() { return static_cast<unsigned>(Number(2)); }

  // The numbers at which things change, or any other.
  int Int() {
    static constexpr int kEdges[] = {0,         1,    2,    3,    4,    5,     6,     7,      8,
                                     14,        15,   16,   20,   100,  128,   255,   256,    511,
                                     998,       999,  1000, 1023, 1024, 1025,  2048,  4096,   -1,
                                     -100,      2047, 2049, 9600, 4095, 32767, 65535, 115200, -2147483647 - 1,
                                     2147483647};
    const std::uint8_t choice = Byte();
    return choice < std::size(kEdges) ? kEdges[choice]
           : choice < 128             ? choice - 64
                                      : static_cast<int>(Number(4));
  }

  // Texts of any kind but with a zero byte in them: short ones, long ones, paths of files that exist or not.
  std::string Text() {
    static constexpr const char* kPaths[] = {"/docs/a.pdf",
                                             "/docs/b.jpg",
                                             "/docs/c.htm",
                                             "/docs/update.dat",
                                             "/docs/none.pdf",
                                             "/docs/empty.dat",
                                             "a.pdf",
                                             "/docs",
                                             "/tmp/x",
                                             "|",
                                             "/docs/a.pdf|/docs/b.jpg",
                                             "\xE4\xB8\xAD\xE6\x96\x87|/docs/\xE4\xB8\xAD.pdf"};
    const std::uint8_t choice = Byte();
    if (choice < 16) return kPaths[choice % std::size(kPaths)];
    if (choice < 24) return Repeated(Short() * (choice == 23 ? 8U : 1U), Take(1 + Byte() % 8));
    if (choice < 32) return Joined(1 + Byte() % 40);
    const auto bytes = Take(choice - 32U);
    return WithoutZeros({bytes.begin(), bytes.end()});
  }

 private:
  std::uint64_t Number(std::size_t size) {
    std::uint64_t value = 0;
    unsigned shift = 0;
    for (const std::uint8_t byte : Take(size)) {
      value |= std::uint64_t{byte} << shift;
      shift += 8;
    }
    return value;
  }

  static std::string WithoutZeros(std::string text) {
    std::replace(text.begin(), text.end(), '\0', '0');
    return text;
  }

  static std::string Repeated(std::size_t length, std::span<const std::uint8_t> pattern) {
    std::string text(length, 'x');
    for (std::size_t i = 0; i < length && !pattern.empty(); ++i)
      text[i] = static_cast<char>(pattern[i % pattern.size()]);
    return WithoutZeros(text);
  }

  static std::string Joined(int count) {
    std::string text;
    for (int i = 0; i < count; ++i) text += i % 3 == 0 ? "/docs/a.pdf|" : "/docs/b.jpg|";
    return text;
  }

  std::span<const std::uint8_t> rest_;
};

}  // namespace gwq::fuzz
