// SPDX-License-Identifier: MIT
// Files that travel to the terminal and back, and what each failure on the way gives.
#include <gmock/gmock.h>
#include <sys/resource.h>

#include <array>
#include <chrono>
#include <csignal>
#include <thread>

#include "e2e/library/files_rig.h"
#include "support/full_device.h"

namespace gwq::test {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr char kPictures[] = "/mnt/internal_sd/media/picture/";

using FilesPushed = Files;
using FilesPulled = Files;
using FilesListed = Files;
using FirmwareUpdate = Files;

TEST_F(FilesPushed, ArriveByteForByteWhateverTheirSize) {
  for (const std::size_t size : {0U, 1U, 199'999U, 200'000U, 200'001U, 400'000U}) {
    const std::string local = LocalFile("document.pdf", size);
    ASSERT_EQ(0, Push(local, "/tmp/document.pdf")) << size;
    EXPECT_EQ(ReadFile(local), ReadFile(OnTerminal("/tmp/document.pdf"))) << size;
  }
}

TEST_F(FilesPushed, OfTenMegabytesArrive) {
  const std::string local = LocalFile("film.bin", 10'000'000);
  ASSERT_EQ(0, Push(local, "/mnt/sdcard/media/film.bin"));
  EXPECT_TRUE(ReadFile(local) == ReadFile(OnTerminal("/mnt/sdcard/media/film.bin")));
}

TEST_F(FilesPushed, AsAListStandUnderTmpAndTheListNamesThem) {
  const std::string paper = LocalFile("合同 1.pdf", 3000);
  const std::string page = LocalFile("page.html", 10);
  std::string places(4096, '\0');
  const auto push = lib.Get<pushFileToZ11>();
  ASSERT_EQ(0, push((paper + "|" + page + "|").c_str(), places.data()));
  EXPECT_STREQ("/tmp/合同 1.pdf|/tmp/page.html", places.c_str());
  EXPECT_EQ(ReadFile(paper), ReadFile(OnTerminal("/tmp/合同 1.pdf")));
  EXPECT_EQ(ReadFile(page), ReadFile(OnTerminal("/tmp/page.html")));
}

TEST_F(FilesPushed, AMissingFileOrADirectoryGivesItsStatus) {
  EXPECT_EQ(GWQ_BAD_ARGUMENT, Push(Local("nothing"), "/tmp/x"));
  EXPECT_EQ(GWQ_BAD_ARGUMENT, Push(directory.Path().string(), "/tmp/x"));
  std::string places(4096, '\0');
  EXPECT_EQ(GWQ_NO_FILE, lib.Get<pushFileToZ11>()(Local("nothing").c_str(), places.data()));
  EXPECT_STREQ("", places.c_str());
}

TEST_F(FilesPushed, NeverLeaveTheTerminalsDirectory) {
  const std::string local = LocalFile("x", 5);
  for (const char* place : {"/tmp/../../escaped", "../escaped", "/../escaped"}) {
    EXPECT_NE(0, Push(local, place)) << place;
  }
  EXPECT_FALSE(fs::exists(OnTerminal("/../escaped")));
}

TEST_F(FilesPulled, ArriveByteForByteWhateverTheirSize) {
  for (const std::size_t size : {0U, 1U, 1017U, 1018U, 1019U, 2042U, 2043U, 3000U, 250'000U}) {
    const std::string pushed = LocalFile("out.bin", size);
    ASSERT_EQ(0, Push(pushed, "/tmp/out.bin")) << size;
    ASSERT_EQ(0, Pull("/tmp/out.bin", Local("in.bin"))) << size;
    EXPECT_EQ(ReadFile(pushed), ReadFile(Local("in.bin"))) << size;
  }
}

TEST_F(FilesPulled, TheSignatureOfTheDefaultCustomerIsAPngAndItsStrokes) {
  ASSERT_EQ(0, Pull("/tmp/hw.png", Local("signature.png")));
  ASSERT_EQ(0, Pull("/tmp/hw.txt", Local("strokes.txt")));
  EXPECT_TRUE(ReadFile(Local("signature.png")).starts_with("\x89PNG\r\n\x1A\n"));
  EXPECT_EQ(ReadFile(Local("signature.png")), ReadFile(OnTerminal("/tmp/hw.png")));
  EXPECT_THAT(ReadFile(Local("strokes.txt")), testing::ContainsRegex("^[0-9]+,[0-9]+,[0-9]+,[0-9]+\n"));
}

TEST_F(FilesPulled, AMissingOneIsRefusedAndLeavesNoFile) {
  EXPECT_EQ(GWQ_REFUSED, Pull("/tmp/nothing", Local("in.bin")));
  EXPECT_FALSE(fs::exists(Local("in.bin")));
}

TEST_F(FilesPulled, IntoADirectoryThatIsNotThereGivesReadFailedAndTheNextPullWorks) {
  EXPECT_EQ(GWQ_READ_FAILED, Pull("/tmp/hw.txt", Local("missing/in.bin")));
  EXPECT_EQ(0, Pull("/tmp/hw.txt", Local("in.bin")));
}

TEST_F(FilesPulled, OntoAFullDiskDoNotPassForWhole) {
  if (!gwq::test::HasFullDevice()) GTEST_SKIP() << "there is no /dev/full";
  const std::string pushed = LocalFile("out.bin", 200'000);
  ASSERT_EQ(0, Push(pushed, "/tmp/out.bin"));
  EXPECT_EQ(GWQ_READ_FAILED, Pull("/tmp/out.bin", "/dev/full"));
}

TEST_F(FilesListed, AreThoseThatWereAddedLessThoseThatWereDeleted) {
  const auto change = lib.Get<MP_DownloadFile>();
  const auto list = lib.Get<MP_GetFileList>();
  std::string pictures =
      LocalFile("一.jpg", 2000) + "|" + LocalFile("b.jpg", 1) + "|" + LocalFile("c.jpg", 300'000);
  ASSERT_EQ(0, change("", "", kBaud, "", 0, pictures.data(), 1));
  std::string names(1024, '\0');
  ASSERT_EQ(0, list("", "", kBaud, "", 0, names.data()));
  EXPECT_STREQ("b.jpg|c.jpg|一.jpg", names.c_str());
  std::string gone = "b.jpg";
  ASSERT_EQ(0, change("", "", kBaud, "", 0, gone.data(), 4));
  names.assign(1024, '\0');
  ASSERT_EQ(0, list("", "", kBaud, "", 0, names.data()));
  EXPECT_STREQ("c.jpg|一.jpg", names.c_str());
}

TEST_F(FilesListed, OnlyTheMissingPictureIsAdded) {
  const auto change = lib.Get<MP_DownloadFile>();
  std::string nothing;
  ASSERT_EQ(0, change("", "", kBaud, "", 0, nothing.data(), 0));
  std::string first = LocalFile("a.jpg", 100);
  ASSERT_EQ(0, change("", "", kBaud, "", 0, first.data(), 2));
  const auto before = fs::last_write_time(OnTerminal(std::string(kPictures) + "a.jpg"));
  std::string both = Local("a.jpg") + "|" + LocalFile("b.jpg", 50);
  ASSERT_EQ(0, change("", "", kBaud, "", 0, both.data(), 3));
  EXPECT_EQ(before, fs::last_write_time(OnTerminal(std::string(kPictures) + "a.jpg")));
  EXPECT_EQ(50U, fs::file_size(OnTerminal(std::string(kPictures) + "b.jpg")));
}

TEST_F(FilesListed, HeadPhotosComeAndGo) {
  const auto add = lib.Get<MP_DownHeadFile>();
  const auto find = lib.Get<MP_FindHeadPhoto>();
  const auto remove = lib.Get<MP_DelHeadFile>();
  ASSERT_EQ(0, add("", "9", kBaud, LocalFile("0123.jpg", 700).c_str(), nullptr));
  std::string list(101, '\0');
  int length = 100;
  ASSERT_EQ(0, find("", "", kBaud, list.data(), &length));
  EXPECT_STREQ("0123.jpg", list.c_str());
  EXPECT_EQ(8, length);
  length = 7;
  EXPECT_EQ(GWQ_TOO_SMALL, find("", "", kBaud, list.data(), &length));
  EXPECT_EQ(0, remove("", "", kBaud, "0123.jpg"));
  EXPECT_EQ(GWQ_REFUSED, remove("", "", kBaud, "0123.jpg"));
}

TEST_F(FilesListed, TheQrCodeIsReplacedAndRemoved) {
  const auto set = lib.Get<MP_SetBarcodePic>();
  const std::string picture = LocalFile("qr.png", 1234);
  ASSERT_EQ(0, set("", "", kBaud, picture.c_str()));
  EXPECT_EQ(ReadFile(picture), ReadFile(OnTerminal("/mnt/sdcard/media/file/QRcode.jpg")));
  ASSERT_EQ(0, set("", "", kBaud, ""));
  EXPECT_EQ(1, lib.takes_utf8());  // the removal is not answered; the next exchange comes after it
  EXPECT_FALSE(fs::exists(OnTerminal("/mnt/sdcard/media/file/QRcode.jpg")));
}

TEST_F(FirmwareUpdate, TheTerminalTellsItsNewVersionAfterwards) {
  const auto change = lib.Get<MP_DownloadFile>();
  std::string package = Local("fw.dat");
  WriteFile(package, "V2.0.0|20260101\n" + std::string(50'000, 'f'));
  ASSERT_EQ(0, change("", "", kBaud, "", 1, package.data(), 0));
  std::array<char, 9> date{};
  ASSERT_EQ(0, lib.build_date(0, 0, kBaud, date.data()));
  EXPECT_STREQ("20260101", date.data());
  std::string other = LocalFile("fw.bin", 10);
  EXPECT_EQ(GWQ_BAD_ARGUMENT, change("", "", kBaud, "", 1, other.data(), 0));
}

// With --faults: every way a transfer can go wrong on the terminal's side.

using RefusedPush = Files;
using FailedPush = Files;
using FullStorage = Files;
using CorruptPull = Files;
using OversizedPull = Files;
using OddPacketPull = Files;
using StoppedPull = Files;
using EmptyPackets = Files;
using CutPackets = Files;

TEST_F(RefusedPush, GivesRefusedAndStoresNothing) {
  EXPECT_EQ(GWQ_REFUSED, Push(LocalFile("x", 500'000), "/tmp/x"));
  EXPECT_FALSE(fs::exists(OnTerminal("/tmp/x")));
}

TEST_F(FailedPush, GivesTheTerminalsFailure) {
  EXPECT_EQ(GWQ_NO_ANSWER, Push(LocalFile("x", 10), "/tmp/x"));
}

TEST_F(FullStorage, GivesTheTerminalsFailureAndKeepsWhatWasThere) {
  ASSERT_EQ(0, Push(LocalFile("small", 1000), "/tmp/small"));
  EXPECT_EQ(GWQ_NO_ANSWER, Push(LocalFile("large", 3'000'000), "/tmp/large"));
  EXPECT_FALSE(fs::exists(OnTerminal("/tmp/large")));
  EXPECT_EQ(1000U, fs::file_size(OnTerminal("/tmp/small")));
}

TEST_F(CorruptPull, IsRefusedAndTheFileRemoved) {
  EXPECT_EQ(GWQ_REFUSED, Pull("/tmp/hw.png", Local("in.png")));
  EXPECT_FALSE(fs::exists(Local("in.png")));
}

TEST_F(OversizedPull, IsRefusedAndTheFileRemoved) {
  EXPECT_EQ(GWQ_REFUSED, Pull("/tmp/hw.png", Local("in.png")));
  EXPECT_FALSE(fs::exists(Local("in.png")));
}

TEST_F(OddPacketPull, IsRefusedAndTheFileRemoved) {
  EXPECT_EQ(GWQ_REFUSED, Pull("/tmp/hw.png", Local("in.png")));
  EXPECT_FALSE(fs::exists(Local("in.png")));
}

TEST_F(StoppedPull, GivesReadFailedAndKeepsWhatCame) {
  ASSERT_EQ(0, Push(LocalFile("out.bin", 250'000), "/tmp/out.bin"));
  EXPECT_EQ(GWQ_READ_FAILED, Pull("/tmp/out.bin", Local("in.bin")));
  EXPECT_EQ(3066U, fs::file_size(Local("in.bin")));  // 1018 + 1024 + 1024
}

// A pull in a thread of its own, which a cancel at any moment ends soon.
class CancelledPull : public Files {
 protected:
  static constexpr int kPatienceMs = 60'000;

  void ExpectEndsAfterCancel(const std::string& place, milliseconds moment) {
    constexpr milliseconds kLongest{1000};
    int status = 0;
    Clock::time_point ended;
    std::thread puller([&] {
      status = Pull(place, Local("in.bin"), kPatienceMs);
      ended = Clock::now();
    });
    std::this_thread::sleep_for(moment);
    const Clock::time_point cancelled = Clock::now();
    EXPECT_EQ(0, lib.cancel_read());
    puller.join();
    // A busy machine may still be sending the command.
    EXPECT_TRUE(status == GWQ_READ_FAILED || status == GWQ_SEND_FAILED) << status << " " << moment.count();
    EXPECT_GE(ended, cancelled) << moment.count();
    EXPECT_LT(ended - cancelled, kLongest) << moment.count();
  }

  // A drain takes a report of what was still on its way.
  void ExpectNextCallWorks() {
    while (Drain() == GWQ_OK) continue;
    EXPECT_EQ(1, lib.takes_utf8());
  }

 private:
  int Drain() {
    std::array<char, 2048> answer{};
    int length = 1024;
    return lib.trans_proc_only_read(0, kBaud, answer.data(), &length, 100);
  }
};

using LongPull = CancelledPull;
using SilentPull = CancelledPull;

// At a report every 10 milliseconds it takes a minute.
TEST_F(LongPull, EndsAfterACancelAtAnyMoment) {
  const fs::path file = OnTerminal("/tmp/large.bin");
  fs::create_directories(file.parent_path());
  WriteFile(file, std::string(6'000'000, 'x'));
  for (const int moment : {80, 111, 257, 480, 803}) {
    ExpectEndsAfterCancel("/tmp/large.bin", milliseconds(moment));
    ExpectNextCallWorks();
  }
  fs::remove(file);
}

TEST_F(SilentPull, EndsAfterACancel) {
  ASSERT_EQ(0, Push(LocalFile("out.bin", 250'000), "/tmp/out.bin"));
  ExpectEndsAfterCancel("/tmp/out.bin", milliseconds(500));
  ExpectNextCallWorks();
  EXPECT_EQ(3066U, fs::file_size(Local("in.bin")));
}

TEST_F(EmptyPackets, OfTypes0And1BeforeTheDataDoNoHarm) {
  ASSERT_EQ(0, Push(LocalFile("out.bin", 5000), "/tmp/out.bin"));
  EXPECT_EQ(0, Pull("/tmp/out.bin", Local("in.bin")));
  EXPECT_EQ(ReadFile(Local("out.bin")), ReadFile(Local("in.bin")));
}

TEST_F(CutPackets, TheDownloadThatCutsItsPacketsReachesItsEnd) {
  const auto download = lib.Get<HIDDownLoad>();
  EXPECT_EQ(0, download(LocalFile("x.bin", 40'000).c_str(), 0));
  EXPECT_EQ(-12, download(Local("nothing").c_str(), 0));
}

}  // namespace
}  // namespace gwq::test
