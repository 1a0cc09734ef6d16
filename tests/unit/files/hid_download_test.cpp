// SPDX-License-Identifier: MIT
// The download of a file or firmware image: each packet travels up to its first zero byte.
#include <gwq/files/media.h>

#include <gwq/frame/transaction.h>
#include "support/failing_memory.h"
#include "unit/files/files_rig.h"

namespace gwq::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::size_t kPiece = 30'300;

class HidDownload : public FilesRig {
 protected:
  int Run(int type = 1) { return HIDDownLoad(file_.c_str(), type); }

  // What is left of a packet: its third byte is the XOR of the payload, its fourth the zero of a short
  // length.
  static std::string Cut(std::uint8_t type, std::string_view payload) {
    const Bytes packet = wire::TransferPacket(type, BytesOf(payload));
    return TextOf(Bytes(packet.begin(), std::find(packet.begin(), packet.end(), 0)));
  }
  static std::string CutEnd(int type, std::string_view name) {
    return Cut(3, std::string(1, static_cast<char>(type)).append(name));
  }

  void ExpectModeAndStart() {
    Exchange(wire::kModeChange);
    Exchange(kStartPacket);
  }

  static constexpr std::string_view kStartPacket = "\x02\x01";

  std::string file_ = MakeFile("movie.mp4", "\x01\x02\x04");
};

TEST_F(HidDownload, SendsModeStartDataAndEndAsFarAsTheirFirstZeros) {
  ExpectModeAndStart();
  Exchange("\x02\x02\x07");
  Exchange(CutEnd(1, "movie.mp4"));
  const LogCapture log;
  EXPECT_EQ(Run(), 0);
  EXPECT_THAT(OwnMessages(log),
              ElementsAre("szFilePath" + file_, " szFileName = movie.mp4", "HIDDownLoad nRet=0 "));
  EXPECT_EQ(usb_.Count("out"), 4) << "one report each";
}

TEST_F(HidDownload, FirmwareIsNamedUpdateDat) {
  ExpectModeAndStart();
  Exchange("\x02\x02\x07");
  Exchange(CutEnd(4, "update.dat"));
  const LogCapture log;
  EXPECT_EQ(Run(4), 0);
  EXPECT_THAT(OwnMessages(log), ElementsAre("szFilePath" + file_, "HIDDownLoad nRet=0 "));
}

TEST_F(HidDownload, CheckOfZeroCutsThePacketBeforeIt) {
  file_ = MakeFile("f", "xx");
  ExpectModeAndStart();
  Exchange("\x02\x02");
  Exchange(CutEnd(1, "f"));
  EXPECT_EQ(Run(), 0);
}

TEST_F(HidDownload, WithoutMemoryNothingIsSent) {
  const NoMemoryFor packet(kPiece);
  EXPECT_EQ(Run(), -24);
  EXPECT_EQ(usb_.Count("out"), 0);
}

// The packet is one block of memory for all pieces.
TEST_F(HidDownload, LaterPieceHoldsNothingOfTheOneBefore) {
  file_ = MakeFile("f", std::string(kPiece, '\x05') + "\x07");
  ExpectModeAndStart();
  Exchange(Cut(2, std::string(kPiece, '\x05')));
  Exchange("\x02\x02\x07");
  Exchange(CutEnd(1, "f"));
  EXPECT_EQ(Run(), 0);
}

TEST_F(HidDownload, EmptyFileIsOneEmptyPiece) {
  file_ = MakeFile("f", "");
  ExpectModeAndStart();
  Exchange("\x02\x02");
  Exchange(CutEnd(1, "f"));
  EXPECT_EQ(Run(), 0);
}

TEST_F(HidDownload, FileIsCutIntoPiecesOf30300) {
  const std::string content = FileContent(2 * kPiece + 1);
  file_ = MakeFile("f", content);
  ExpectModeAndStart();
  for (std::size_t at = 0; at < content.size(); at += kPiece) Exchange(Cut(2, content.substr(at, kPiece)));
  Exchange(CutEnd(1, "f"));
  EXPECT_EQ(Run(), 0);
}

