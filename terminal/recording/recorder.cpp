// SPDX-License-Identifier: MIT
#include "recording/recorder.h"

#include <algorithm>
#include <utility>

#include "base/secret.h"

namespace gwq::terminal::recording {
namespace {

constexpr std::size_t kSetup = 8;

std::unique_ptr<Writer> MakeWriter(const std::string& path, RecordingFile& file, std::int64_t start_us) {
  if (IsTextName(path)) return std::make_unique<TextWriter>(file, start_us);
  return std::make_unique<PcapngWriter>(file);
}

std::int64_t EpochUs() {
  using std::chrono::duration_cast;
  return duration_cast<std::chrono::microseconds>(std::chrono::system_clock::now().time_since_epoch())
      .count();
}

}  // namespace

Recorder::Recorder(const std::string& path, bool with_secrets)
    : with_secrets_(with_secrets),
      start_us_(EpochUs()),
      start_(std::chrono::steady_clock::now()),
      file_(path),
      writer_(MakeWriter(path, file_, start_us_)) {}

// Runs evenly, whatever happens to the time of day.
std::int64_t Recorder::NowUs() const {
  const auto passed = std::chrono::steady_clock::now() - start_;
  return start_us_ + std::chrono::duration_cast<std::chrono::microseconds>(passed).count();
}

Masks Recorder::MasksFromHost(LineMask& line, std::span<const std::uint8_t> bytes) const {
  return with_secrets_ ? Masks{} : line.FromHost(bytes);
}

Masks Recorder::MasksToHost(LineMask& line, std::span<const std::uint8_t> bytes) const {
  return with_secrets_ ? Masks{} : line.ToHost(bytes);
}

void Recorder::Plugged(const Bytes& device_descriptor, const Bytes& configuration) {
  const Lock lock(mutex_);
  KernelAsks(1, device_descriptor);
  KernelAsks(2, configuration);
}

void Recorder::KernelAsks(std::uint8_t type, const Bytes& descriptor) {
  WireTransfer transfer;
  transfer.time_us = NowUs();
  transfer.type = TransferType::kControl;
  transfer.endpoint = kInBit;
  transfer.setup = {0x80, 6, 0, type, 0, 0, static_cast<std::uint8_t>(descriptor.size()), 0};
  transfer.length = descriptor.size();
  const std::uint64_t id = ++last_id_;
  writer_->Begin(transfer, id);
  transfer.data = descriptor;
  writer_->End(transfer, id);
}

// A hung transfer moves only a part, and the host then sends the rest: what the masks are to
// go on from is known at the end.
void Recorder::Begin(const Key& key, const Begun& begun) {
  const Lock lock(mutex_);
  Pending& pending = pending_[key];
  pending = {};
  pending.id = ++last_id_;
  WireTransfer& transfer = pending.transfer;
  transfer.time_us = NowUs();
  transfer.type = begun.type;
  transfer.endpoint = begun.endpoint;
  std::span<const std::uint8_t> data = begun.buffer;
  if (begun.type == TransferType::kControl) {
    const std::size_t setup = std::min(kSetup, data.size());
    std::copy_n(data.begin(), setup, transfer.setup.begin());
    data = data.subspan(setup);
    transfer.endpoint = transfer.setup[0] & kInBit;
  }
  transfer.length = data.size();
  if (!transfer.ToHost()) {
    pending.clear.assign(data.begin(), data.end());
    LineMask ahead = usb_mask_;
    transfer.masks = MasksFromHost(ahead, data);
    transfer.data = pending.clear;
    ApplyMasks(transfer.data, transfer.masks);
  }
  writer_->Begin(transfer, pending.id);
}

void Recorder::End(const Key& key, const Ended& ended) {
  const Lock lock(mutex_);
  const auto found = pending_.find(key);
  if (found == pending_.end()) return;
  Pending pending = std::move(found->second);
  pending_.erase(found);
  WireTransfer& transfer = pending.transfer;
  transfer.time_us = NowUs();
  transfer.status = ended.status;
  if (transfer.ToHost()) {
    transfer.data.assign(ended.received.begin(), ended.received.end());
    transfer.masks =
        transfer.type == TransferType::kControl ? Masks{} : MasksToHost(usb_mask_, ended.received);
    ApplyMasks(transfer.data, transfer.masks);
  } else {
    const std::size_t moved = std::min(ended.moved, pending.clear.size());
    transfer.data.resize(moved);
    transfer.masks = CutMasks(transfer.masks, moved);
    static_cast<void>(MasksFromHost(usb_mask_, std::span(pending.clear).first(moved)));
    Wipe(pending.clear);
  }
  writer_->End(transfer, pending.id);
}

void Recorder::Serial(bool to_host, std::span<const std::uint8_t> bytes) {
  if (bytes.empty()) return;
  const Lock lock(mutex_);
  WireTransfer transfer;
  transfer.time_us = NowUs();
  transfer.wire = Wire::kSerial;
  transfer.endpoint = to_host ? kInBit : std::uint8_t{0};
  transfer.data.assign(bytes.begin(), bytes.end());
  transfer.masks = to_host ? MasksToHost(serial_mask_, bytes) : MasksFromHost(serial_mask_, bytes);
  transfer.length = bytes.size();
  ApplyMasks(transfer.data, transfer.masks);
  writer_->End(transfer, 0);
}

}  // namespace gwq::terminal::recording
