// SPDX-License-Identifier: MIT
// What the library does beyond its contract when it is asked to: short drains, and progress of transfers.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <filesystem>
#include <functional>
#include <thread>
#include <vector>

#include <gwq/extra.h>
#include "e2e/library/files_rig.h"
#include "e2e/library/library.h"

namespace gwq::test {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr int kBaud = 115200;

milliseconds Took(const std::function<void()>& work) {
  const Clock::time_point start = Clock::now();
  work();
  return std::chrono::duration_cast<milliseconds>(Clock::now() - start);
}

// ------------------------------------------------------------------ drains

class ShortDrainsOnUsb : public testing::Test {
 protected:
  void ResetKeys() { EXPECT_EQ(lib.reset_key(0, kBaud), 0); }
  int SetDrainMs(int ms) { return lib.Get<GWQ_SetDrainMs>()(ms); }

  Library lib{"[Gwq]\nLog=0\nDrainMs=20\n"};
};

TEST_F(ShortDrainsOnUsb, CallsBackToBackTakeMillisecondsEach) {
  const milliseconds five = Took([this] {
    for (int i = 0; i < 5; ++i) ResetKeys();
  });
  EXPECT_GE(five, milliseconds(5 * 20));
  EXPECT_LT(five, milliseconds(1000))
      << "one drain to the clock's next second and four whole seconds otherwise";
}

TEST_F(ShortDrainsOnUsb, CanBeTakenBackAndAreAsLongAsEver) {
  ASSERT_EQ(SetDrainMs(0), 0);
  ResetKeys();
  EXPECT_GE(Took([this] { ResetKeys(); }), milliseconds(700))
      << "a whole second but for the exchange before it";
  EXPECT_EQ(SetDrainMs(20), 0);
  EXPECT_LT(Took([this] { ResetKeys(); }), milliseconds(500));
}

TEST_F(ShortDrainsOnUsb, ThrowAwayWhatAnEarlierCommandLeft) {
  char command[] = "\x1B[0GETVERSION";
  const auto only_send = lib.Get<TransProcOnlySend>();
  for (int i = 0; i < 3; ++i) {
    ASSERT_EQ(only_send(0, kBaud, command, static_cast<int>(sizeof command - 1), 1000), 0);
    std::this_thread::sleep_for(milliseconds(50));
    EXPECT_EQ(lib.reset_key(0, kBaud), 0) << "not the version, which is no answer to it";
  }
}

// ------------------------------------------------------------------ progress

struct Told {
  int transfer;
  std::string file;
  long long done;
  long long total;
  Clock::time_point at;
};

class ProgressOfFiles : public Files {
 protected:
  ProgressOfFiles() { lib.Get<GWQ_SetProgress>()(&Listen, this); }
  ~ProgressOfFiles() override { lib.Get<GWQ_SetProgress>()(nullptr, nullptr); }
  ProgressOfFiles(const ProgressOfFiles&) = delete;
  ProgressOfFiles& operator=(const ProgressOfFiles&) = delete;

  static void Listen(int transfer, const char* file, long long done, long long total, void* user) {
    auto& test = *static_cast<ProgressOfFiles*>(user);
    test.told.push_back({transfer, file, done, total, Clock::now()});
    if (test.told.size() == test.cancel_at) test.lib.Get<CancelWrite>()();
  }

  void ExpectInOrder(int transfer, const std::string& file) {
    ASSERT_GE(told.size(), 3U);
    for (const Told& each : told) {
      EXPECT_EQ(each.transfer, transfer);
      EXPECT_EQ(each.file, file);
    }
    for (std::size_t i = 1; i < told.size(); ++i) {
      const bool last = i + 1 == told.size();
      EXPECT_GE(told[i].done, told[i - 1].done);
      EXPECT_GE(told[i].at - told[i - 1].at, milliseconds(last ? 0 : 95));
    }
    EXPECT_EQ(told.front().done, 0);
    EXPECT_EQ(told.back().done, told.back().total);
  }

  std::vector<Told> told;
  std::size_t cancel_at = 0;
};

TEST_F(ProgressOfFiles, APushTellsFromZeroToItsSize) {
  const std::string local = LocalFile("film.bin", 3'000'000);
  ASSERT_EQ(0, Push(local, "/tmp/film.bin"));
  ExpectInOrder(GWQ_TRANSFER_PUSH, local);
  EXPECT_EQ(told.front().total, 3'000'000);
  EXPECT_EQ(told.back().total, 3'000'000);
  EXPECT_TRUE(ReadFile(local) == ReadFile(OnTerminal("/tmp/film.bin")));
}

TEST_F(ProgressOfFiles, APullTellsItsSizeAtItsEnd) {
  const std::string local = LocalFile("long.bin", 60'000);
  ASSERT_EQ(0, Push(local, "/tmp/long.bin"));
  told.clear();
  ASSERT_EQ(0, Pull("/tmp/long.bin", Local("back.bin")));
  ExpectInOrder(GWQ_TRANSFER_PULL, Local("back.bin"));
  EXPECT_EQ(told.front().total, 0);
  EXPECT_EQ(told.back().total, 60'000);
  EXPECT_TRUE(ReadFile(local) == ReadFile(Local("back.bin")));
}

TEST_F(ProgressOfFiles, ACancelledPushEndsBeforeItsNextPacketAndTheTerminalKeepsNothing) {
  cancel_at = 2;
  EXPECT_EQ(GWQ_CANCELLED, Push(LocalFile("cancelled.bin", 10'000'000), "/tmp/cancelled.bin"));
  ASSERT_EQ(told.size(), 3U);
  EXPECT_EQ(told[2].done, told[1].done);
  EXPECT_LT(told[2].at - told[1].at, milliseconds(500));
  EXPECT_FALSE(std::filesystem::exists(OnTerminal("/tmp/cancelled.bin")));

  cancel_at = 0;
  const std::string next = LocalFile("next.bin", 300'000);
  EXPECT_EQ(0, Push(next, "/tmp/next.bin"));
  EXPECT_EQ(ReadFile(next), ReadFile(OnTerminal("/tmp/next.bin")));
}

TEST_F(ProgressOfFiles, ACancelledFirmwareIsNotInstalled) {
  std::string image = LocalFile("update.dat", 3'000'000);
  cancel_at = 2;
  EXPECT_EQ(GWQ_CANCELLED, lib.Get<MP_DownloadFile>()(nullptr, nullptr, kBaud, nullptr, 1, image.data(), 0));
  EXPECT_EQ(told.back().transfer, GWQ_TRANSFER_FIRMWARE);
  EXPECT_FALSE(std::filesystem::exists(OnTerminal("/mnt/sdcard/media/data/update.dat")));
}

}  // namespace
}  // namespace gwq::test
