// SPDX-License-Identifier: MIT
#include "recording/capture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <stdexcept>
#include <vector>

namespace gwq::terminal::recording {
namespace {

constexpr std::uint32_t kSectionHeader = 0x0A0D0D0A;
constexpr std::uint32_t kByteOrderMark = 0x1A2B3C4D;
constexpr std::uint32_t kInterface = 1;
constexpr std::uint32_t kEnhancedPacket = 6;
constexpr std::uint32_t kMicroMagic = 0xA1B2C3D4;
constexpr std::uint32_t kNanoMagic = 0xA1B23C4D;
constexpr std::size_t kBlockFrame = 12;  // type, and the length in front and behind
constexpr double kMicroseconds = 1e6;

std::uint32_t FirstWord(std::span<const std::uint8_t> file, bool big_endian) {
  return file.size() < 4 ? 0 : ByteReader(file, big_endian).Take<std::uint32_t>();
}

struct Interface {
  std::uint16_t link_type = 0;
  double unit = 1e-6;  // seconds
};

struct Option {
  std::uint16_t code = 0;
  std::span<const std::uint8_t> value;
};

// Nothing at the end of the options, or of what holds them.
std::optional<Option> TakeOption(ByteReader& body) {
  if (body.Left() < 4) return std::nullopt;
  const auto code = body.Take<std::uint16_t>();
  const auto size = body.Take<std::uint16_t>();
  if (code == 0) return std::nullopt;
  const Option option{code, body.TakeBytes(size)};
  body.TakeBytes(std::min(body.Left(), (4 - std::size_t{size} % 4) % 4));
  return option;
}

class PcapngReader {
 public:
  PcapngReader(std::span<const std::uint8_t> file, const PacketVisitor& visit) : rest_(file), visit_(visit) {}

  void Read() {
    while (!rest_.empty()) ReadBlock();
  }

 private:
  void ReadBlock();
  void BeginSection();
  void AddInterface(ByteReader body);
  void ReadPacket(ByteReader body) const;

  std::span<const std::uint8_t> rest_;
  const PacketVisitor& visit_;
  bool big_endian_ = false;
  std::vector<Interface> interfaces_;
};

void PcapngReader::ReadBlock() {
  if (FirstWord(rest_, false) == kSectionHeader) BeginSection();
  ByteReader head(rest_, big_endian_);
  const auto type = head.Take<std::uint32_t>();
  const std::size_t size = head.Take<std::uint32_t>();
  if (size < kBlockFrame || size % 4 != 0) throw std::runtime_error("a block has an impossible length");
  const ByteReader body(head.TakeBytes(size - kBlockFrame), big_endian_);
  if (head.Take<std::uint32_t>() != size) throw std::runtime_error("a block's two lengths are not the same");
  if (type == kInterface) AddInterface(body);
  if (type == kEnhancedPacket) ReadPacket(body);
  rest_ = rest_.subspan(size);
}

// Its byte order is that of all that follows, its own length included.
void PcapngReader::BeginSection() {
  constexpr std::size_t kMarkOffset = 8;
  if (rest_.size() < kMarkOffset + 4) throw std::runtime_error("the file ends in the middle of a block");
  const auto mark = rest_.subspan(kMarkOffset);
  big_endian_ = FirstWord(mark, true) == kByteOrderMark;
  if (!big_endian_ && FirstWord(mark, false) != kByteOrderMark)
    throw std::runtime_error("a section has no byte-order mark");
  interfaces_.clear();
}

void PcapngReader::AddInterface(ByteReader body) {
  constexpr std::uint16_t kResolution = 9;
  Interface interface;
  interface.link_type = body.Take<std::uint16_t>();
  body.TakeBytes(6);
  while (const auto option = TakeOption(body)) {
    if (option->code != kResolution || option->value.empty()) continue;
    const int exponent = option->value[0] & 0x7F;
    interface.unit = std::pow((option->value[0] & 0x80) != 0 ? 2.0 : 10.0, -exponent);
  }
  interfaces_.push_back(interface);
}

void PcapngReader::ReadPacket(ByteReader body) const {
  constexpr std::uint16_t kComment = 1;
  const auto number = body.Take<std::uint32_t>();
  if (number >= interfaces_.size())
    throw std::runtime_error("a packet is of an interface that is not described");
  const std::uint64_t high = body.Take<std::uint32_t>();
  const std::uint64_t time = high << 32 | body.Take<std::uint32_t>();
  const auto captured = body.Take<std::uint32_t>();
  const auto original = body.Take<std::uint32_t>();
  CapturedPacket packet;
  packet.link_type = interfaces_[number].link_type;
  packet.big_endian = big_endian_;
  const double micros = static_cast<double>(time) * interfaces_[number].unit * kMicroseconds;
  // Times of day in the far future are no more use than the end of the scale.
  packet.time_us = static_cast<std::int64_t>(std::min(std::round(micros), 4e18));
  packet.data = body.TakeBytes(captured);
  packet.cut = captured < original;
  body.TakeBytes(std::min(body.Left(), (4 - std::size_t{captured} % 4) % 4));
  while (const auto option = TakeOption(body)) {
    if (option->code == kComment)
      packet.comment = {reinterpret_cast<const char*>(option->value.data()), option->value.size()};
  }
  visit_(packet);
}

bool IsPcap(std::span<const std::uint8_t> file, bool big_endian) {
  const std::uint32_t magic = FirstWord(file, big_endian);
  return magic == kMicroMagic || magic == kNanoMagic;
}

void ReadPcap(std::span<const std::uint8_t> file, const PacketVisitor& visit) {
  ByteReader reader(file, IsPcap(file, true));
  const bool nano = reader.Take<std::uint32_t>() == kNanoMagic;
  reader.TakeBytes(16);
  CapturedPacket packet;
  packet.big_endian = reader.BigEndian();
  packet.link_type = static_cast<std::uint16_t>(reader.Take<std::uint32_t>());
  while (reader.Left() > 0) {
    const std::int64_t seconds = reader.Take<std::uint32_t>();
    const std::int64_t fraction = reader.Take<std::uint32_t>();
    const auto captured = reader.Take<std::uint32_t>();
    const auto original = reader.Take<std::uint32_t>();
    packet.time_us = seconds * 1'000'000 + (nano ? fraction / 1000 : fraction);
    packet.data = reader.TakeBytes(captured);
    packet.cut = captured < original;
    visit(packet);
  }
}

bool IsPcapng(std::span<const std::uint8_t> file) {
  return FirstWord(file, false) == kSectionHeader;
}

}  // namespace

std::span<const std::uint8_t> ByteReader::TakeBytes(std::size_t count) {
  if (count > rest_.size()) throw std::runtime_error("the file ends in the middle of a block or packet");
  const auto bytes = rest_.first(count);
  rest_ = rest_.subspan(count);
  return bytes;
}

bool IsCapture(std::span<const std::uint8_t> file) {
  return IsPcapng(file) || IsPcap(file, false) || IsPcap(file, true);
}

void ReadCapture(std::span<const std::uint8_t> file, const PacketVisitor& visit) {
  if (IsPcapng(file)) return PcapngReader(file, visit).Read();
  ReadPcap(file, visit);
}

}  // namespace gwq::terminal::recording
