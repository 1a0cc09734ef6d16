// SPDX-License-Identifier: MIT
// The reception of pulled files from reports of any content.
#include "exact.h"
#include "files/internal/pull_reception.h"
#include "input.h"
#include "machine.h"

namespace gwq::fuzz {
namespace {

// Counts what reaches it, so that no report can bring more than it holds.
class CountingPort final : public PullPort {
 public:
  void Store(std::span<const std::uint8_t> payload) override {
    for (const std::uint8_t byte : payload) sum_ = sum_ + byte;
    stored_ += payload.size();
  }
  void Acknowledge(bool /*accepted*/) override { ++acknowledged_; }

  [[nodiscard]] std::size_t Stored() const { return stored_; }
  [[nodiscard]] int Acknowledged() const { return acknowledged_; }

 private:
  std::size_t stored_ = 0;
  int acknowledged_ = 0;
  volatile unsigned sum_ = 0;
};

}  // namespace
}  // namespace gwq::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace gwq::fuzz;
  using Result = gwq::PullReception::Result;
  Input input(data, size);
  CountingPort port;
  gwq::PullReception reception(port);
  // Reports are far longer than what counts in them: each comes as a length and its first bytes.
  for (int reports = 0; !input.Empty() && reports < 2000; ++reports) {
    const auto bytes = input.Take(input.Byte());
    Exact<std::uint8_t> report(gwq::kReportSize);
    std::copy(bytes.begin(), bytes.end(), report.data());
    const std::size_t stored = port.Stored();
    const int acknowledged = port.Acknowledged();
    const Result result = reception.HandleReport(gwq::ReportView(report.data(), gwq::kReportSize));
    Require(port.Stored() - stored <= gwq::kReportSize, "a report brought more than it holds");
    Require(port.Acknowledged() - acknowledged == (result == Result::kMoreExpected ? 0 : 1),
            "packets and acknowledgements differ");
    if (result == Result::kRejected || result == Result::kFileDone) break;
  }
  return 0;
}
