// SPDX-License-Identifier: MIT
#include "recording/usb_capture.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <stdexcept>
#include <utility>

#include "recording/usbmon.h"
#include "usb_ids.h"

namespace gwq::terminal::recording {
namespace {

constexpr std::uint32_t kReportSize = 1024;
constexpr std::uint8_t kSetReport[] = {0x21, 0x09};

std::string Text(const BusAddress& address) {
  return std::to_string(address.bus) + "." + std::to_string(address.device);
}

std::string List(const std::set<BusAddress>& addresses) {
  std::string text;
  for (const BusAddress& address : addresses) text += (text.empty() ? "" : ", ") + Text(address);
  return text.empty() ? "none" : text;
}

bool IsTerminal(const Recording::Identity& identity) {
  return std::any_of(std::begin(kUsbIdentities), std::end(kUsbIdentities), [&](const UsbIdentity& known) {
    return known.vid == identity.vendor && known.pid == identity.product;
  });
}

bool IsTerminalEndpoint(std::uint8_t endpoint) {
  return endpoint == 0x81 || endpoint == 0x02 || endpoint == 0x03;
}

[[noreturn]] void FailCut() {
  throw std::runtime_error(
      "the capture has only the beginning of some transfers; capture again with whole packets, as "
      "`tcpdump -s 0` or `tshark -s 0` does");
}

std::size_t Number(std::string_view& text) {
  std::size_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc{}) throw std::runtime_error("a comment that tells masks is damaged");
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  return value;
}

}  // namespace

Masks ParseMaskComment(std::string_view comment, std::size_t size) {
  const std::string_view mark = kMaskComment;
  Masks masks;
  if (!comment.starts_with(mark)) return masks;
  std::size_t done = 0;
  for (std::string_view rest = comment.substr(mark.size()); !rest.empty();) {
    if (!rest.starts_with(' ')) return {};  // somebody's own words
    rest.remove_prefix(1);
    const std::size_t offset = Number(rest);
    if (!rest.starts_with('+')) return {};
    rest.remove_prefix(1);
    const std::size_t length = Number(rest);
    if (offset < done || offset > size || length > size - offset)
      throw std::runtime_error("a packet has masks that do not lie in its data");
    masks.push_back({offset, length});
    done = offset + length;
  }
  return masks;
}

void UsbCapture::Add(const CapturedPacket& packet) {
  if (auto event = Parse(packet)) events_.push_back(*event);
}

std::optional<UsbCapture::Event> UsbCapture::Parse(const CapturedPacket& packet) {
  const std::size_t head = packet.link_type == kLinkTypeUsbmon ? kUsbmonSize : kUsbmonMmappedSize;
  if (packet.data.size() < head) {
    if (packet.cut) FailCut();
    throw std::runtime_error("a packet is too short for a USB transfer");
  }
  ByteReader reader(packet.data, packet.big_endian);
  Event event;
  event.id = reader.Take<std::uint64_t>();
  event.type = static_cast<char>(reader.Take<std::uint8_t>());
  event.transfer_type = static_cast<TransferType>(reader.Take<std::uint8_t>());
  event.endpoint = reader.Take<std::uint8_t>();
  event.address.device = reader.Take<std::uint8_t>();
  event.address.bus = reader.Take<std::uint16_t>();
  event.has_setup = reader.Take<std::uint8_t>() == 0;
  const bool has_data = reader.Take<std::uint8_t>() == 0;
  reader.TakeBytes(12);
  event.status = reader.Take<std::int32_t>();
  event.length = reader.Take<std::uint32_t>();
  const auto captured = reader.Take<std::uint32_t>();
  const auto setup = reader.TakeBytes(event.setup.size());
  std::copy(setup.begin(), setup.end(), event.setup.begin());
  if (event.transfer_type == TransferType::kIsochronous) return std::nullopt;
  const auto data = packet.data.subspan(head);
  if (has_data) event.data = data.first(std::min<std::size_t>(data.size(), captured));
  event.time_us = packet.time_us;
  event.comment = packet.comment;
  return event;
}

bool UsbCapture::IsTerminalTransfer(const Event& event) {
  const bool right_type =
      event.transfer_type == TransferType::kInterrupt || event.transfer_type == TransferType::kBulk;
  return right_type && IsTerminalEndpoint(event.endpoint);
}

