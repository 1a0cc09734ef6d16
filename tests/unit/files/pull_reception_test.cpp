// SPDX-License-Identifier: MIT
// The reception of pulled packets against a plain model of it, over random streams.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "files/internal/pull_reception.h"
#include "support/bytes.h"
#include "wire/frames.h"

namespace gwq::test {
namespace {

class Recorder final : public PullPort {
 public:
  void Store(std::span<const std::uint8_t> payload) override {
    EXPECT_FALSE(payload.empty()) << "writes of 0 bytes are left out";
    file.insert(file.end(), payload.begin(), payload.end());
  }
  void Acknowledge(bool accepted) override { acknowledged += accepted ? '+' : '-'; }

  Bytes file;
  std::string acknowledged;
};

// Byte by byte and with nothing shared with the reception.
class Model {
 public:
  int Take(const Bytes& report) {
    if (left_ > 0) return Continue(report);
    if (report[0] != 2 || report[1] > 3) return Say(false, -1);
    const unsigned length =
        static_cast<unsigned>(report[3] << 16) + static_cast<unsigned>(report[4] << 8) + report[5];
    if (length > 256'000) return Say(false, -1);
    if (report[1] == 0) return 0;
    const bool is_data = report[1] == 2;
    sum_ = report[2];
    unsigned left = length;
    for (std::size_t i = 6; i < 1024 && left > 0; ++i, --left) Fold(report[i], is_data);
    if (is_data && left > 0) {
      left_ = left;
      return 0;
    }
    return Say(sum_ == 0, sum_ != 0 ? -1 : report[1] == 3 ? 2 : 1);
  }

  Bytes file;
  std::string acknowledged;

 private:
  int Continue(const Bytes& report) {
    const std::size_t before = file.size();
    const bool last = left_ <= 1024;
    for (std::size_t i = 0; i < 1024 && left_ > 0; ++i, --left_) Fold(report[i], true);
    if (!last) return 0;
    if (sum_ != 0) file.resize(before);
    return Say(sum_ == 0, sum_ == 0 ? 1 : -1);
  }
  // The check byte folded over the payload comes out as zero.
  void Fold(std::uint8_t byte, bool keep) {
    sum_ = static_cast<std::uint8_t>(sum_ ^ byte);
    if (keep) file.push_back(byte);
  }
  int Say(bool accepted, int result) {
    acknowledged += accepted ? '+' : '-';
    return result;
  }

  unsigned left_ = 0;
  std::uint8_t sum_ = 0;
};

class Generator {
 public:
  explicit Generator(unsigned seed) : random_(seed) {}

  unsigned Below(unsigned limit) { return std::uniform_int_distribution<unsigned>(0, limit - 1)(random_); }

  Bytes Payload() {
    static constexpr unsigned kEdges[] = {0, 1, 1017, 1018, 1019, 2041, 2042, 2043, 3066, 3067};
    const unsigned size = Below(2) == 0 ? kEdges[Below(std::size(kEdges))] : Below(6000);
    Bytes bytes(size);
    for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(Below(256));
    return bytes;
  }

  std::vector<Bytes> Packet() {
    const auto type = static_cast<std::uint8_t>(Below(8) == 0 ? Below(6) : 2);
    std::vector<Bytes> reports = CutIntoReports(wire::TransferPacket(type, Payload()));
    if (Below(4) == 0) Damage(reports);
    return reports;
  }

 private:
  void Damage(std::vector<Bytes>& reports) {
    Bytes& report = reports[Below(static_cast<unsigned>(reports.size()))];
    const unsigned where = Below(3) == 0 ? Below(1024) : Below(8);
    report[where] = static_cast<std::uint8_t>(report[where] ^ (1U << Below(8)));
    if (Below(8) == 0) reports.pop_back();
  }

  std::mt19937 random_;
};

TEST(PullReception, DoesWhatTheModelDoesOnRandomStreams) {
  for (unsigned seed = 1; seed <= 300; ++seed) {
    Generator generator(seed);
    Recorder recorder;
    PullReception reception(recorder);
    Model model;
    for (int packet = 0; packet < 12; ++packet) {
      for (const Bytes& report : generator.Packet()) {
        const int expected = model.Take(report);
        ASSERT_EQ(static_cast<int>(reception.HandleReport(ReportView(report.data(), 1024))), expected)
            << "seed " << seed;
      }
    }
    ASSERT_EQ(recorder.acknowledged, model.acknowledged) << "seed " << seed;
    ASSERT_EQ(recorder.file, model.file) << "seed " << seed;
  }
}

TEST(PullReception, AnyFileInPacketsOfAnySizeArrivesWhole) {
  for (unsigned seed = 1; seed <= 100; ++seed) {
    Generator generator(seed);
    Recorder recorder;
    PullReception reception(recorder);
    Bytes file;
    for (int packet = 0; packet < 8; ++packet) {
      const Bytes payload = generator.Payload();
      file = Concat(file, payload);
      const auto reports = CutIntoReports(wire::TransferPacket(2, payload));
      for (const Bytes& report : reports) {
        const auto result = reception.HandleReport(ReportView(report.data(), 1024));
        EXPECT_EQ(result, &report == &reports.back() ? PullReception::Result::kPacketDone
                                                     : PullReception::Result::kMoreExpected);
      }
    }
    ASSERT_EQ(recorder.file, file) << "seed " << seed;
    ASSERT_EQ(recorder.acknowledged, std::string(8, '+')) << "seed " << seed;
  }
}

TEST(PullReception, ShortPacketIsStoredBeforeItsCheckAndALongOnesLastReportAfterIt) {
  Recorder recorder;
  PullReception reception(recorder);
  Bytes short_packet = wire::TransferPacket(2, BytesOf("abc"));
  short_packet[2] ^= 1U;
  EXPECT_EQ(reception.HandleReport(ReportView(PaddedToReports(short_packet).data(), 1024)),
            PullReception::Result::kRejected);
  EXPECT_EQ(recorder.file, BytesOf("abc"));

  Bytes long_packet = wire::TransferPacket(2, Bytes(1018 + 5, 'x'));
  long_packet[2] ^= 1U;
  const auto reports = CutIntoReports(long_packet);
  EXPECT_EQ(reception.HandleReport(ReportView(reports[0].data(), 1024)),
            PullReception::Result::kMoreExpected);
  EXPECT_EQ(reception.HandleReport(ReportView(reports[1].data(), 1024)), PullReception::Result::kRejected);
  EXPECT_EQ(recorder.file.size(), 3U + 1018U) << "the last 5 bytes are left out";
  EXPECT_EQ(recorder.acknowledged, "--");
}

TEST(PullReception, ExpectsAHeaderAgainAfterARejectedPacket) {
  Recorder recorder;
  PullReception reception(recorder);
  Bytes packet = wire::TransferPacket(2, Bytes(2000, 'x'));
  packet[2] ^= 1U;
  for (const Bytes& report : CutIntoReports(packet)) reception.HandleReport(ReportView(report.data(), 1024));
  const Bytes end = PaddedToReports(wire::TransferPacket(3, {}));
  EXPECT_EQ(reception.HandleReport(ReportView(end.data(), 1024)), PullReception::Result::kFileDone);
  EXPECT_EQ(recorder.acknowledged, "-+");
}

}  // namespace
}  // namespace gwq::test
