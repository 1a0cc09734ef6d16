// SPDX-License-Identifier: MIT
#include "recording/recording.h"

#include <algorithm>
#include <fstream>
#include <stdexcept>
#include <string_view>

#include "recording/capture.h"
#include "recording/text_form.h"
#include "recording/usb_capture.h"
#include "recording/usbmon.h"

namespace gwq::terminal::recording {
namespace {

constexpr std::size_t kMaxFileSize = std::size_t{1} << 30;

std::optional<Recording::Identity> IdentityIn(const WireTransfer& transfer) {
  const Bytes& data = transfer.data;
  const bool tells = transfer.type == TransferType::kControl && transfer.setup[1] == 6 &&
                     transfer.setup[3] == 1 && data.size() >= 12;
  if (!tells) return std::nullopt;
  const auto word = [&data](std::size_t at) {
    return static_cast<std::uint16_t>(data[at] | data[at + 1] << 8);
  };
  return Recording::Identity{word(8), word(10)};
}

// Of the control transfers only a report counts that the host sends the long way round.
bool Counts(const WireTransfer& transfer) {
  if (transfer.wire == Wire::kSerial || transfer.type != TransferType::kControl) return true;
  return transfer.setup[0] == 0x21 && transfer.setup[1] == 9;
}

void AddText(WireTransfer transfer, Recording& recording) {
  if (transfer.wire == Wire::kUsb) recording.has_usb = true;
  if (const auto identity = IdentityIn(transfer)) recording.identity = identity;
  if (Counts(transfer)) recording.transfers.push_back(std::move(transfer));
}

Recording ParseText(std::string_view text) {
  Recording recording;
  std::size_t total = 0;
  for (std::size_t number = 1; !text.empty(); ++number) {
    const std::size_t end = text.find('\n');
    if (end == std::string_view::npos) throw std::runtime_error("the last line has no end");
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(end + 1);
    if (line.empty() || line.front() == '#') continue;
    try {
      WireTransfer transfer = ParseLine(line);
      total += transfer.data.size();
      if (total > kMaxFileSize) throw std::runtime_error("there are more than 1 GB of data");
      AddText(std::move(transfer), recording);
    } catch (const std::runtime_error& error) {
      throw std::runtime_error("line " + std::to_string(number) + ": " + error.what());
    }
  }
  return recording;
}

WireTransfer SerialTransfer(const CapturedPacket& packet) {
  if (packet.data.empty()) throw std::runtime_error("a packet of the serial line has no direction");
  WireTransfer transfer;
  transfer.wire = Wire::kSerial;
  transfer.endpoint = packet.data[0] == 0 ? std::uint8_t{0} : kInBit;
  transfer.time_us = packet.time_us;
  const auto data = packet.data.subspan(1);
  transfer.data.assign(data.begin(), data.end());
  transfer.length = data.size();
  transfer.masks = ParseMaskComment(packet.comment, data.size());
  return transfer;
}

Recording ParseCapture(std::span<const std::uint8_t> file, const std::optional<BusAddress>& device) {
  Recording recording;
  UsbCapture usb;
  ReadCapture(file, [&](const CapturedPacket& packet) {
    if (packet.link_type == kLinkTypeUser0) recording.transfers.push_back(SerialTransfer(packet));
    if (packet.link_type == kLinkTypeUsbmon || packet.link_type == kLinkTypeUsbmonMmapped) usb.Add(packet);
  });
  if (usb.Empty() && recording.transfers.empty())
    throw std::runtime_error("it has no USB transfers; capture on an interface usbmonN");
  if (!usb.Empty()) usb.Extract(device, recording);
  return recording;
}

Bytes ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary | std::ios::ate);
  const std::streamoff size = file ? std::streamoff{file.tellg()} : -1;
  if (size < 0) throw std::runtime_error("it cannot be read");
  if (static_cast<std::size_t>(size) > kMaxFileSize) throw std::runtime_error("it is larger than 1 GB");
  Bytes bytes(static_cast<std::size_t>(size));
  file.seekg(0);
  file.read(reinterpret_cast<char*>(bytes.data()), size);
  if (!file) throw std::runtime_error("it cannot be read");
  return bytes;
}

}  // namespace

bool Recording::Has(Wire wire) const {
  if (wire == Wire::kUsb) return has_usb;
  return std::any_of(transfers.begin(), transfers.end(),
                     [wire](const WireTransfer& transfer) { return transfer.wire == wire; });
}

Recording ParseRecording(std::span<const std::uint8_t> file, const std::optional<BusAddress>& device) {
  const std::string_view text(reinterpret_cast<const char*>(file.data()), file.size());
  if (text.starts_with(kTextHead)) return ParseText(text);
  if (IsCapture(file)) return ParseCapture(file, device);
  throw std::runtime_error("it is no recording: neither text that begins with \"" + std::string(kTextHead) +
                           "\" nor pcapng nor pcap");
}

Recording LoadRecording(const std::string& path, const std::optional<BusAddress>& device) {
  try {
    return ParseRecording(ReadFile(path), device);
  } catch (const std::runtime_error& error) {
    throw std::runtime_error("recording " + path + ": " + error.what());
  }
}

}  // namespace gwq::terminal::recording
