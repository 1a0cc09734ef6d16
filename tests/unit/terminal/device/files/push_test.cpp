// SPDX-License-Identifier: MIT
// Files that the host sends.
#include <gtest/gtest.h>

#include <algorithm>

#include "unit/terminal/device/files/file_rig.h"

namespace gwq::terminal::test {

using namespace device;
namespace {

using Answers = std::vector<std::string>;

bool AllDone(const Answers& answers) {
  return std::all_of(answers.begin(), answers.end(),
                     [](const std::string& answer) { return answer == wire::kDone; });
}

TEST(Push, IsAnsweredStepByStepAndStoredAtItsEnd) {
  FileRig host;
  EXPECT_EQ(host.Ask(wire::kModeChange), wire::kDone);
  EXPECT_EQ(host.Ask(wire::kPushStart), wire::kDone);
  EXPECT_EQ(host.Ask(std::string("\x02\x02\x60\x00\x00\x03\x61\x62\x63", 9)), wire::kDone);
  EXPECT_TRUE(host.store.files.empty());
  EXPECT_EQ(host.Ask(std::string("\x02\x03\xEE\x00\x00\x07\xFF/tmp/x", 13)), wire::kDone);
  EXPECT_EQ(host.store.files, (std::map<std::string, std::string>{{"/tmp/x", "abc"}}));
  EXPECT_EQ(host.store.writers, 0);
}

TEST(Push, OfEverySizeArrivesWhole) {
  for (const Line line : {Line::kUsb, Line::kSerial}) {
    for (const std::size_t size : {0U, 1U, 1017U, 1018U, 1019U, 199999U, 200000U, 200001U, 400000U}) {
      FileRig host(line);
      const std::string content = RandomContent(size);
      const Answers answers = host.Push(255, "/tmp/doc.pdf", content);
      EXPECT_TRUE(AllDone(answers)) << size;
      EXPECT_EQ(answers.size(), 3 + size / 200000 + (size % 200000 > 0 || size >= 200000 ? 1 : 0)) << size;
      ASSERT_TRUE(host.store.files.contains("/tmp/doc.pdf")) << size;
      EXPECT_TRUE(host.store.files["/tmp/doc.pdf"] == content) << size;
    }
  }
}

TEST(Push, OfZerosAndOfMarksArrivesWhole) {
  for (const char byte : {'\0', '\x02', '\x03', '\x1B', '\x82'}) {
    FileRig host;
    const std::string content(5000, byte);
    EXPECT_TRUE(AllDone(host.Push(255, "/tmp/x", content)));
    EXPECT_TRUE(host.store.files["/tmp/x"] == content);
  }
}

TEST(Push, OverSerialMayBeCutAtEveryPlace) {
  const std::string content("\0\x02\x01\x1B[0HIDCHANGE\x03\x82\0", 17);
  const Answers packets{std::string(wire::kPushStart), Packet(2, content), Packet(2, ""),
                        EndPacket(255, "/tmp/x")};
  for (std::size_t cut = 0; cut <= 24; ++cut) {
    FileRig host(Line::kSerial);
    ASSERT_EQ(host.Ask(wire::kModeChange), wire::kDone);
    for (const std::string& packet : packets) {
      host.rig.Feed(packet.substr(0, cut));
      host.rig.Wait(900ms);
      host.rig.Feed(packet.substr(std::min(cut, packet.size())));
      EXPECT_EQ(host.rig.Answer(), wire::kDone) << "cut at " << cut;
      EXPECT_EQ(host.rig.Answer(), "(none)") << "cut at " << cut;
    }
    EXPECT_EQ(host.store.files["/tmp/x"], content) << "cut at " << cut;
  }
}

TEST(Push, MayComeByteByByte) {
  FileRig host(Line::kSerial);
  ASSERT_EQ(host.Ask(wire::kModeChange), wire::kDone);
  for (const std::string& packet :
       {std::string(wire::kPushStart), Packet(2, "hello"), EndPacket(255, "/tmp/x")}) {
    for (const char byte : packet) host.rig.Feed(std::string(1, byte));
    EXPECT_EQ(host.rig.Answer(), wire::kDone);
  }
  EXPECT_EQ(host.store.files["/tmp/x"], "hello");
}

TEST(Push, OverUsbMayComeWithoutPaddingAndInLargerTransfers) {
  FileRig host;
  const std::string content = RandomContent(5000);
  ASSERT_EQ(host.Ask(wire::kModeChange), wire::kDone);
  for (const std::string& packet :
       {std::string(wire::kPushStart), Packet(2, content), EndPacket(255, "/tmp/x")}) {
    host.rig.Feed(packet);
    EXPECT_EQ(host.rig.Answer(), wire::kDone);
  }
  EXPECT_TRUE(host.store.files["/tmp/x"] == content);
}

TEST(Push, TakesAStartPacketCutAtItsFirstZero) {
  FileRig host;
  ASSERT_EQ(host.Ask(wire::kModeChange), wire::kDone);
  EXPECT_EQ(host.Ask("\x02\x01"), wire::kDone);
}

TEST(Push, RefusesDataPacketsCutAtTheirFirstZero) {
  FileRig host;
  host.BeginPush();
  EXPECT_EQ(host.Ask("\x02\x02\x41"), wire::kRefused);
}

TEST(Push, AcceptsCutPacketsWhenToldTo) {
  FileFaults faults;
  faults.accept_cut_packets = true;
  FileRig host(Line::kUsb, faults);
  host.BeginPush();
  EXPECT_EQ(host.Ask("\x02\x02\x41"), wire::kDone);
  EXPECT_EQ(host.Ask("\x02\x03\x42"), wire::kDone);
  EXPECT_TRUE(host.store.files.empty());
  EXPECT_EQ(host.store.writers, 0);
  EXPECT_EQ(host.Ask(wire::kGetVersion), "\x02V1.0.0|20240615\x03");
}

TEST(Push, GoesWhereItsTypeSays) {
  const std::vector<std::pair<int, std::string>> places{
      {0, "/mnt/internal_sd/media/picture/a.b"}, {1, "/mnt/internal_sd/media/video/a.b"},
      {2, "/mnt/sdcard/media/headphoto/a.b"},    {3, "/mnt/sdcard/media/file/a.b"},
      {4, "/mnt/sdcard/media/data/update.dat"},  {9, "/mnt/sdcard/media/type9/a.b"},
      {254, "/mnt/sdcard/media/type254/a.b"}};
  for (const auto& [type, place] : places) {
    FileRig host;
    EXPECT_TRUE(AllDone(host.Push(type, "a.b", "x"))) << type;
    EXPECT_EQ(host.store.files, (std::map<std::string, std::string>{{place, "x"}}));
  }
}

TEST(Push, TakesNamesInGbkAndInUtf8) {
  FileRig host;
  EXPECT_TRUE(AllDone(host.Push(255, "/tmp/\xD5\xC5\xC8\xFD.png", "gbk")));
  EXPECT_EQ(host.store.files["/tmp/张三.png"], "gbk");
  EXPECT_TRUE(AllDone(host.Push(255, "/tmp/张三.png", "utf-8")));
  EXPECT_EQ(host.store.files["/tmp/张三.png"], "utf-8");
  EXPECT_EQ(host.store.files.size(), 1U);
}

TEST(Push, RefusesNamesThatAreNoNames) {
  const std::vector<std::pair<int, std::string>> names{
      {0, ""},   {0, "a/b"},      {0, ".."}, {0, "."},      {0, std::string("a\0b", 3)},
      {0, "\n"}, {0, "\xFF\xFF"}, {255, ""}, {255, "tmp/x"}};
  for (const auto& [type, name] : names) {
    FileRig host;
    const Answers answers = host.Push(type, name, "x");
    EXPECT_EQ(answers, (Answers{std::string(wire::kDone), std::string(wire::kDone), std::string(wire::kDone),
                                std::string(wire::kRefused)}))
        << name;
    EXPECT_TRUE(host.store.files.empty());
  }
}

TEST(Push, RefusesAnEndPacketWithoutPayloadOrWithTooMuch) {
  for (const std::string& packet : {Packet(3, ""), EndPacket(255, "/tmp/" + std::string(5000, 'x'))}) {
    FileRig host;
    host.BeginPush();
    EXPECT_EQ(host.Ask(packet), wire::kRefused);
    EXPECT_TRUE(host.store.files.empty());
  }
}

TEST(Push, IsRefusedFromAWrongCheckOnUntilItStartsAnew) {
  FileRig host;
  host.BeginPush();
  std::string damaged = Packet(2, "abc");
  damaged[2] ^= 1;
  EXPECT_EQ(host.Ask(damaged), wire::kRefused);
  EXPECT_EQ(host.Ask(Packet(2, "abc")), wire::kRefused);
  EXPECT_EQ(host.Ask(wire::kPushStart), wire::kDone);
  EXPECT_EQ(host.Ask(Packet(2, "def")), wire::kDone);
  EXPECT_EQ(host.Ask(EndPacket(255, "/tmp/x")), wire::kDone);
  EXPECT_EQ(host.store.files["/tmp/x"], "def");
}

TEST(Push, NeedsAStartPacket) {
  for (const std::string& packet : {Packet(2, "abc"), EndPacket(255, "/tmp/x")}) {
    FileRig host;
    ASSERT_EQ(host.Ask(wire::kModeChange), wire::kDone);
    EXPECT_EQ(host.Ask(packet), wire::kRefused);
    EXPECT_TRUE(host.store.files.empty());
  }
}

TEST(Push, RefusesPacketsOfUnknownType) {
  for (const int type : {0, 4, 0x2F, 0x40, 0xFF}) {
    FileRig host;
    host.BeginPush();
    EXPECT_EQ(host.Ask(Packet(type, RandomContent(3000))), wire::kRefused) << type;
    EXPECT_EQ(host.Ask(wire::kPushStart), wire::kDone) << type;
  }
}

TEST(Push, FailsWhenThereIsNoRoomAndLeavesTheOldFile) {
  FileRig host;
  host.store.files["/tmp/x"] = "old";
  host.store.room = 1000;
  const Answers answers = host.Push(255, "/tmp/x", std::string(1001, 'x'));
  EXPECT_EQ(answers,
            (Answers{std::string(wire::kDone), std::string(wire::kDone), std::string(wire::kFailed)}));
  EXPECT_EQ(host.store.files["/tmp/x"], "old");
  EXPECT_EQ(host.store.writers, 0);
}

TEST(Push, FailsAtItsStartWhenNothingCanBeWritten) {
  FileRig host;
  host.store.writable = false;
  EXPECT_EQ(host.Push(255, "/tmp/x", "x"), (Answers{std::string(wire::kDone), std::string(wire::kFailed)}));
}

TEST(Push, WithoutStorageFails) {
  Rig rig;
  EXPECT_EQ(rig.Ask(wire::kModeChange), wire::kDone);
  EXPECT_EQ(rig.Ask(wire::kPushStart), wire::kFailed);
}

TEST(Push, IsOverWithAnyOtherCommand) {
  for (const std::string& command : {std::string(wire::kGetVersion), std::string("\x82"),
                                     std::string(wire::kReadDeviceIdFrame), std::string("?")}) {
    for (const Line line : {Line::kUsb, Line::kSerial}) {
      FileRig host(line);
      host.rig.customer.actions = {WalksAway()};
      host.BeginPush();
      ASSERT_EQ(host.store.writers, 1);
      host.rig.Send(command);
      EXPECT_EQ(host.store.writers, 0);
      while (host.rig.Answer() != "(none)") continue;
      host.rig.Send(EndPacket(255, "/tmp/x"));
      EXPECT_TRUE(host.store.files.empty());
    }
  }
}

TEST(Push, IsOverAfterItsEndPacket) {
  FileRig host;
  EXPECT_TRUE(AllDone(host.Push(255, "/tmp/x", "x")));
  EXPECT_NE(host.Ask(wire::kPushStart), wire::kDone);
}

TEST(Push, IsOverAfterHalfAMinuteOfSilence) {
  FileRig host;
  host.BeginPush();
  host.rig.Wait(29999ms);
  EXPECT_EQ(host.store.writers, 1);
  host.rig.Wait(1ms);
  EXPECT_EQ(host.store.writers, 0);
  EXPECT_EQ(host.rig.device().NextDeadline(), std::nullopt);
  EXPECT_EQ(host.rig.Answer(), "(none)");
}

TEST(Push, IsOverWhenAPacketIsCutOff) {
  const std::string packet = Packet(2, std::string(2000, 'x'));
  for (const std::size_t size : {1U, 5U, 6U, 1024U}) {
    FileRig host;
    host.BeginPush();
    host.rig.Feed(packet.substr(0, size));
    host.rig.Wait(1000ms);
    EXPECT_EQ(host.store.writers, 0) << size;
    EXPECT_EQ(host.rig.Answer(), "(none)") << size;
    EXPECT_EQ(host.Ask(wire::kGetVersion), "\x02V1.0.0|20240615\x03") << size;
  }
}

TEST(Push, BeginsAnewWithAnotherModeChange) {
  FileRig host;
  host.BeginPush();
  ASSERT_EQ(host.Ask(Packet(2, "abc")), wire::kDone);
  EXPECT_TRUE(AllDone(host.Push(255, "/tmp/x", "new")));
  EXPECT_EQ(host.store.files["/tmp/x"], "new");
}

TEST(Push, PacketsWithoutModeChangeAreNoCommand) {
  FileRig host;
  for (const std::string& packet :
       {std::string(wire::kPushStart), Packet(2, "abc"), EndPacket(255, "/tmp/x")}) {
    host.rig.Send(packet);
    for (std::string answer = host.rig.Answer(); answer != "(none)"; answer = host.rig.Answer())
      EXPECT_NE(answer, wire::kDone);
  }
  EXPECT_TRUE(host.store.files.empty());
}

TEST(Push, GoesWrongAsScripted) {
  const std::vector<std::pair<std::string, std::size_t>> steps{{"HIDCHANGE", 1}, {"start", 2},  {"data", 3},
                                                               {"data:1", 3},    {"data:2", 4}, {"end", 5}};
  for (const auto& [step, answers] : steps) {
    FileFaults refusing;
    refusing.refuse = {step};
    FileFaults failing;
    failing.fail = {step};
    FileFaults ignoring;
    ignoring.ignore = {step};
    for (const auto& [faults, last] : {std::pair{refusing, std::string(wire::kRefused)},
                                       {failing, std::string(wire::kFailed)},
                                       {ignoring, std::string("(none)")}}) {
      FileRig host(Line::kUsb, faults);
      const Answers got = host.Push(255, "/tmp/x", std::string(200001, 'x'));
      EXPECT_EQ(got.size(), answers) << step;
      EXPECT_EQ(got.back(), last) << step;
      EXPECT_TRUE(host.store.files.empty()) << step;
    }
  }
}

TEST(Push, CountsScriptedPacketsWithinEachTransfer) {
  FileFaults faults;
  faults.refuse = {"data:2"};
  FileRig host(Line::kUsb, faults);
  EXPECT_TRUE(AllDone(host.Push(255, "/tmp/x", "one")));
  EXPECT_TRUE(AllDone(host.Push(255, "/tmp/y", "two")));
}

TEST(Push, IsToldInTheTrace) {
  FileRig host;
  host.Push(255, "/tmp/x.pdf", std::string(200001, 'x'));
  EXPECT_EQ(host.rig.Trace(),
            "host: push: mode change\nterminal: answer: done\n"
            "host: push: start packet, ok\nterminal: answer: done\n"
            "host: push: data packet 200,000 bytes, ok\nterminal: answer: done\n"
            "host: push: data packet 1 byte, ok\nterminal: answer: done\n"
            "host: push: end packet, type 255 /tmp/x.pdf stored, 200,001 bytes\nterminal: answer: done\n");
}

}  // namespace
}  // namespace gwq::terminal::test
