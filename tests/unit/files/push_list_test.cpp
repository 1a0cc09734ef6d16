// SPDX-License-Identifier: MIT
// Sending a list of files, and pulling one by its port-style name.
#include <sys/resource.h>

#include <csignal>

#include <gwq/files/pull.h>
#include <gwq/files/push.h>
#include "support/full_device.h"
#include "support/guarded_buffer.h"
#include "unit/files/files_rig.h"

namespace gwq::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class PushList : public FilesRig {
 protected:
  int Run(const std::string& list) { return pushFileToZ11(list.c_str(), out_.text()); }

  // Exactly this text, no terminator behind it.
  void ExpectOutput(std::string_view text) {
    EXPECT_EQ(out_.Content(), Concat(BytesOf(text), Bytes(out_.size() - text.size(), 0x55)));
  }

  GuardedBuffer out_{64, 0x55};
};

TEST_F(PushList, EveryFileGoesToTmpAndItsPlacesComeBack) {
  const std::string list = MakeFile("a/x.pdf", "first") + "|" + MakeFile("b/y.html", "second");
  ExpectPush(255, "/tmp/x.pdf", "first");
  ExpectPush(255, "/tmp/y.html", "second");
  EXPECT_EQ(Run(list), 0);
  ExpectOutput("/tmp/x.pdf|/tmp/y.html");
}

TEST_F(PushList, ListItselfStaysAsItIs) {
  const std::string list = MakeFile("x.pdf") + "|" + MakeFile("y.pdf");
  ExpectPush(255, "/tmp/x.pdf");
  ExpectPush(255, "/tmp/y.pdf");
  EXPECT_EQ(Run(list), 0);
  EXPECT_EQ(list, Path("x.pdf") + "|" + Path("y.pdf"));
}

TEST_F(PushList, LogsThePathsOfEachFile) {
  const std::string x = MakeFile("x.pdf");
  const std::string missing = Path("missing.pdf");
  ExpectPush(255, "/tmp/x.pdf");
  const LogCapture log;
  EXPECT_EQ(Run(x + "|" + missing), -15);
  EXPECT_THAT(OwnMessages(log),
              ElementsAre("pushFileToZ11", "szFilePathGBK=" + x, "szDevicePathGBK=/tmp/x.pdf",
                          "Z11DownLoadFile Z11ChangeMode nRet=0", "Z11DownLoadFile Z11StartDownload nRet=0",
                          " Z11SendFile szFilePath=" + x, " Z11SendFile nCount=7",
                          "Z11DownLoadFile Z11SendFile nRet=0", "Z11EndDownload szTempName=/tmp/x.pdf",
                          "cmdEnd type=255\r\n", "Z11DownLoadFile Z11EndDownload nRet=0", "File Not Exist"));
  ExpectOutput("");
}

TEST_F(PushList, MissingFirstFileGivesMinus15BeforeAnythingIsSent) {
  EXPECT_EQ(Run(Path("missing.pdf") + "|" + MakeFile("x.pdf")), -15);
  EXPECT_THAT(usb_.Calls(), IsEmpty());
  ExpectOutput("");
}

TEST_F(PushList, FailedPushEndsTheListWithItsStatus) {
  const std::string list = MakeFile("x.pdf") + "|" + MakeFile("y.pdf") + "|" + MakeFile("z.pdf");
  ExpectPush(255, "/tmp/x.pdf");
  Exchange(wire::kModeChange, wire::kFailed);
  EXPECT_EQ(Run(list), -2);
  ExpectOutput("");
}

TEST_F(PushList, DirectoryGivesMinus1) {
  std::filesystem::create_directory(directory_ / "sub");
  Exchange(wire::kModeChange);
  Exchange(wire::kPushStart);
  EXPECT_EQ(Run(Path("sub")), -1);
  ExpectOutput("");
}

TEST_F(PushList, EmptyElementsAndATrailingBarAreSkipped) {
  ExpectPush(255, "/tmp/x.pdf");
  ExpectPush(255, "/tmp/y.pdf");
  std::string list("||");
  list.append(MakeFile("x.pdf")).append("|||").append(MakeFile("y.pdf")).append("|");
  EXPECT_EQ(Run(list), 0);
  ExpectOutput("/tmp/x.pdf|/tmp/y.pdf");
}

TEST_F(PushList, EmptyListsSendNothing) {
  EXPECT_EQ(Run(""), 0);
  EXPECT_EQ(Run("|"), 0);
  EXPECT_EQ(Run("|||"), 0);
  ExpectOutput("");
  EXPECT_THAT(usb_.Calls(), IsEmpty());
}

TEST_F(PushList, SpacesArePartOfANameAndSoAreBytesBeyondAscii) {
  ExpectPush(255, "/tmp/a b .pdf");
  ExpectPush(255, "/tmp/一.pdf");
  EXPECT_EQ(Run(MakeFile("a b .pdf") + "|" + MakeFile("一.pdf")), 0);
  ExpectOutput("/tmp/a b .pdf|/tmp/一.pdf");
  EXPECT_EQ(Run(std::string(" ").append(Path("a b .pdf"))), -15)
      << "a space before the path is not taken away";
}

TEST_F(PushList, PathWithoutSlashHasNoBaseName) {
  MakeFile("x.pdf");
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(directory_.Path());
  ExpectPush(255, "/tmp/");
  EXPECT_EQ(Run("x.pdf"), 0);
  std::filesystem::current_path(before);
  ExpectOutput("/tmp/");
}

TEST_F(PushList, SameFileTwiceIsSentTwice) {
  const std::string x = MakeFile("x.pdf");
  ExpectPush(255, "/tmp/x.pdf");
  ExpectPush(255, "/tmp/x.pdf");
  EXPECT_EQ(Run(x + "|" + x), 0);
  ExpectOutput("/tmp/x.pdf|/tmp/x.pdf");
}