// As the devices answered when they were asked for their descriptor. Address 0 is a device that is just
// about to get another one.
UsbCapture::Identities UsbCapture::FindIdentities() const {
  constexpr std::size_t kDeviceDescriptor = 18;
  std::set<std::pair<BusAddress, std::uint64_t>> questions;
  Identities identities;
  for (const Event& event : events_) {
    if (event.transfer_type != TransferType::kControl || event.address.device == 0) continue;
    const std::pair key(event.address, event.id);
    const bool asks = event.has_setup && event.setup[0] == 0x80 && event.setup[1] == 6 && event.setup[3] == 1;
    if (event.type == kSubmitted && asks) questions.insert(key);
    if (event.type != kCompleted || questions.erase(key) == 0) continue;
    const auto& data = event.data;
    if (data.size() < kDeviceDescriptor || data[0] != kDeviceDescriptor || data[1] != 1) continue;
    // Little-endian on the wire, whoever captured it.
    ByteReader ids(data.subspan(8), false);
    const auto vendor = ids.Take<std::uint16_t>();
    identities[event.address] = {vendor, ids.Take<std::uint16_t>()};
  }
  return identities;
}

std::set<BusAddress> UsbCapture::Devices() const {
  std::set<BusAddress> devices;
  for (const Event& event : events_) devices.insert(event.address);
  return devices;
}

BusAddress UsbCapture::Choose(const std::optional<BusAddress>& device, const Identities& identities) const {
  const std::set<BusAddress> all = Devices();
  if (device) {
    if (all.contains(*device)) return *device;
    throw std::runtime_error("there is no device " + Text(*device) +
                             " in the capture; these are: " + List(all));
  }
  std::set<BusAddress> known;
  std::set<BusAddress> alike;
  for (const auto& [address, identity] : identities) {
    if (IsTerminal(identity)) known.insert(address);
  }
  for (const Event& event : events_) {
    if (IsTerminalTransfer(event) && event.length == kReportSize) alike.insert(event.address);
  }
  const std::set<BusAddress>& candidates = known.empty() ? alike : known;
  if (candidates.size() == 1) return *candidates.begin();
  if (candidates.empty())
    throw std::runtime_error(
        "no device of the capture looks like a terminal; name one with --device BUS.ADDR of: " + List(all));
  throw std::runtime_error(
      "several devices of the capture look like a terminal; name one with --device BUS.ADDR of: " +
      List(candidates));
}

// What the host sends is known when it begins, and what it gets when the transfer ends.
std::optional<WireTransfer> UsbCapture::MakeTransfer(const Event& begin, const Event& end) {
  WireTransfer transfer;
  transfer.type = begin.transfer_type;
  transfer.setup = begin.setup;
  transfer.endpoint = begin.endpoint;
  if (begin.transfer_type == TransferType::kControl) {
    if (!begin.has_setup || !std::equal(std::begin(kSetReport), std::end(kSetReport), begin.setup.begin()))
      return std::nullopt;
    transfer.endpoint = 0;
  } else if (!IsTerminalTransfer(begin)) {
    return std::nullopt;
  }
  const Event& with_data = transfer.ToHost() ? end : begin;
  if (end.length > with_data.data.size()) FailCut();
  transfer.time_us = with_data.time_us;
  transfer.status = end.status;
  transfer.length = begin.length;
  const auto data = with_data.data.first(end.length);
  transfer.data.assign(data.begin(), data.end());
  transfer.masks = CutMasks(ParseMaskComment(with_data.comment, with_data.data.size()), data.size());
  return transfer;
}

// An answer can be there before the end of the transfer that asked for it: what the host sends is put where
// it began.
void UsbCapture::Extract(const std::optional<BusAddress>& device, Recording& recording) const {
  const Identities identities = FindIdentities();
  const BusAddress address = Choose(device, identities);
  if (const auto found = identities.find(address); found != identities.end())
    recording.identity = found->second;
  recording.has_usb = true;
  std::map<std::uint64_t, std::size_t> under_way;
  std::map<std::size_t, WireTransfer> in_order;
  for (std::size_t i = 0; i < events_.size(); ++i) {
    const Event& event = events_[i];
    if (event.address != address) continue;
    if (event.type == kSubmitted) under_way[event.id] = i;
    if (event.type == kSubmitted) continue;
    const auto begun = under_way.find(event.id);
    if (begun == under_way.end()) continue;
    const std::size_t begin = begun->second;
    under_way.erase(begun);
    if (event.type != kCompleted) continue;
    if (auto transfer = MakeTransfer(events_[begin], event))
      in_order.emplace(transfer->ToHost() ? i : begin, std::move(*transfer));
  }
  for (auto& [place, transfer] : in_order) recording.transfers.push_back(std::move(transfer));
}

}  // namespace gwq::terminal::recording