TEST_F(HidDownload, SizeOfWholePiecesEndsWithAnEmptyOne) {
  const std::string content = FileContent(kPiece);
  file_ = MakeFile("f", content);
  ExpectModeAndStart();
  Exchange(Cut(2, content));
  Exchange("\x02\x02");
  Exchange(CutEnd(1, "f"));
  EXPECT_EQ(Run(), 0);
}

TEST_F(HidDownload, NameBehindABackslashCountsWhenThereIsNoSlash) {
  const std::filesystem::path before = std::filesystem::current_path();
  MakeFile("dir\\name.mp4", "\x01");
  std::filesystem::current_path(directory_.Path());
  ExpectModeAndStart();
  Exchange("\x02\x02\x01");
  Exchange(CutEnd(1, "name.mp4"));
  const LogCapture log;
  EXPECT_EQ(HIDDownLoad("dir\\name.mp4", 1), 0);
  EXPECT_THAT(OwnMessages(log), ElementsAre("szFilePathdir\\name.mp4", "HIDDownLoad nRet=0 "));
  std::filesystem::current_path(before);
}

TEST_F(HidDownload, PathWithoutAnyMarkHasNoName) {
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(directory_.Path());
  ExpectModeAndStart();
  Exchange("\x02\x02\x07");
  Exchange(CutEnd(1, ""));
  EXPECT_EQ(HIDDownLoad("movie.mp4", 1), 0);
  std::filesystem::current_path(before);
}

TEST_F(HidDownload, LongNameDoesNoHarm) {
  const std::string name(255, 'n');
  file_ = MakeFile(name, "\x01");
  ExpectModeAndStart();
  Exchange("\x02\x02\x01");
  Exchange(CutEnd(1, name));
  EXPECT_EQ(Run(), 0);
}

// ------------------------------------------------------------------ failures

TEST_F(HidDownload, FileThatCannotBeOpenedIsMinus12BeforeAnythingIsSent) {
  const LogCapture log;
  EXPECT_EQ(HIDDownLoad("/nonexistent/f", 1), -12);
  EXPECT_THAT(log.Messages(), ElementsAre("szFilePath/nonexistent/f", "HIDDownLoad :fopen :FAIL "));
  EXPECT_EQ(HIDDownLoad(nullptr, 1), -12);
  EXPECT_THAT(usb_.Calls(), IsEmpty());
}

TEST_F(HidDownload, FileThatCannotBeReadIsMinus12BeforeAnythingIsSent) {
  file_ = directory_.Path().string();
  const LogCapture log;
  EXPECT_EQ(Run(), -12);
  EXPECT_THAT(log.Messages(), ElementsAre("szFilePath" + file_, "HIDDownLoad :fopen :FAIL "));
  EXPECT_THAT(usb_.Calls(), IsEmpty());
}

struct AnswerCase {
  const char* name;
  std::string answer;  // empty: silence
};

class HidDownloadAnswered : public HidDownload,
                            public testing::WithParamInterface<std::tuple<int, AnswerCase>> {
 protected:
  std::vector<std::string> packets_ = {std::string(wire::kModeChange), std::string(kStartPacket),
                                       "\x02\x02\x07", CutEnd(1, "movie.mp4")};
};

TEST_P(HidDownloadAnswered, WronglyAtAnyStepIsMinus14) {
  const auto& [step, each] = GetParam();
  for (int i = 0; i < step; ++i) Exchange(packets_.at(static_cast<std::size_t>(i)));
  usb_.ExpectCommand(packets_.at(static_cast<std::size_t>(step)));
  if (!each.answer.empty()) usb_.Answer(each.answer);
  const LogCapture log;
  EXPECT_EQ(Run(), -14);
  EXPECT_EQ(OwnMessages(log).back(), step == 0 ? " changge mode" : " szFileName = movie.mp4");
  EXPECT_EQ(Now() - kStart, each.answer.empty() ? 4 : 0) << "3 s must have passed";
}

std::string StepAndAnswer(const testing::TestParamInfo<HidDownloadAnswered::ParamType>& each) {
  static constexpr const char* kNames[] = {"Mode", "Start", "Data", "End"};
  return std::string(kNames[std::get<0>(each.param)]) + std::get<1>(each.param).name;
}

