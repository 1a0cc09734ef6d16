// SPDX-License-Identifier: MIT
#include "files/internal/pull_reception.h"

#include <algorithm>

#include <gwq/codec/packet.h>
#include "codec/internal/transfer_packet.h"

namespace gwq {
namespace {

constexpr std::uint8_t kStx = 0x02;
constexpr std::size_t kMaxPayload = 256'000;

std::uint8_t Xor(std::span<const std::uint8_t> bytes) {
  return getLRC(bytes.data(), static_cast<int>(bytes.size()));
}

}  // namespace

struct PullReception::Header {
  std::uint8_t mark;
  PacketType type;
  std::uint8_t check;
  std::size_t length;
  std::span<const std::uint8_t> payload;  // the part of it in this report

  explicit Header(ReportView report)
      : mark(report[0]),
        type(static_cast<PacketType>(report[1])),
        check(report[2]),
        length(report[3] * 65536U + report[4] * 256U + report[5]),
        payload(report.subspan(kPacketHeaderSize, std::min(length, kReportSize - kPacketHeaderSize))) {}

  [[nodiscard]] bool IsValid() const {
    return mark == kStx && type <= PacketType::kEnd && length <= kMaxPayload;
  }
};

PullReception::Result PullReception::HandleReport(ReportView report) {
  return header_expected_ ? HandleHeader(report) : HandleContinuation(report);
}

PullReception::Result PullReception::HandleHeader(ReportView report) {
  const Header header(report);
  if (!header.IsValid()) return Acknowledge(false, Result::kRejected);
  switch (header.type) {
    case PacketType::kData:
      return HandleData(header);
    case PacketType::kStart:
      return Acknowledge(Xor(header.payload) == header.check, Result::kPacketDone);
    case PacketType::kEnd:
      return Acknowledge(Xor(header.payload) == header.check, Result::kFileDone);
    default:
      // Contract: type 0 is neither accepted nor rejected; the pull reads on.
      return Result::kMoreExpected;
  }
}

// Contract: a packet that fits into one report is stored before its check, the last report of a
// longer one after it; the file of a pull that is rejected is removed either way.
PullReception::Result PullReception::HandleData(const Header& header) {
  computed_ = Xor(header.payload);
  if (!header.payload.empty()) port_.Store(header.payload);
  if (header.length == header.payload.size()) {
    return Acknowledge(computed_ == header.check, Result::kPacketDone);
  }
  remaining_ = header.length - header.payload.size();
  check_ = header.check;
  header_expected_ = false;
  return Result::kMoreExpected;
}

PullReception::Result PullReception::HandleContinuation(ReportView report) {
  const std::span<const std::uint8_t> payload = report.first(std::min(remaining_, kReportSize));
  computed_ = static_cast<std::uint8_t>(computed_ ^ Xor(payload));
  const bool last = remaining_ <= kReportSize;
  const bool valid = !last || computed_ == check_;
  if (valid) port_.Store(payload);
  remaining_ -= payload.size();
  if (!last) return Result::kMoreExpected;
  header_expected_ = true;
  return Acknowledge(valid, Result::kPacketDone);
}

PullReception::Result PullReception::Acknowledge(bool valid, Result done) {
  port_.Acknowledge(valid);
  return valid ? done : Result::kRejected;
}

}  // namespace gwq
