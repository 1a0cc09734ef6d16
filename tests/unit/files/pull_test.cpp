// SPDX-License-Identifier: MIT
// Pulling a file from the terminal, over the wire and onto the disk.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <libusb-1.0/libusb.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <numeric>

#include <gwq/files/pull.h>
#include <gwq/frame/transaction.h>
#include "support/temp_dir.h"
#include "support/terminal_rig.h"
#include "wire/frames.h"

namespace gwq::test {
namespace {

using wire::TransferPacket;

constexpr std::uint8_t kStartPacket = 1;
constexpr std::uint8_t kDataPacket = 2;
constexpr std::uint8_t kEndPacket = 3;

Bytes Pattern(std::size_t size) {
  Bytes bytes(size);
  std::iota(bytes.begin(), bytes.end(), std::uint8_t{3});
  return bytes;
}

class Pull : public TerminalRig {
 protected:
  int Run(int timeout_ms = 3000) { return Run(path_.string(), timeout_ms); }
  static int Run(std::string path, int timeout_ms = 3000) {
    std::string command(wire::kPullRequest);
    return TransProcHW(static_cast<int>(command.size()), command.data(), timeout_ms, path.data());
  }

  void ExpectRequest() { usb_.ExpectCommand(wire::kPullRequest); }
  void Reports(const Bytes& packet) {
    for (const Bytes& report : CutIntoReports(packet)) usb_.Answer(report);
  }
  void Accepted(const Bytes& packet) {
    Reports(packet);
    usb_.ExpectCommand(wire::kAccepted);
  }
  void Rejected(const Bytes& packet) {
    Reports(packet);
    usb_.ExpectCommand(wire::kRejected);
  }

  [[nodiscard]] bool FileIsThere() const { return std::filesystem::exists(path_); }
  [[nodiscard]] Bytes File() const { return BytesOf(ReadFile(path_)); }

