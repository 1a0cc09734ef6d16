// SPDX-License-Identifier: MIT
#include <cerrno>
#include <string>

#include "recording/little_endian.h"
#include "recording/usbmon.h"
#include "recording/writer.h"

namespace gwq::terminal::recording {
namespace {

constexpr std::uint32_t kSectionHeader = 0x0A0D0D0A;
constexpr std::uint32_t kByteOrderMark = 0x1A2B3C4D;
constexpr std::uint32_t kInterface = 1;
constexpr std::uint32_t kEnhancedPacket = 6;
constexpr std::uint16_t kOptionEnd = 0;
constexpr std::uint16_t kOptionComment = 1;
constexpr std::uint16_t kOptionApplication = 4;
constexpr std::uint16_t kOptionName = 2;
constexpr std::uint16_t kOptionResolution = 9;
constexpr std::uint32_t kUsbInterface = 0;
constexpr std::uint32_t kSerialInterface = 1;
constexpr std::int64_t kMicroseconds = 1'000'000;

void Pad(Bytes& bytes) {
  while (bytes.size() % 4 != 0) bytes.push_back(0);
}

void AppendOption(Bytes& body, std::uint16_t code, const std::string& value) {
  AppendLittle(body, code);
  AppendLittle(body, static_cast<std::uint16_t>(value.size()));
  body.insert(body.end(), value.begin(), value.end());
  Pad(body);
}

Bytes Block(std::uint32_t type, const Bytes& body) {
  const auto size = static_cast<std::uint32_t>(12 + body.size());
  Bytes block;
  AppendLittle(block, type);
  AppendLittle(block, size);
  block.insert(block.end(), body.begin(), body.end());
  AppendLittle(block, size);
  return block;
}

Bytes SectionHeader() {
  Bytes body;
  AppendLittle(body, kByteOrderMark);
  AppendLittle(body, std::uint16_t{1});
  AppendLittle(body, std::uint16_t{0});
  AppendLittle(body, std::int64_t{-1});  // the section's length is not known
  AppendOption(body, kOptionApplication, "gwq-terminal");
  AppendOption(body, kOptionEnd, "");
  return Block(kSectionHeader, body);
}

Bytes Interface(std::uint16_t link_type, const char* name) {
  Bytes body;
  AppendLittle(body, link_type);
  AppendLittle(body, std::uint16_t{0});
  AppendLittle(body, std::uint32_t{0});  // packets of any length
  AppendOption(body, kOptionName, name);
  AppendOption(body, kOptionResolution, "\x06");
  AppendOption(body, kOptionEnd, "");
  return Block(kInterface, body);
}

// An option may be 65535 bytes long; masks far behind are then those of one long span.
std::string MaskComment(const Masks& masks) {
  constexpr std::size_t kMax = 60000;
  std::string text = kMaskComment;
  for (const MaskedSpan& span : masks) {
    const bool last = text.size() > kMax;
    const std::size_t end = last ? masks.back().offset + masks.back().size : span.offset + span.size;
    text += ' ';
    text += std::to_string(span.offset);
    text += '+';
    text += std::to_string(end - span.offset);
    if (last) break;
  }
  return text;
}

// Data go with the event that has them: what the host sends with its beginning, what it gets with the end.
bool HasData(const WireTransfer& transfer, char event) {
  return transfer.ToHost() == (event == kCompleted) && !transfer.data.empty();
}

Bytes Header(const WireTransfer& transfer, std::uint64_t id, char event) {
  const bool begins = event == kSubmitted;
  const bool setup = begins && transfer.type == TransferType::kControl;
  const bool data = HasData(transfer, event);
  Bytes bytes;
  AppendLittle(bytes, id);
  AppendLittle(bytes, event);
  AppendLittle(bytes, static_cast<std::uint8_t>(transfer.type));
  AppendLittle(bytes, transfer.endpoint);
  AppendLittle(bytes, kRecordedDevice);
  AppendLittle(bytes, kRecordedBus);
  AppendLittle(bytes, setup ? '\0' : '-');
  AppendLittle(bytes, data ? '\0' : transfer.ToHost() ? '<' : '>');
  AppendLittle(bytes, transfer.time_us / kMicroseconds);
  AppendLittle(bytes, static_cast<std::int32_t>(transfer.time_us % kMicroseconds));
  AppendLittle(bytes, begins ? -EINPROGRESS : transfer.status);
  AppendLittle(bytes, static_cast<std::uint32_t>(begins ? transfer.length : transfer.data.size()));
  AppendLittle(bytes, static_cast<std::uint32_t>(data ? transfer.data.size() : 0));
  for (const std::uint8_t byte : transfer.setup) bytes.push_back(setup ? byte : std::uint8_t{0});
  bytes.resize(kUsbmonMmappedSize);
  return bytes;
}

}  // namespace

PcapngWriter::PcapngWriter(RecordingFile& file) : file_(file) {
  Bytes start = SectionHeader();
  for (const Bytes& block : {Interface(kLinkTypeUsbmonMmapped, "usb"), Interface(kLinkTypeUser0, "serial")})
    start.insert(start.end(), block.begin(), block.end());
  file_.Append(start);
}

void PcapngWriter::Begin(const WireTransfer& transfer, std::uint64_t id) {
  WriteUsb(transfer, id, kSubmitted);
}

void PcapngWriter::End(const WireTransfer& transfer, std::uint64_t id) {
  if (transfer.wire == Wire::kUsb) return WriteUsb(transfer, id, kCompleted);
  Bytes packet{static_cast<std::uint8_t>(transfer.ToHost() ? 1 : 0)};
  packet.insert(packet.end(), transfer.data.begin(), transfer.data.end());
  WritePacket(kSerialInterface, transfer.time_us, packet, transfer.masks);
}

void PcapngWriter::WriteUsb(const WireTransfer& transfer, std::uint64_t id, char event) {
  Bytes packet = Header(transfer, id, event);
  const bool data = HasData(transfer, event);
  if (data) packet.insert(packet.end(), transfer.data.begin(), transfer.data.end());
  WritePacket(kUsbInterface, transfer.time_us, packet, data ? transfer.masks : Masks{});
}

void PcapngWriter::WritePacket(std::uint32_t interface, std::int64_t time_us, const Bytes& packet,
                               const Masks& masks) {
  const auto time = static_cast<std::uint64_t>(time_us);
  Bytes body;
  AppendLittle(body, interface);
  AppendLittle(body, static_cast<std::uint32_t>(time >> 32));
  AppendLittle(body, static_cast<std::uint32_t>(time));
  AppendLittle(body, static_cast<std::uint32_t>(packet.size()));
  AppendLittle(body, static_cast<std::uint32_t>(packet.size()));
  body.insert(body.end(), packet.begin(), packet.end());
  Pad(body);
  if (!masks.empty()) {
    AppendOption(body, kOptionComment, MaskComment(masks));
    AppendOption(body, kOptionEnd, "");
  }
  file_.Append(Block(kEnhancedPacket, body));
}

}  // namespace gwq::terminal::recording
