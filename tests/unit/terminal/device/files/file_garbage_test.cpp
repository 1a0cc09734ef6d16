// SPDX-License-Identifier: MIT
// Hosts gone mad about files: the terminal goes on, within its limits, and a
// proper transfer still works afterwards.
#include <gtest/gtest.h>

#include <filesystem>
#include <iostream>
#include <random>

#include "store/file_store.h"
#include "support/temp_dir.h"
#include "unit/terminal/device/files/file_rig.h"

namespace gwq::terminal::test {

using namespace protocol;
using namespace store;
namespace {

constexpr int kRounds = 150;
constexpr std::uint64_t kMaxStored = 20000;

std::string RandomPacket(std::mt19937& random) {
  std::string packet = Packet(static_cast<int>(1 + random() % 3),
                              RandomContent(random() % 3000, static_cast<unsigned>(random())));
  if (random() % 4 == 0) packet[random() % 6] = static_cast<char>(random());
  if (random() % 4 == 0) packet.resize(random() % packet.size());
  return packet;
}

std::string RandomPiece(std::mt19937& random) {
  static const std::vector<std::string> pieces{std::string(wire::kModeChange),
                                               std::string(wire::kPushStart),
                                               EndPacket(255, "/tmp/x"),
                                               EndPacket(0, "a"),
                                               EndPacket(255, "/../x"),
                                               Packet(2, ""),
                                               NamedCommand("PULLFILE", "/tmp/x"),
                                               NamedCommand("PULLFILE", ""),
                                               NamedCommand("GETFILELIST", "0"),
                                               NamedCommand("DELETE", "0|a"),
                                               NamedCommand("DELETE", "0|*"),
                                               NamedCommand("DOWNLOAD", "0|a|00"),
                                               NamedCommand("SPECQUERYFILE", "/tmp/x"),
                                               NamedCommand("UPDATE", "/tmp/x"),
                                               std::string(wire::kDeleteQrCode),
                                               std::string(wire::kAccepted),
                                               std::string(wire::kRejected),
                                               std::string("\x02\x02\x00\xFF\xFF\xFF", 6),
                                               "\x02",
                                               "\x03",
                                               "\033",
                                               std::string(900, '\0')};
  switch (random() % 4) {
    case 0:
      return RandomContent(random() % 40, static_cast<unsigned>(random()));
    case 1:
      return RandomPacket(random);
    default:
      return pieces[random() % pieces.size()];
  }
}

std::uint64_t SizeOf(const std::filesystem::path& root) {
  std::uint64_t size = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(root))
    if (entry.is_regular_file()) size += entry.file_size();
  return size;
}

// Sends what it likes, as a real host would: in reports, or any piece of a stream.
void SendSomething(Rig& rig, std::mt19937& random) {
  std::string bytes;
  for (std::size_t i = random() % 5 + 1; i > 0; --i) bytes += RandomPiece(random);
  if (random() % 2 == 0) return rig.Send(bytes);
  for (std::size_t i = 0; i < bytes.size(); i += kReport) rig.Feed(bytes.substr(i, kReport));
}

void Torment(Line line, unsigned seed) {
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937 random(seed);
  const gwq::test::TempDir dir;
  FileStore files((dir / "store").string(), {5000, kMaxStored});
  Rig rig(line, {}, {&files, {}});
  for (int i = 0; i < kRounds; ++i) {
    rig.Wait(Time(random() % 4 == 0 ? random() % 40000 : random() % 30));
    rig.customer.actions.assign(5000, WalksAway());  // noise may ask for PINs
    SendSomething(rig, random);
    ASSERT_GT(rig.device().NextDeadline().value_or(Time::max()), rig.now);
    ASSERT_LE(SizeOf(dir.Path()), kMaxStored);
    for (std::string answer = rig.Answer(); answer != "(none)"; answer = rig.Answer())
      ASSERT_LE(answer.size(), 70000U);
  }
  rig.Wait(2000s);
  EXPECT_EQ(rig.device().NextDeadline(), std::nullopt);
  while (rig.Answer() != "(none)") continue;
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.Path()), {}), 1);
  ASSERT_EQ(rig.Ask(wire::kModeChange), wire::kDone);
  EXPECT_EQ(rig.Ask(wire::kPushStart), wire::kDone);
  EXPECT_EQ(rig.Ask(EndPacket(255, "/tmp/x")), wire::kDone);
}

TEST(FileGarbage, OverUsbIsSurvived) {
  const unsigned seed = std::random_device{}();
  std::cout << "seeds from " << seed << "\n";
  for (unsigned i = 0; i < 5; ++i) Torment(Line::kUsb, seed + i);
}

TEST(FileGarbage, OverSerialIsSurvived) {
  const unsigned seed = std::random_device{}();
  std::cout << "seeds from " << seed << "\n";
  for (unsigned i = 0; i < 5; ++i) Torment(Line::kSerial, seed + i);
}

TEST(FileGarbage, OfFixedSeedsIsSurvived) {
  for (unsigned seed = 0; seed < 5; ++seed) {
    Torment(Line::kUsb, seed);
    Torment(Line::kSerial, seed);
  }
}

}  // namespace
}  // namespace gwq::terminal::test
