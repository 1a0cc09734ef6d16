// SPDX-License-Identifier: MIT
// Assembles a pulled file from the terminal's 1024-byte reports.
//
// A transfer packet begins with a report and continues through the next ones:
//
//     offset  0    1     2      3..5                       6
//             STX  type  check  length (24-bit, big-end.)  payload
//
//     type: 1 start, 2 data, 3 end; check: XOR of the payload
//
//                          start or short data packet: accept
//                                +----------+
//                                v          |
//    pull begins ---------> [header expected] --- end packet: accept ---> file complete
//                            |           ^
//      data packet longer    |           |  last report of the packet,
//      than this report      v           |  check valid: write, accept
//                           [continuation]
//                            |           ^
//                            +-----------+
//                             more reports
//
// Anything else is rejected and ends the pull.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace gwq {

inline constexpr std::size_t kReportSize = 1024;

using ReportView = std::span<const std::uint8_t, kReportSize>;

// Where payload and acknowledgements go.
class PullPort {
 public:
  virtual void Store(std::span<const std::uint8_t> payload) = 0;
  virtual void Acknowledge(bool accepted) = 0;

 protected:
  ~PullPort() = default;
};

class PullReception {
 public:
  enum class Result { kRejected = -1, kMoreExpected = 0, kPacketDone = 1, kFileDone = 2 };

  explicit PullReception(PullPort& port) : port_(port) {}

  Result HandleReport(ReportView report);

 private:
  struct Header;

  Result HandleHeader(ReportView report);
  Result HandleData(const Header& header);
  Result HandleContinuation(ReportView report);
  Result Acknowledge(bool valid, Result done);

  PullPort& port_;
  bool header_expected_ = true;
  std::size_t remaining_ = 0;
  std::uint8_t check_ = 0;
  std::uint8_t computed_ = 0;
};

}  // namespace gwq
