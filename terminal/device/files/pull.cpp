// SPDX-License-Identifier: MIT
#include "device/files/pull.h"

#include <algorithm>
#include <utility>

#include "device/files/file_names.h"

namespace gwq::terminal::device {
namespace {

std::string Packets(std::uint64_t count) {
  return std::to_string(count) + (count == 1 ? " packet" : " packets");
}

std::span<std::uint8_t, protocol::kPacketHeaderSize> HeaderOf(Bytes& packet) {
  return std::span(packet).first<protocol::kPacketHeaderSize>();
}

}  // namespace

void Pull::Start(std::unique_ptr<FileReader> file, const std::string& name) {
  transfer_ = std::make_unique<Transfer>();
  transfer_->file = std::move(file);
  transfer_->name = name;
  transfer_->empty_packets.assign(faults_.empty_packets_first.begin(), faults_.empty_packets_first.end());
  SendNext();
}

void Pull::TakeResponse(bool accepted) {
  if (!transfer_) return host_.Note("no packet waits for that");
  if (!accepted) return Stop("the host rejects it");
  if (!transfer_->ended) return SendNext();
  host_.Note(std::string("pull ") + transfer_->name + ": " + ShownSize(transfer_->size) + " in " +
             Packets(transfer_->packets));
  transfer_.reset();
}

void Pull::Stop(const std::string& why) {
  if (!transfer_) return;
  host_.Note(std::string("pull ") + transfer_->name + ": over, " + why);
  transfer_.reset();
  host_.Withdraw();
}

void Pull::Advance(Time now) {
  const auto deadline = NextDeadline();
  if (deadline && *deadline <= now) Stop("the host is silent");
}

std::optional<Time> Pull::NextDeadline() const {
  if (!transfer_) return std::nullopt;
  return transfer_->gives_up_at;
}

void Pull::SendNext() {
  if (!transfer_->empty_packets.empty()) return SendEmptyPackets();
  Bytes payload(kDataSize);
  const auto size = transfer_->file->Read(payload);
  if (!size) return Stop("the file cannot be read");
  payload.resize(*size);
  if (payload.empty()) return SendEnd();
  SendData(payload);
}

// Hosts do not acknowledge a packet of type 0.
void Pull::SendEmptyPackets() {
  const std::uint8_t type = transfer_->empty_packets.front();
  transfer_->empty_packets.pop_front();
  Send(protocol::MakePacket(static_cast<protocol::PacketType>(type), {}),
       std::string("empty packet of type ") + std::to_string(type));
  if (type == 0 && transfer_) SendNext();
}

void Pull::SendData(const Bytes& payload) {
  transfer_->size += payload.size();
  ++transfer_->packets;
  Bytes packet = protocol::MakePacket(protocol::PacketType::kData, payload);
  Spoil(packet, "data");
  Send(std::move(packet), std::string("data packet ") + ShownSize(payload.size()));
}

void Pull::SendEnd() {
  transfer_->ended = true;
  Bytes packet = protocol::MakePacket(protocol::PacketType::kEnd, {});
  Spoil(packet, "end");
  Send(std::move(packet), "end packet");
}

void Pull::Spoil(Bytes& packet, const std::string& step) {
  protocol::PacketHeader header = protocol::ReadPacketHeader(HeaderOf(packet));
  const std::uint64_t time = step == "data" ? transfer_->packets : 1;
  if (Names(faults_.bad_check, step, time)) header.check = static_cast<std::uint8_t>(~header.check);
  if (std::exchange(transfer_->first, false)) {
    header.type = faults_.packet_type.value_or(header.type);
    header.length = faults_.announce_length.value_or(static_cast<std::uint32_t>(header.length));
  }
  protocol::WritePacketHeader(header, HeaderOf(packet));
}

void Pull::Send(Bytes packet, const std::string& what) {
  const std::uint64_t reports =
      (packet.size() + protocol::kPacketReportSize - 1) / protocol::kPacketReportSize;
  const std::uint64_t left =
      faults_.stop_after_reports ? *faults_.stop_after_reports - transfer_->reports : reports;
  transfer_->reports += std::min(reports, left);
  transfer_->gives_up_at = host_.Now() + kPatience;
  if (left < reports) packet.resize(left * protocol::kPacketReportSize);
  if (!packet.empty()) host_.Answer(std::move(packet), what);
  if (left >= reports) return;
  host_.Note(std::string("pull ") + transfer_->name + ": falls silent as scripted");
  transfer_.reset();
}

}  // namespace gwq::terminal::device
