// SPDX-License-Identifier: MIT
#include "hostile/caller.h"

#include <algorithm>
#include <climits>
#include <utility>

#include "support/temp_dir.h"

namespace gwq::test {
namespace {

// The library looks at the clock in whole seconds and between transfers of 200 ms.
constexpr std::int64_t kSecondAndTransferMs = 1200;

}  // namespace

Limit operator+(Limit a, Limit b) {
  return {a.ms + b.ms, a.ms_per_report + b.ms_per_report};
}

Limit Exchange(std::int64_t timeout_ms) {
  return {.ms = std::max<std::int64_t>(timeout_ms, 0) / 1000 * 1000 + kSecondAndTransferMs};
}

Limit Pause(std::int64_t ms) {
  return {.ms = ms};
}

Caller::Caller(Scene scene, std::uint64_t seed) : scene_(std::move(scene)), random_(seed) {
  WriteFile(scene_.directory + "/small.pdf", "%PDF-1.4 a small document");
  WriteFile(scene_.directory + "/page.htm", "<html><body>page</body></html>");
  WriteFile(scene_.directory + "/picture.jpg", RandomText(5000, 2));
  WriteFile(scene_.directory + "/update.dat", "V2.0.0|20250101\n" + RandomText(40'000, 2));
  WriteFile(scene_.directory + "/empty.dat", "");
  WriteFile(scene_.directory + "/large.bin", RandomText(210'000, 2));
}

int Caller::Port() {
  const std::uint64_t choice = Below(100);
  if (choice < 10 && scene_.serial_port > 0) return scene_.serial_port;
  return choice < 94 ? 0 : OneOf({-1, 200, 256, INT_MAX, INT_MIN});
}

int Caller::Baud() {
  return OneOf({9600, 115200, 0, -1, 1234567, INT_MAX, INT_MIN});
}

int Caller::Int(int low, int high) {
  if (Once(12)) return OneOf({low - 1, high + 1, 0, -1, 255, 256, INT_MAX, INT_MIN});
  return low + static_cast<int>(Below(static_cast<std::uint64_t>(high - low) + 1));
}

int Caller::Seconds() {
  seconds_ = Once(12) ? OneOf({0, -1, 1000, INT_MAX, INT_MIN}) : 1 + static_cast<int>(Below(Longest()));
  return seconds_;
}

char* Caller::Out(std::size_t size) {
  blocks_.push_back(std::make_unique<char[]>(size));
  return blocks_.back().get();
}

char* Caller::Copy(std::string_view text) {
  char* copy = Out(text.size() + 1);
  text.copy(copy, text.size());
  return copy;
}

// 0 ASCII, 1 UTF-8, 2 any byte but zero.
std::string Caller::RandomText(std::size_t length, int kind) {
  std::string text;
  while (text.size() < length) {
    if (kind == 1 && Once(2)) {
      text += OneOf<const char*>({"请", "签", "名", "é", "\U0001F600", "|", "</html>"});
    } else {
      text += static_cast<char>(kind == 2 ? 1 + Below(255) : 0x20 + Below(0x5F));
    }
  }
  return text;
}

char* Caller::Text(bool null) {
  if (null && Once(15)) return nullptr;
  const std::size_t length = OneOf<std::size_t>(
      {0, 1, 3, Below(40), Below(300), Once(10) ? Below(scene_.long_text + 1) : std::size_t{12}});
  return Copy(RandomText(length, static_cast<int>(Below(3))));
}

char* Caller::Digits() {
  if (Once(20)) return Text(false);
  std::string digits(OneOf<std::size_t>({0, 1, 11, 12, 13, 16, 19, 40, 300}), '0');
  for (char& digit : digits) digit = static_cast<char>('0' + Below(10));
  return Copy(digits);
}

char* Caller::Hex() {
  if (Once(20)) return Text(false);
  const std::size_t bytes = OneOf<std::size_t>({0, 1, 8, 16, 24, 128, 234, 256, 600});
  std::string hex(2 * bytes - (bytes > 0 && Once(20) ? 1 : 0), '0');
  for (char& digit : hex) digit = "0123456789ABCDEFabcdef"[Below(22)];
  return Copy(hex);
}

std::string Caller::SomePath() {
  const char* name = OneOf<const char*>({"small.pdf", "small.pdf", "page.htm", "picture.jpg", "update.dat",
                                         "empty.dat", "missing.pdf", "", "."});
  if (Once(40)) name = "large.bin";
  return scene_.directory + "/" + name;
}

char* Caller::Path() {
  if (Once(20)) return Text(false);
  return Copy(SomePath());
}

char* Caller::PathList() {
  std::string list = SomePath();
  while (Once(3)) list.append("|").append(SomePath());
  if (Once(50)) {
    while (list.size() < 1500) list.append("|").append(scene_.directory).append("/empty.dat");
  }
  return Copy(list);
}

char* Caller::NewPath() {
  return Copy(scene_.directory + OneOf<const char*>({"/out.png", "/out.txt", "/none/out.png", ""}));
}

char* Caller::Command() {
  return Copy(OneOf<std::string>({"\x1B[0GETVERSION", "\x1B[1GETFIRMVERSION",
                                  "\x1B[0GETFILELIST\x02"
                                  "2\x03",
                                  "\x1B[0CLOSECURPROGRAM", "\x1B[0PULLFILE\x02/tmp/hw.png\x03",
                                  "\x1B[0HIDCHANGE", RandomText(Below(3000), 2), ""}));
}

}  // namespace gwq::test
