// SPDX-License-Identifier: MIT
// Files that the host fetches.
#include <gtest/gtest.h>

#include "unit/terminal/device/files/file_rig.h"

namespace gwq::terminal::test {

using namespace protocol;
using namespace device;
namespace {

const std::string kPullX = "\033[0PULLFILE\x02/tmp/x\x03";

TEST(Pull, SendsAPacketAtATimeAndWaitsForEachAcknowledgement) {
  FileRig host;
  host.store.files["/tmp/x"] = "abc";
  EXPECT_EQ(host.Ask(kPullX), std::string("\x02\x02\x60\x00\x00\x03\x61\x62\x63", 9));
  host.rig.Wait(9s);
  EXPECT_EQ(host.rig.Answer(), "(none)");
  EXPECT_EQ(host.Ask(wire::kAccepted), std::string("\x02\x03\x00\x00\x00\x00", 6));
  EXPECT_EQ(host.Ask(wire::kAccepted), "(none)");
  EXPECT_EQ(host.rig.device().NextDeadline(), std::nullopt);
}

TEST(Pull, OfEverySizeArrivesWhole) {
  for (const Line line : {Line::kUsb, Line::kSerial}) {
    for (const std::size_t size : {0U, 1U, 1017U, 1018U, 1019U, 2042U, 2043U, 3000U, 65535U, 65536U, 65537U,
                                   199999U, 200000U, 200001U, 250000U}) {
      FileRig host(line);
      host.store.files["/tmp/x"] = RandomContent(size);
      const FileRig::Pulled pulled = host.Pull("/tmp/x");
      EXPECT_TRUE(pulled.complete) << size;
      EXPECT_TRUE(pulled.content == host.store.files["/tmp/x"]) << size;
      EXPECT_EQ(pulled.packets.size(), (size + 65535) / 65536) << size;
    }
  }
}

TEST(Pull, OfAMissingFileIsRefused) {
  FileRig host;
  EXPECT_EQ(host.Ask(kPullX), wire::kRefused);
  EXPECT_EQ(host.Ask(wire::kRejected), "(none)");
}

TEST(Pull, FindsNamesInGbkAndInUtf8) {
  FileRig host;
  host.store.files["/tmp/张三.png"] = "face";
  EXPECT_EQ(host.Pull("/tmp/\xD5\xC5\xC8\xFD.png").content, "face");
  EXPECT_EQ(host.Pull("/tmp/张三.png").content, "face");
}

TEST(Pull, EndsWithARejectionAndTakesBackTheRestOfThePacket) {
  FileRig host;
  host.store.files["/tmp/x"] = RandomContent(200000);
  host.rig.Send(kPullX);
  EXPECT_FALSE(host.rig.device().TakeWithdrawal());
  host.rig.Send(wire::kRejected);
  EXPECT_TRUE(host.rig.device().TakeWithdrawal());
  EXPECT_FALSE(host.rig.device().TakeWithdrawal());
  EXPECT_EQ(host.rig.Answer(), "(none)");
  EXPECT_EQ(host.Ask(wire::kAccepted), "(none)");
}

TEST(Pull, EndsWhenTheHostVanishes) {
  FileRig host;
  host.store.files["/tmp/x"] = "abc";
  host.rig.Send(kPullX);
  host.rig.Wait(9999ms);
  EXPECT_FALSE(host.rig.device().TakeWithdrawal());
  host.rig.Wait(1ms);
  EXPECT_TRUE(host.rig.device().TakeWithdrawal());
  EXPECT_EQ(host.rig.device().NextDeadline(), std::nullopt);
  EXPECT_EQ(host.rig.Answer(), "(none)");
  EXPECT_EQ(host.Ask(wire::kAccepted), "(none)");
}

TEST(Pull, EndsWithAnyOtherCommand) {
  FileRig host;
  host.store.files["/tmp/x"] = "abc";
  host.rig.Send(kPullX);
  EXPECT_EQ(host.Ask(wire::kGetVersion), "\x02V1.0.0|20240615\x03");
  EXPECT_EQ(host.Ask(wire::kAccepted), "(none)");
}

TEST(Pull, BeginsAnewWithAnotherRequest) {
  FileRig host;
  host.store.files["/tmp/x"] = "abc";
  host.store.files["/tmp/y"] = "defg";
  host.rig.Send(kPullX);
  EXPECT_EQ(host.Pull("/tmp/y").content, "defg");
}

TEST(Pull, EndsSilentlyWhenTheFileCannotBeRead) {
  FileRig host;
  host.store.files["/tmp/x"] = "abc";
  host.store.readable = false;
  EXPECT_EQ(host.Ask(kPullX), "(none)");
  EXPECT_EQ(host.rig.device().NextDeadline(), std::nullopt);
}

TEST(Pull, AcknowledgementOfNothingIsNotAnswered) {
  FileRig host;
  EXPECT_EQ(host.Ask(wire::kAccepted), "(none)");
  EXPECT_EQ(host.Ask(wire::kRejected), "(none)");
}

TEST(Pull, IsToldInTheTrace) {
  FileRig host;
  host.store.files["/tmp/x"] = std::string(12345, 'x');
  host.Pull("/tmp/x");
  EXPECT_EQ(host.rig.Trace(),
            "host: PULLFILE /tmp/x\nterminal: answer: data packet 12,345 bytes\n"
            "host: RESPONSE, accepted\nterminal: answer: end packet\n"
            "host: RESPONSE, accepted\nnote: pull /tmp/x: 12,345 bytes in 1 packet\n");
}

FileFaults Faulty(PullFaults pull) {
  FileFaults faults;
  faults.pull = std::move(pull);
  return faults;
}

TEST(PullFaults, WrongCheckBytes) {
  PullFaults pull;
  pull.bad_check = {"data:2"};
  FileRig host(Line::kUsb, Faulty(pull));
  host.store.files["/tmp/x"] = RandomContent(100000);
  const FileRig::Pulled pulled = host.Pull("/tmp/x");
  EXPECT_FALSE(pulled.complete);
  EXPECT_EQ(pulled.packets, std::vector<std::size_t>{65536});
}

TEST(PullFaults, WrongCheckByteOfTheEnd) {
  PullFaults pull;
  pull.bad_check = {"end"};
  FileRig host(Line::kUsb, Faulty(pull));
  host.store.files["/tmp/x"] = "abc";
  const FileRig::Pulled pulled = host.Pull("/tmp/x");
  EXPECT_EQ(pulled.content, "abc");
  EXPECT_FALSE(pulled.complete);
}

TEST(PullFaults, AnnouncedLengthAndTypeAreThoseOfTheFirstPacketOnly) {
  PullFaults pull;
  pull.announce_length = 256001;
  pull.packet_type = 4;
  FileRig host(Line::kUsb, Faulty(pull));
  host.store.files["/tmp/x"] = "abc";
  EXPECT_EQ(host.Ask(kPullX), std::string("\x02\x04\x60\x03\xE8\x01\x61\x62\x63", 9));
  EXPECT_EQ(host.Ask(wire::kAccepted), std::string("\x02\x03\x00\x00\x00\x00", 6));
}

TEST(PullFaults, StopsAfterSoManyReports) {
  const std::string content = RandomContent(65536 + 3000);
  for (std::size_t reports = 0; reports < 69; ++reports) {
    PullFaults pull;
    pull.stop_after_reports = static_cast<std::uint32_t>(reports);
    FileRig host(Line::kUsb, Faulty(pull));
    host.store.files["/tmp/x"] = content;
    std::size_t got = 0;
    for (std::string packet = host.Ask(kPullX); packet != "(none)"; packet = host.Ask(wire::kAccepted))
      got += (packet.size() + 1023) / 1024;
    EXPECT_EQ(got, reports);
    EXPECT_EQ(host.rig.device().NextDeadline(), std::nullopt);
  }
}

TEST(PullFaults, EmptyPacketsComeFirstAndOnlyTypeZeroWaitsForNothing) {
  PullFaults pull;
  pull.empty_packets_first = {0, 1};
  FileRig host(Line::kUsb, Faulty(pull));
  host.store.files["/tmp/x"] = "abc";
  host.rig.Send(kPullX);
  EXPECT_EQ(host.rig.Answer(), std::string(2, '\0').replace(0, 1, "\x02") + std::string(4, '\0'));
  EXPECT_EQ(host.rig.Answer(), std::string("\x02\x01\x00\x00\x00\x00", 6));
  EXPECT_EQ(host.rig.Answer(), "(none)");
  EXPECT_EQ(host.Ask(wire::kAccepted).substr(6), "abc");
}

}  // namespace
}  // namespace gwq::terminal::test