INSTANTIATE_TEST_SUITE_P(Steps, HidDownloadAnswered,
                         testing::Combine(testing::Values(0, 1, 2, 3),
                                          testing::Values(AnswerCase{"Refused", std::string(wire::kRefused)},
                                                          AnswerCase{"Failed", std::string(wire::kFailed)},
                                                          AnswerCase{"Short", "\x02\x03"},
                                                          AnswerCase{"Shifted", "x\x02\xAA\x03"},
                                                          AnswerCase{"Silence", ""})),
                         StepAndAnswer);

TEST_F(HidDownload, MoreBehindTheAnswerIsIgnored) {
  const std::string answer = std::string(wire::kDone).append("more\x03");
  Exchange(wire::kModeChange, answer);
  Exchange(kStartPacket, answer);
  Exchange("\x02\x02\x07", answer);
  Exchange(CutEnd(1, "movie.mp4"), answer);
  EXPECT_EQ(Run(), 0);
}

TEST_F(HidDownload, AbsentTerminalIsMinus14) {
  usb_.Unplug();
  EXPECT_EQ(Run(), -14);
}

// ------------------------------------------------------------------ cancelling

TEST_F(HidDownload, CancelEndsThePiecesAndStillEndsTheFile) {
  const std::string content = FileContent(3 * kPiece);
  file_ = MakeFile("f", content);
  ExpectModeAndStart();
  Exchange(Cut(2, content.substr(0, kPiece)));
  Exchange(CutEnd(1, "f"));
  usb_.OnTransfer([](const Transfer& transfer) {
    if (!transfer.in && transfer.index == 2) CancelWrite();
  });
  const LogCapture log;
  EXPECT_EQ(Run(), -23);
  EXPECT_THAT(OwnMessages(log),
              ElementsAre("szFilePath" + file_, " szFileName = f", " cancel write", "HIDDownLoad nRet=-23 "));
}

TEST_F(HidDownload, CancelBeforeTheFirstPieceSendsNone) {
  ExpectModeAndStart();
  Exchange(CutEnd(1, "movie.mp4"));
  usb_.OnTransfer([](const Transfer& transfer) {
    if (!transfer.in && transfer.index == 1) CancelWrite();
  });
  EXPECT_EQ(Run(), -23);
}

TEST_F(HidDownload, CancelWithTheLastPieceCountsAsWell) {
  ExpectModeAndStart();
  Exchange("\x02\x02\x07");
  Exchange(CutEnd(1, "movie.mp4"));
  usb_.OnTransfer([](const Transfer& transfer) {
    if (!transfer.in && transfer.index == 2) CancelWrite();
  });
  EXPECT_EQ(Run(), -23);
}

TEST_F(HidDownload, CancelledFileWhoseEndIsRefusedIsMinus14) {
  ExpectModeAndStart();
  Exchange(CutEnd(1, "movie.mp4"), wire::kRefused);
  usb_.OnTransfer([](const Transfer& transfer) {
    if (!transfer.in && transfer.index == 1) CancelWrite();
  });
  EXPECT_EQ(Run(), -14);
}

TEST_F(HidDownload, CancelOfAnEarlierDownloadIsForgottenAtTheStart) {
  CancelWrite();
  EXPECT_EQ(g_CancelWrite, 1);
  ExpectModeAndStart();
  Exchange("\x02\x02\x07");
  Exchange(CutEnd(1, "movie.mp4"));
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(g_CancelWrite, 0);
}

// ------------------------------------------------------------------ by port

TEST_F(HidDownload, OtherPortsThanUsbAreMinus1WithoutAnyExchange) {
  const LogCapture log;
  for (const int port : {1, 42, -1}) EXPECT_EQ(DownVideoFile(port, '9', 9600, 1, file_.c_str()), -1);
  EXPECT_THAT(usb_.Calls(), IsEmpty());
  EXPECT_THAT(log.Messages(), IsEmpty());
}

TEST_F(HidDownload, Port0Downloads) {
  ExpectModeAndStart();
  Exchange("\x02\x02\x07");
  Exchange(CutEnd(4, "update.dat"));
  EXPECT_EQ(DownVideoFile(0, '9', 115200, 4, file_.c_str()), 0);
  EXPECT_EQ(DownVideoFile(0, '9', 115200, 4, "/nonexistent"), -12);
}

}  // namespace
}  // namespace gwq::test
