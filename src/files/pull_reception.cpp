#include "files/internal/pull_reception.h"

#include <algorithm>

#include <gwq/codec/packet.h>
#include "codec/internal/transfer_packet.h"

namespace gwq {
namespace {

constexpr std::uint8_t kStx = 0x02;
constexpr std::size_t kLongestPayload = 256'000;

std::uint8_t Xor(std::span<const std::uint8_t> bytes) {
  return getLRC(bytes.data(), static_cast<int>(bytes.size()));
}

}  // namespace

struct PullReception::Header {
  std::uint8_t mark;
  PacketType type;
  std::uint8_t check;
  std::size_t length;
  std::span<const std::uint8_t> payload;  // as far as it stands in this report

  explicit Header(ReportView report)
      : mark(report[0]),
        type(static_cast<PacketType>(report[1])),
        check(report[2]),
        length(report[3] * 65536U + report[4] * 256U + report[5]),
        payload(report.subspan(kPacketHeaderSize, std::min(length, kReportSize - kPacketHeaderSize))) {}

  [[nodiscard]] bool WellFormed() const {
    return mark == kStx && type <= PacketType::kEnd && length <= kLongestPayload;
  }
};

PullReception::Result PullReception::Take(ReportView report) {
  return header_expected_ ? TakeHeader(report) : TakeContinuation(report);
}

PullReception::Result PullReception::TakeHeader(ReportView report) {
  const Header header(report);
  if (!header.WellFormed()) return Settle(false, Result::kRejected);
  switch (header.type) {
    case PacketType::kData:
      return TakeData(header);
    case PacketType::kStart:
      return Settle(Xor(header.payload) == header.check, Result::kPacketDone);
    case PacketType::kEnd:
      return Settle(Xor(header.payload) == header.check, Result::kFileDone);
    default:
      return Result::kReportTaken;
  }
}

// A short packet is written before its check, a long one's last report after it; the difference is
// deliberate.
PullReception::Result PullReception::TakeData(const Header& header) {
  folded_ = Xor(header.payload);
  if (!header.payload.empty()) port_.Store(header.payload);
  if (header.length == header.payload.size()) return Settle(folded_ == header.check, Result::kPacketDone);
  remaining_ = header.length - header.payload.size();
  check_ = header.check;
  header_expected_ = false;
  return Result::kReportTaken;
}

PullReception::Result PullReception::TakeContinuation(ReportView report) {
  const std::span<const std::uint8_t> payload = report.first(std::min(remaining_, kReportSize));
  folded_ = static_cast<std::uint8_t>(folded_ ^ Xor(payload));
  const bool last = remaining_ <= kReportSize;
  const bool holds = !last || folded_ == check_;
  if (holds) port_.Store(payload);
  remaining_ -= payload.size();
  if (!last) return Result::kReportTaken;
  header_expected_ = true;
  return Settle(holds, Result::kPacketDone);
}

PullReception::Result PullReception::Settle(bool holds, Result done) {
  port_.Acknowledge(holds);
  return holds ? done : Result::kRejected;
}

}  // namespace gwq