TEST_F(PushList, WhatStandsBehind1023BytesIsLeftOut) {
  const std::string x = MakeFile("x.pdf");
  ExpectPush(255, "/tmp/x.pdf");
  EXPECT_EQ(Run(x + std::string(1023 - x.size(), '|') + Path("missing.pdf")), 0);
  ExpectOutput("/tmp/x.pdf");
}

TEST_F(PushList, PathOnTheBorderIsCut) {
  const std::string x = MakeFile("x.pdf");
  ExpectPush(255, "/tmp/x.pdf");
  const std::string bars(1023 - x.size(), '|');
  EXPECT_EQ(Run(bars + x + "more"), 0) << "the last byte of 1023 is the path's";
  ExpectOutput("/tmp/x.pdf");
  EXPECT_EQ(Run(bars + "|" + x), -15) << "one byte further it has lost its last one";
}

TEST_F(PushList, ManyFilesFitIntoTheOutput) {
  const std::filesystem::path before = std::filesystem::current_path();
  MakeFile("d/a", "");
  std::filesystem::current_path(directory_.Path());
  std::string list;
  std::string places;
  for (int i = 0; i < 255; ++i) {
    list += "d/a|";
    places += "/tmp/a|";
    ExpectPush(255, "/tmp/a", "");
  }
  places.pop_back();
  GuardedBuffer out(places.size(), 0x55);
  EXPECT_EQ(pushFileToZ11(list.c_str(), out.text()), 0);
  EXPECT_EQ(out.Content(), BytesOf(places));
  std::filesystem::current_path(before);
}

TEST_F(PushList, NullIsMinus1) {
  const LogCapture log;
  EXPECT_EQ(pushFileToZ11(nullptr, out_.text()), -1);
  EXPECT_EQ(pushFileToZ11("/x", nullptr), -1);
  EXPECT_THAT(log.Messages(), ElementsAre("pushFileToZ11", "pushFileToZ11"));
  ExpectOutput("");
}

// ------------------------------------------------------------------ pulling

class PullToDisk : public FilesRig {
 protected:
  static int Run(std::string path, int port = 0, int length = 0) {
    std::string command(wire::kPullRequest);
    return PullFile(port, '9', 9600, 3000, length, command.data(), path.data());
  }

  void ExpectPulled(std::string_view content) {
    usb_.ExpectCommand(wire::kPullRequest);
    for (const std::uint8_t type : {std::uint8_t{2}, std::uint8_t{3}}) {
      const Bytes payload = type == 2 ? BytesOf(content) : Bytes{};
      for (const Bytes& report : CutIntoReports(wire::TransferPacket(type, payload))) usb_.Answer(report);
      usb_.ExpectCommand(wire::kAccepted);
    }
  }
};

// No file may grow beyond this many bytes; writing on fails instead of ending the process.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit limit{bytes, before_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FileSizeLimit() {
    setrlimit(RLIMIT_FSIZE, &before_);
    std::signal(SIGXFSZ, handler_);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;

 private:
  rlimit before_{};
  void (*handler_)(int);
};

TEST_F(PullToDisk, PortIsIgnoredAndTheFileStored) {
  for (const int port : {0, 1, 42, -1}) {
    ExpectPulled("picture");
    EXPECT_EQ(Run(Path("hw.png"), port), 0);
    EXPECT_EQ(ReadFile(directory_ / "hw.png"), "picture");
  }
}

TEST_F(PullToDisk, LengthOfTheCommandIsPassedOn) {
  usb_.ExpectCommand(wire::kPullRequest.substr(0, 5));
  usb_.Answer(PaddedToReports(wire::TransferPacket(3, {}))).ExpectCommand(wire::kAccepted);
  EXPECT_EQ(Run(Path("hw.png"), 0, 5), 0);
}

TEST_F(PullToDisk, AbsentTerminalGivesMinus3) {
  usb_.Unplug();
  EXPECT_EQ(Run(Path("hw.png")), -3);
  EXPECT_FALSE(std::filesystem::exists(directory_ / "hw.png"));
}

TEST_F(PullToDisk, DamagedPacketGivesMinus14AndTheFileIsRemoved) {
  Bytes packet = wire::TransferPacket(2, BytesOf("x"));
  packet[2] ^= 1U;
  usb_.ExpectCommand(wire::kPullRequest).Answer(PaddedToReports(packet)).ExpectCommand(wire::kRejected);
  EXPECT_EQ(Run(Path("hw.png")), -14);
  EXPECT_FALSE(std::filesystem::exists(directory_ / "hw.png"));
}

TEST_F(PullToDisk, FullDiskGivesMinus11ForASmallFile) {
  if (!gwq::test::HasFullDevice()) GTEST_SKIP() << "there is no /dev/full";
  ExpectPulled("small");
  EXPECT_EQ(Run("/dev/full"), -11);
}

TEST_F(PullToDisk, FullDiskGivesMinus11ForALargeFile) {
  if (!gwq::test::HasFullDevice()) GTEST_SKIP() << "there is no /dev/full";
  ExpectPulled(FileContent(100'000));
  EXPECT_EQ(Run("/dev/full"), -11);
}

TEST_F(PullToDisk, DiskThatFillsUpHalfwayGivesMinus11AndWhatFittedStays) {
  const std::string content = FileContent(100'000);
  ExpectPulled(content);
  {
    const FileSizeLimit limit(8192);
    EXPECT_EQ(Run(Path("hw.png")), -11);
  }
  EXPECT_EQ(ReadFile(directory_ / "hw.png"), content.substr(0, 8192));
}

}  // namespace
}  // namespace gwq::test