  std::array<char, 4096> scratch_{};
  int scratch_length_ = 1024;
  TempDir directory_;
  std::filesystem::path path_ = directory_ / "pulled.png";
};

class PullOfSize : public Pull, public testing::WithParamInterface<std::size_t> {};

TEST_P(PullOfSize, OnePacketIsAcknowledgedOnceAndStored) {
  const Bytes content = Pattern(GetParam());
  ExpectRequest();
  Accepted(TransferPacket(kStartPacket, {}));
  Accepted(TransferPacket(kDataPacket, content));
  Accepted(TransferPacket(kEndPacket, {}));
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(File(), content);
  EXPECT_EQ(usb_.Count("close"), 1);
}

INSTANTIATE_TEST_SUITE_P(Sizes, PullOfSize,
                         testing::Values(0, 1, 1017, 1018, 1019, 2041, 2042, 2043, 3000, 200'000, 256'000));

TEST_F(Pull, AcknowledgementsAreWholeReportsByteForByte) {
  const Bytes accepted = {0x1B, 0x5B, 0x30, 0x52, 0x45, 0x53, 0x50, 0x4F, 0x4E, 0x53, 0x45, 0x02, 0x30, 0x03};
  const Bytes rejected = {0x1B, 0x5B, 0x30, 0x52, 0x45, 0x53, 0x50, 0x4F, 0x4E, 0x53, 0x45, 0x02, 0x31, 0x03};
  usb_.Answer(PaddedToReports(TransferPacket(kStartPacket, {}))).Answer(Bytes(1024, 0));
  EXPECT_EQ(Run(), -14);
  const Bytes sent = usb_.Sent();
  ASSERT_EQ(sent.size(), 3U * 1024);
  EXPECT_EQ(Bytes(sent.begin() + 1024, sent.begin() + 2048), PaddedToReports(accepted));
  EXPECT_EQ(Bytes(sent.begin() + 2048, sent.end()), PaddedToReports(rejected));
}

TEST_F(Pull, PacketsAreStoredOneBehindTheOther) {
  ExpectRequest();
  Accepted(TransferPacket(kDataPacket, Pattern(1500)));
  Accepted(TransferPacket(kDataPacket, BytesOf("middle")));
  Accepted(TransferPacket(kDataPacket, Pattern(3000)));
  Accepted(TransferPacket(kEndPacket, BytesOf("end payload is not stored")));
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(File(), Concat(Concat(Pattern(1500), BytesOf("middle")), Pattern(3000)));
}

TEST_F(Pull, StartMayComeAgainAndMayBeMissing) {
  ExpectRequest();
  Accepted(TransferPacket(kDataPacket, BytesOf("a")));
  Accepted(TransferPacket(kStartPacket, BytesOf("payload")));
  Accepted(TransferPacket(kDataPacket, BytesOf("b")));
  Accepted(TransferPacket(kEndPacket, {}));
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(File(), BytesOf("ab"));
}

TEST_F(Pull, PacketOfType0IsPassedOverInSilence) {
  ExpectRequest();
  Reports(TransferPacket(0, BytesOf("nothing")));
  Bytes wrong_check = TransferPacket(0, BytesOf("nothing"));
  wrong_check[2] ^= 1U;
  Reports(wrong_check);
  Accepted(TransferPacket(kEndPacket, {}));
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(File(), Bytes{});
}

TEST_F(Pull, ExistingFileIsWrittenAnew) {
  WriteFile(path_, "something longer than what comes");
  ExpectRequest();
  Accepted(TransferPacket(kDataPacket, BytesOf("new")));
  Accepted(TransferPacket(kEndPacket, {}));
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(File(), BytesOf("new"));
}

TEST_F(Pull, PausesTenMillisecondsAfterEachReportButTheFirst) {
  ExpectRequest();
  Accepted(TransferPacket(kStartPacket, {}));
  Accepted(TransferPacket(kDataPacket, Pattern(3000)));
  Accepted(TransferPacket(kEndPacket, {}));
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(SleptMs(), std::vector<std::int64_t>(4, 10)) << "five reports";
}

TEST_F(Pull, ReportInTwoTransfersIsPutTogether) {
  ExpectRequest();
  const Bytes report = PaddedToReports(TransferPacket(kDataPacket, Pattern(1018)));
  usb_.Answer(Bytes(report.begin(), report.begin() + 300))
      .Answer(Bytes(report.begin() + 300, report.end()), 2);
  usb_.ExpectCommand(wire::kAccepted);
  Accepted(TransferPacket(kEndPacket, {}));
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(File(), Pattern(1018));
}

TEST_F(Pull, WhatComesBeyondAReportIsLost) {
  ExpectRequest();
  const Bytes report = PaddedToReports(TransferPacket(kDataPacket, Pattern(1018)));
  usb_.Answer(Bytes(report.begin(), report.begin() + 1023));
  usb_.Answer(Concat({report.back()}, Bytes(1023, 0xEE)));
  usb_.ExpectCommand(wire::kAccepted);
  Accepted(TransferPacket(kEndPacket, {}));
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(File(), Pattern(1018));
}

TEST_F(Pull, AcknowledgementThatDoesNotGoOutIsIgnored) {
  ExpectRequest();
  usb_.NextOutMoves(1024);
  for (int i = 0; i < 5; ++i) usb_.NextOutMoves(0, LIBUSB_ERROR_TIMEOUT);
  Reports(TransferPacket(kDataPacket, BytesOf("x")));
  Accepted(TransferPacket(kEndPacket, {}));
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(File(), BytesOf("x"));
}

struct BadPacket {
  const char* name;
  Bytes packet;
};

Bytes WithByte(Bytes packet, std::size_t at, std::uint8_t value) {
  packet[at] = value;
  return packet;
}

Bytes WithWrongCheck(Bytes packet) {
  packet[2] ^= 0x80U;
  return packet;
}

// The length field alone; a header that announces more than it brings.
Bytes Announcing(std::uint8_t type, std::size_t length) {
  return {0x02,
          type,
          0,
          static_cast<std::uint8_t>(length >> 16U),
          static_cast<std::uint8_t>(length >> 8U),
          static_cast<std::uint8_t>(length)};
}

class PullRejects : public Pull, public testing::WithParamInterface<BadPacket> {};

TEST_P(PullRejects, PacketAndRemovesTheFile) {
  ExpectRequest();
  Accepted(TransferPacket(kDataPacket, BytesOf("good so far")));
  Rejected(GetParam().packet);
  EXPECT_EQ(Run(), -14);
  EXPECT_FALSE(FileIsThere());
  EXPECT_EQ(usb_.Count("close"), 1);
}

// What the path names may be a device of the system.
TEST_F(Pull, RejectionRemovesNothingButARegularFile) {
  const std::string device = directory_ / "device";
  std::filesystem::create_symlink("/dev/null", device);
  ExpectRequest();
  Rejected(Bytes(1024, 0));
  EXPECT_EQ(Run(device), -14);
  EXPECT_TRUE(std::filesystem::is_symlink(device));
  ASSERT_EQ(mkfifo((directory_ / "pipe").c_str(), 0600), 0);
  const int reader = open((directory_ / "pipe").c_str(), O_RDONLY | O_NONBLOCK);
  ExpectRequest();
  Rejected(Bytes(1024, 0));
  EXPECT_EQ(Run((directory_ / "pipe").string()), -14);
  EXPECT_TRUE(std::filesystem::exists(directory_ / "pipe"));
  close(reader);
}

TEST_P(PullRejects, FirstPacketAndRemovesTheFile) {
  ExpectRequest();
  Rejected(GetParam().packet);
  EXPECT_EQ(Run(), -14);
  EXPECT_FALSE(FileIsThere());
}

INSTANTIATE_TEST_SUITE_P(
    Packets, PullRejects,
    testing::Values(
        BadPacket{"NoStx", WithByte(TransferPacket(kDataPacket, BytesOf("x")), 0, 0x03)},
        BadPacket{"ZeroReport", Bytes(1024, 0)}, BadPacket{"Type4", TransferPacket(4, {})},
        BadPacket{"Type255", TransferPacket(255, {})},
        BadPacket{"Data256001", Announcing(kDataPacket, 256'001)},
        BadPacket{"DataFFFFFF", Announcing(kDataPacket, 0xFFFFFF)},
        BadPacket{"Type0Of256001", Announcing(0, 256'001)},
        BadPacket{"Start256001", Announcing(kStartPacket, 256'001)},
        BadPacket{"End256001", Announcing(kEndPacket, 256'001)},
        BadPacket{"StartCheck", WithWrongCheck(TransferPacket(kStartPacket, BytesOf("x")))},
        BadPacket{"EmptyStartCheck", WithWrongCheck(TransferPacket(kStartPacket, {}))},
        BadPacket{"EndCheck", WithWrongCheck(TransferPacket(kEndPacket, {}))},
        BadPacket{"EmptyDataCheck", WithWrongCheck(TransferPacket(kDataPacket, {}))},
        BadPacket{"ShortDataCheck", WithWrongCheck(TransferPacket(kDataPacket, Pattern(1018)))},
        BadPacket{"TwoReportsCheck", WithWrongCheck(TransferPacket(kDataPacket, Pattern(1019)))},
        BadPacket{"TwoFullReportsCheck", WithWrongCheck(TransferPacket(kDataPacket, Pattern(2042)))},
        BadPacket{"ThreeReportsCheck", WithWrongCheck(TransferPacket(kDataPacket, Pattern(3000)))}),
    kByName);

TEST_F(Pull, SilenceAfterSomeDataLeavesTheFile) {
  ExpectRequest();
  Accepted(TransferPacket(kDataPacket, BytesOf("part")));
  EXPECT_EQ(Run(), -11);
  EXPECT_EQ(File(), BytesOf("part"));
  EXPECT_EQ(usb_.Count("close"), 1);
}

TEST_F(Pull, SilenceInTheMiddleOfAPacketLeavesWhatHasCome) {
  ExpectRequest();
  const Bytes packet = TransferPacket(kDataPacket, Pattern(3000));
  Reports(Bytes(packet.begin(), packet.begin() + 2048));
  EXPECT_EQ(Run(), -11);
  EXPECT_EQ(File(), Pattern(1018 + 1024));
}

TEST_F(Pull, SilenceFromTheStartLeavesAnEmptyFile) {
  ExpectRequest();
  EXPECT_EQ(Run(), -11);
  EXPECT_EQ(File(), Bytes{});
}

TEST_F(Pull, ReportThatStaysShortIsNoReport) {
  ExpectRequest();
  usb_.Answer(TransferPacket(kDataPacket, BytesOf("short")));
  EXPECT_EQ(Run(), -11);
  EXPECT_EQ(File(), Bytes{});
}

TEST_F(Pull, DeviceThatVanishesGivesMinus11) {
  ExpectRequest();
  Accepted(TransferPacket(kDataPacket, BytesOf("part")));
  usb_.OnTransfer([this](const Transfer& transfer) {
    if (transfer.in && transfer.index == 1) usb_.Unplug();
  });
  EXPECT_EQ(Run(), -11);
  EXPECT_EQ(File(), BytesOf("part"));
}

TEST_F(Pull, FileThatCannotBeCreatedGivesMinus11AndNoAcknowledgement) {
  ExpectRequest();
  Reports(TransferPacket(kDataPacket, BytesOf("x")));
  EXPECT_EQ(Run((directory_ / "missing/pulled.png").string()), -11);
  EXPECT_EQ(usb_.Count("close"), 1);
  ExpectRequest();
  Reports(TransferPacket(kDataPacket, BytesOf("x")));
  EXPECT_EQ(Run(directory_.Path().string()), -11) << "a directory";
}

TEST_F(Pull, NullPathGivesMinus11) {
  ExpectRequest();
  Reports(TransferPacket(kDataPacket, BytesOf("x")));
  char command[] = "\x1B[0PULLFILE\x02/tmp/hw.png\x03";
  EXPECT_EQ(TransProcHW(0, command, 1000, nullptr), -11);
}

TEST_F(Pull, NullCommandGivesMinus10AndTouchesNoFile) {
  WriteFile(path_, "kept");
  usb_.Expect({});
  EXPECT_EQ(TransProcHW(5, nullptr, 1000, path_.string().data()), -10);
  EXPECT_EQ(File(), BytesOf("kept"));
  EXPECT_EQ(usb_.Count("close"), 1);
}

TEST_F(Pull, LinkThatDoesNotOpenGivesMinus3AndTouchesNoFile) {
  WriteFile(path_, "kept");
  usb_.Unplug();
  EXPECT_EQ(Run(), -3);
  EXPECT_EQ(File(), BytesOf("kept"));
  EXPECT_EQ(usb_.Count("list"), 2) << "both identities";
}

TEST_F(Pull, CancelWithTheCommandGivesMinus10) {
  ExpectRequest();
  usb_.OnTransfer([](const Transfer&) { CancelRead(); });
  EXPECT_EQ(Run(), -10);
  EXPECT_FALSE(FileIsThere());
}

TEST_F(Pull, CancelledReadGivesMinus11) {
  ExpectRequest();
  Accepted(TransferPacket(kDataPacket, BytesOf("part")));
  usb_.OnTransfer([](const Transfer& transfer) {
    if (transfer.in && transfer.index == 1) CancelRead();
  });
  EXPECT_EQ(Run(), -11);
  EXPECT_EQ(File(), BytesOf("part"));
}

// A device that sends empty packets for ever, or never ends; the cancel falls between two reads.
TEST_F(Pull, CancelAtAnyReportEndsItWithTheNextOne) {
  for (const Bytes& payload : {Bytes{}, BytesOf("more")}) {
    for (const int report : {0, 1, 5, 20}) {
      ScriptedUsb usb;
      usb.PlugTerminal();
      usb.OnTransfer([&](const Transfer& transfer) {
        if (transfer.in) usb.Answer(CutIntoReports(TransferPacket(kDataPacket, payload)).front());
        if (!transfer.in && transfer.index == 1 + report) CancelRead();  // with an acknowledgement
      });
      EXPECT_EQ(Run(), -11);
      EXPECT_LE(usb.Count("in"), report + 3);
      usb.OnTransfer({});
      while (!usb.Finished()) TransProcOnlyRead(0, 0, scratch_.data(), &scratch_length_, 0);
    }
  }
}

TEST_F(Pull, EndsWithMinus11BeyondTheMostBytes) {
  constexpr std::size_t kMax = 256U << 20U;
  const Bytes long_packet = TransferPacket(kDataPacket, Bytes(256'000, 0));
  std::size_t next = 0;
  const std::vector<Bytes> reports = CutIntoReports(long_packet);
  usb_.OnTransfer([&](const Transfer& transfer) {
    if (transfer.in) usb_.Answer(reports[next++ % reports.size()]);
  });
  EXPECT_EQ(Run("/dev/null"), -11);
  EXPECT_NEAR(static_cast<double>(next), static_cast<double>(kMax) / 1024,
              static_cast<double>(kMax) / 1024 / 100);
}

TEST_F(Pull, LengthOf0MeansTheCommandsTextLengthAndALongOneIsCut) {
  std::string command(2049, 'p');
  usb_.ExpectCommand(command);
  Accepted(TransferPacket(kEndPacket, {}));
  EXPECT_EQ(TransProcHW(0, command.data(), 1000, path_.string().data()), 0);
  EXPECT_EQ(usb_.Count("out"), 3 + 1);
}

TEST_F(Pull, TimeoutHoldsForEachReportInWholeSeconds) {
  ExpectRequest();
  Accepted(TransferPacket(kStartPacket, {}));
  usb_.Answer(PaddedToReports(TransferPacket(kDataPacket, BytesOf("slow"))), 9)
      .ExpectCommand(wire::kAccepted);
  EXPECT_EQ(Run(1999), -11);
  EXPECT_EQ(File(), BytesOf("slow")) << "1.8 s are within 1 s cut down, as the second has changed only once";
}

TEST_F(Pull, WritesNoLogLinesOfItsOwn) {
  ExpectRequest();
  Accepted(TransferPacket(kEndPacket, {}));
  const LogCapture log;
  EXPECT_EQ(Run(), 0);
  for (const std::string& message : log.Messages()) {
    EXPECT_EQ(message.find("TransP"), std::string::npos) << message;
  }
}

}  // namespace
}  // namespace gwq::test
