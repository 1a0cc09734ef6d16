// SPDX-License-Identifier: MIT
// Recordings that are damaged, or were never any.
#include <gtest/gtest.h>

#include <random>
#include <stdexcept>
#include <string>

#include "recording/capture.h"
#include "recording/recorder.h"
#include "recording/recording.h"
#include "recording/replayed_line.h"
#include "support/temp_dir.h"
#include "unit/terminal/recording/samples.h"

namespace gwq::terminal::test {

using namespace recording;
namespace {

using gwq::test::ReadFile;
using gwq::test::TempDir;

Bytes Recorded(const std::string& name) {
  const TempDir dir;
  const std::string path = dir / name;
  Recorder recorder(path, false);
  recorder.Plugged({0x12, 1, 0, 2, 0, 0, 0, 0x40, 0x34, 0x12, 0x78, 0x56, 0, 1, 1, 2, 0, 1}, {9, 2});
  const Bytes out = ToBytes("\033S0307\r\n");
  const Bytes in(kReport, 0x20);
  recorder.Begin({&recorder, 1}, {TransferType::kInterrupt, 0x02, out});
  recorder.End({&recorder, 1}, {0, out.size(), {}});
  recorder.Begin({&recorder, 2}, {TransferType::kInterrupt, 0x81, in});
  recorder.End({&recorder, 2}, {0, 40, std::span(in).first(40)});
  recorder.Serial(true, ToBytes("123456\r"));
  return ToBytes(ReadFile(path));
}

// A capture in the older form, of a machine with the other byte order.
Bytes Pcap() {
  Bytes file = {0xA1, 0xB2, 0xC3, 0xD4, 0, 2, 0, 4, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 4, 0, 0, 0, 0, 189};
  for (const char event : {'S', 'C'}) {
    const Bytes record = {0, 0, 0, 1, 0, 0, 0, 2, 0, 0, 0, 50, 0, 0, 0, 50};
    Bytes packet(50);
    packet[7] = 1;
    packet[8] = static_cast<std::uint8_t>(event);
    packet[9] = 1;
    packet[10] = 0x02;
    packet[11] = 5;
    packet[13] = 1;
    packet[14] = '-';
    packet[35] = packet[39] = 2;
    file.insert(file.end(), record.begin(), record.end());
    file.insert(file.end(), packet.begin(), packet.end());
  }
  return file;
}

// Either it is a recording, which can be replayed then, or it is told what is wrong.
std::string Problem(const Bytes& file) {
  try {
    Recording recording = ParseRecording(file, BusAddress{1, 5});
    ReplayedLine line(std::move(recording.transfers), true, [](const std::string&) {});
    line.Receive(ToBytes("\033S0307\r\n"), Time{0});
    while (line.TakeAnswer()) {
    }
    line.Finish();
    return "";
  } catch (const std::runtime_error& error) {
    EXPECT_STRNE(error.what(), "");
    return error.what();
  }
}

std::vector<Bytes> Samples() {
  return {Recorded("a.txt"), Recorded("a.pcapng"), Pcap()};
}

TEST(Garbage, SamplesAreGood) {
  for (const Bytes& sample : Samples()) EXPECT_EQ(Problem(sample), "");
}

TEST(Garbage, FilesThatEndTooEarlyAreRefused) {
  for (const Bytes& sample : Samples()) {
    int good = 0;
    for (std::size_t size = 0; size < sample.size(); ++size)
      good += Problem({sample.begin(), sample.begin() + std::ptrdiff_t(size)}).empty() ? 1 : 0;
    // where a packet, a line or a transfer ends
    EXPECT_LT(good, 12);
  }
}

TEST(Garbage, FlippedBitsAndForeignBytesDoNoHarm) {
  std::mt19937 random(1);
  for (const Bytes& sample : Samples()) {
    for (int i = 0; i < 3000; ++i) {
      Bytes file = sample;
      for (std::size_t count = 1 + random() % 4; count > 0; --count) {
        std::uint8_t& byte = file[random() % file.size()];
        byte = random() % 2 == 0 ? static_cast<std::uint8_t>(byte ^ (1U << random() % 8))
                                 : static_cast<std::uint8_t>(random());
      }
      static_cast<void>(Problem(file));
    }
  }
}

TEST(Garbage, HugeLengthsEverywhereDoNoHarm) {
  for (const Bytes& sample : Samples()) {
    for (std::size_t at = 0; at + 4 <= sample.size(); ++at) {
      for (const std::uint8_t value : Bytes{0xFF, 0x7F, 0x80}) {
        Bytes file = sample;
        file[at] = file[at + 3] = value;
        file[at + 1] = file[at + 2] = 0xFF;
        static_cast<void>(Problem(file));
      }
    }
  }
}

TEST(Garbage, AnythingIsNoRecording) {
  EXPECT_NE(Problem({}).find("it is no recording"), std::string::npos);
  EXPECT_NE(Problem(ToBytes("hello")).find("it is no recording"), std::string::npos);
  EXPECT_NE(Problem(Bytes(4096)).find("it is no recording"), std::string::npos);
}

TEST(Garbage, WhatIsCapturedInPartIsTold) {
  Bytes file = Pcap();
  file[24 + 15] = 60;  // the packet was longer
  file[24 + 16 + 35] = 12;
  file[24 + 66 + 16 + 35] = 12;
  EXPECT_NE(Problem(file).find("-s 0"), std::string::npos);
}

}  // namespace
}  // namespace gwq::terminal::test
