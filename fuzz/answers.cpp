// SPDX-License-Identifier: MIT
#include "answers.h"

#include <string_view>

#include <gwq/codec/packet.h>

namespace gwq::fuzz {
namespace {

constexpr std::uint8_t kStx = 0x02;
constexpr std::uint8_t kEtx = 0x03;
constexpr std::size_t kReport = 1024;

enum Kind : unsigned { kRaw, kMarked, kFrame, kTransfer, kChoice, kDone, kRefused, kNumbers };

struct Manner {
  unsigned bits;
  [[nodiscard]] unsigned Kind() const { return bits & 7U; }
  [[nodiscard]] bool WrongLength() const { return (bits & 16U) != 0; }
  [[nodiscard]] bool WrongCheck() const { return (bits & 32U) != 0; }
  [[nodiscard]] bool WholeReports() const { return (bits & 64U) != 0; }
  [[nodiscard]] bool Long() const { return (bits & 128U) != 0; }
};

Bytes Marked(Bytes content) {
  content.insert(content.begin(), kStx);
  content.push_back(kEtx);
  return content;
}

// STX, length, content and check in split form, ETX.
Bytes Framed(const Manner& manner, const Bytes& content) {
  Bytes frame(2 * content.size() + 8);
  PackData(content.data(), static_cast<int>(content.size()), frame.data());
  if (manner.WrongLength()) frame[4] = static_cast<std::uint8_t>(frame[4] ^ 0x05U);
  if (manner.WrongCheck()) frame[frame.size() - 2] ^= 1U;
  return frame;
}

// STX, type, check, 24-bit length, content. The content's first byte is the type.
Bytes Transfer(const Manner& manner, Bytes content) {
  const auto type = content.empty() ? std::uint8_t{3} : static_cast<std::uint8_t>(content.front() % 5);
  if (!content.empty()) content.erase(content.begin());
  const std::size_t length = content.size() + (manner.WrongLength() ? 3000 : 0);
  const int check =
      GetDataLRC(content.data(), static_cast<int>(content.size())) ^ (manner.WrongCheck() ? 1 : 0);
  const Bytes header{kStx,
                     type,
                     static_cast<std::uint8_t>(check),
                     static_cast<std::uint8_t>(length >> 16U),
                     static_cast<std::uint8_t>(length >> 8U),
                     static_cast<std::uint8_t>(length)};
  content.insert(content.begin(), header.begin(), header.end());
  return content;
}

Bytes Said(std::string_view text) {
  return {text.begin(), text.end()};
}

Bytes Composed(const Manner& manner, const Bytes& content) {
  const auto first = content.empty() ? '0' : static_cast<char>('0' + content.front() % 5);
  switch (manner.Kind()) {
    case kMarked:
      return Marked(content);
    case kFrame:
      return Framed(manner, content);
    case kTransfer:
      return Transfer(manner, content);
    case kChoice:
      return {'B', static_cast<std::uint8_t>(first), 'F'};
    case kDone:
      return Said("\x02\xAA\x03");
    case kRefused:
      return Said("\x02U\x03");
    case kNumbers:
      return Said("\x02V1.2|20231114|st_12345678\x03");
    default:
      return content;
  }
}

}  // namespace

Bytes ComposeAnswer(Input input) {
  const Manner manner{input.Byte()};
  const auto rest = input.Rest();
  Bytes content;
  for (int i = 0; i < (manner.Long() ? 8 : 1); ++i) content.insert(content.end(), rest.begin(), rest.end());
  Bytes answer = Composed(manner, content);
  if (manner.WholeReports()) answer.resize((answer.size() + kReport - 1) / kReport * kReport);
  return answer;
}

}  // namespace gwq::fuzz
