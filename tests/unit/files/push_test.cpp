// SPDX-License-Identifier: MIT
// Sending one file to the terminal, byte for byte.
#include <gwq/files/push.h>

#include <unistd.h>

#include <gwq/frame/transaction.h>
#include "support/as_user.h"
#include "support/fake_tty.h"
#include "unit/files/files_rig.h"

namespace gwq::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Push : public FilesRig {
 protected:
  int Run(int type = 255, const char* name = "/tmp/x.pdf") {
    return Z11DownLoadFile(0, '9', 9600, type, file_.c_str(), name);
  }

  std::string file_ = MakeFile("local.pdf");
};

struct SizeCase {
  std::size_t size;
  std::vector<std::size_t> pieces;
};

std::string NameOf(const SizeCase& each) {
  return std::to_string(each.size);
}

class PushOfSize : public Push, public testing::WithParamInterface<SizeCase> {};

TEST_P(PushOfSize, SendsModeChangeStartPiecesAndEnd) {
  const std::string content = FileContent(GetParam().size);
  file_ = MakeFile("local.pdf", content);
  Exchange(wire::kModeChange);
  Exchange(wire::kPushStart);
  std::size_t at = 0;
  for (const std::size_t piece : GetParam().pieces) {
    Exchange(wire::TransferPacket(2, BytesOf(content.substr(at, piece))));
    at += piece;
  }
  Exchange(wire::PushEnd(255, "/tmp/x.pdf"));
  EXPECT_EQ(Run(), 0);
  const int steps = 3 + static_cast<int>(GetParam().pieces.size());
  EXPECT_EQ(usb_.Count("open"), steps);
  EXPECT_EQ(usb_.Count("close"), steps);
}

INSTANTIATE_TEST_SUITE_P(Sizes, PushOfSize,
                         testing::Values(SizeCase{0, {}}, SizeCase{1, {1}}, SizeCase{1018, {1018}},
                                         SizeCase{1019, {1019}}, SizeCase{199'999, {199'999}},
                                         SizeCase{200'000, {200'000, 0}}, SizeCase{200'001, {200'000, 1}},
                                         SizeCase{400'000, {200'000, 200'000, 0}},
                                         SizeCase{450'000, {200'000, 200'000, 50'000}}),
                         kByName);

TEST_F(Push, BytesOnTheWireAreThese) {
  file_ = MakeFile("f", "\x01\x02\x04");
  for (int i = 0; i < 4; ++i) usb_.Answer(wire::kDone);
  EXPECT_EQ(Run(255, "/tmp/f"), 0);
  const Bytes mode = {0x1B, '[', '0', 'H', 'I', 'D', 'C', 'H', 'A', 'N', 'G', 'E'};
  const Bytes start = {0x02, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00};
  const Bytes data = {0x02, 0x02, 0x07, 0x00, 0x00, 0x03, 0x01, 0x02, 0x04};
  const Bytes end = {0x02, 0x03, 0xF0, 0x00, 0x00, 0x07, 0xFF, '/', 't', 'm', 'p', '/', 'f'};
  Bytes expected;
  for (const Bytes& step : {mode, start, data, end}) expected = Concat(expected, PaddedToReports(step));
  EXPECT_EQ(usb_.Sent(), expected);
}

TEST_F(Push, LengthOfALargePacketIsBigEndianInThreeBytes) {
  file_ = MakeFile("f", std::string(200'000, '\0'));
  for (int i = 0; i < 5; ++i) usb_.Answer(wire::kDone);
  EXPECT_EQ(Run(), 0);
  const Bytes sent = usb_.Sent();
  const Bytes header(sent.begin() + 2048, sent.begin() + 2048 + 6);
  EXPECT_EQ(header, (Bytes{0x02, 0x02, 0x00, 0x03, 0x0D, 0x40}));
}

TEST_F(Push, LogsEveryStep) {
  const std::string content = FileContent(450'000);
  file_ = MakeFile("local.pdf", content);
  ExpectPush(255, "/tmp/x.pdf", content);
  const LogCapture log;
  EXPECT_EQ(Run(), 0);
  EXPECT_THAT(OwnMessages(log),
              ElementsAre("Z11DownLoadFile Z11ChangeMode nRet=0", "Z11DownLoadFile Z11StartDownload nRet=0",
                          " Z11SendFile szFilePath=" + file_, " Z11SendFile nCount=200000",
                          " Z11SendFile nCount=200000", " Z11SendFile nCount=50000",
                          "Z11DownLoadFile Z11SendFile nRet=0", "Z11EndDownload szTempName=/tmp/x.pdf",
                          "cmdEnd type=255\r\n", "Z11DownLoadFile Z11EndDownload nRet=0"));
}

TEST_F(Push, EmptyFileLogsNoCount) {
  file_ = MakeFile("empty.jpg", "");
  ExpectPush(0, "empty.jpg", "");
  const LogCapture log;
  EXPECT_EQ(Run(0, nullptr), 0);
  EXPECT_THAT(OwnMessages(log),
              ElementsAre("Z11DownLoadFile Z11ChangeMode nRet=0", "Z11DownLoadFile Z11StartDownload nRet=0",
                          " Z11SendFile szFilePath=" + file_, "Z11DownLoadFile Z11SendFile nRet=0",
                          "Z11EndDownload szTempName=empty.jpg", "cmdEnd type=0\r\n",
                          "Z11DownLoadFile Z11EndDownload nRet=0"));
}

// ------------------------------------------------------------------ acknowledgements

enum Step { kMode, kStartPacket, kPiece, kEndPacket };

struct AnswerCase {
  const char* name;
  std::string answer;  // empty: silence
  int result;
};

class PushAnswered : public Push, public testing::WithParamInterface<std::tuple<int, AnswerCase>> {
 protected:
  static Bytes Packet(int step) {
    switch (step) {
      case kMode:
        return BytesOf(wire::kModeChange);
      case kStartPacket:
        return BytesOf(wire::kPushStart);
      case kPiece:
        return wire::TransferPacket(2, BytesOf("content"));
      default:
        return wire::PushEnd(255, "/tmp/x.pdf");
    }
  }

  static std::string LogOf(int step) {
    static constexpr const char* kNames[] = {"Z11ChangeMode", "Z11StartDownload", "Z11SendFile",
                                             "Z11EndDownload"};
    return std::string("Z11DownLoadFile ") + kNames[step] + " nRet=";
  }
};

TEST_P(PushAnswered, AtAStepGoesOnOrEndsThePush) {
  const auto& [step, each] = GetParam();
  for (int i = kMode; i < step; ++i) Exchange(Packet(i));
  usb_.ExpectCommand(TextOf(Packet(step)));
  if (!each.answer.empty()) usb_.Answer(each.answer);
  for (int i = step + 1; each.result == 0 && i <= kEndPacket; ++i) Exchange(Packet(i));
  const LogCapture log;
  EXPECT_EQ(Run(), each.result);
  const std::string last = LogOf(each.result == 0 ? kEndPacket : step) + std::to_string(each.result);
  EXPECT_EQ(OwnMessages(log).back(), last);
}

std::string StepAndAnswer(const testing::TestParamInfo<PushAnswered::ParamType>& each) {
  static constexpr const char* kNames[] = {"Mode", "Start", "Data", "End"};
  return std::string(kNames[std::get<0>(each.param)]) + std::get<1>(each.param).name;
}

INSTANTIATE_TEST_SUITE_P(
    Steps, PushAnswered,
    testing::Combine(
        testing::Values(kMode, kStartPacket, kPiece, kEndPacket),
        testing::Values(AnswerCase{"Done", std::string(wire::kDone), 0},
                        AnswerCase{"OtherMark", "\x02x\x03", 0}, AnswerCase{"NoMark", "\x02\x03", 0},
                        AnswerCase{"DoneWithAnotherDigit", "\x02\xAA\x30\x03", 0},
                        AnswerCase{"Failed", std::string(wire::kFailed), -2},
                        AnswerCase{"FailedWithMore", "\x02\xAA\x31more\x03", -2},
                        AnswerCase{"Refused", std::string(wire::kRefused), -14},
                        AnswerCase{"RefusedWithMore", "\x02Umore\x03", -14},
                        AnswerCase{"NoStx", "x\xAA\x03", -14}, AnswerCase{"EtxAlone", "\x03", -14},
                        AnswerCase{"NoEtx", "\x02" + std::string(1023, 'x'), -14},
                        AnswerCase{"Zeros", std::string(1024, '\0'), -2}, AnswerCase{"Silence", "", -11})),
    StepAndAnswer);

class PushTimeout : public Push, public testing::WithParamInterface<int> {};

TEST_P(PushTimeout, IsFiveSecondsAtEveryStepAndThirtyAtTheEnd) {
  const int step = GetParam();
  const std::vector<Bytes> packets = {BytesOf(wire::kModeChange), BytesOf(wire::kPushStart),
                                      wire::TransferPacket(2, BytesOf("content")),
                                      wire::PushEnd(255, "/tmp/x.pdf")};
  for (int i = 0; i < step; ++i) Exchange(packets.at(static_cast<std::size_t>(i)));
  usb_.ExpectCommand(TextOf(packets.at(static_cast<std::size_t>(step))));
  EXPECT_EQ(Run(), -11);
  EXPECT_EQ(Now() - kStart, step == kEndPacket ? 31 : 6) << "ends when more than its seconds have passed";
}

INSTANTIATE_TEST_SUITE_P(Steps, PushTimeout, testing::Values(kMode, kStartPacket, kPiece, kEndPacket));

TEST_F(Push, RefusalOfALaterPieceEndsIt) {
  const std::string content = FileContent(450'000);
  file_ = MakeFile("local.pdf", content);
  Exchange(wire::kModeChange);
  Exchange(wire::kPushStart);
  Exchange(wire::TransferPacket(2, BytesOf(content.substr(0, kPieceSize))));
  Exchange(wire::TransferPacket(2, BytesOf(content.substr(kPieceSize, kPieceSize))), wire::kRefused);
  EXPECT_EQ(Run(), -14);
}

TEST_F(Push, LateAnswersStillCount) {
  usb_.ExpectCommand(wire::kModeChange).Answer(wire::kDone, 25);
  usb_.ExpectCommand(wire::kPushStart).AnswerReport(wire::kDone, 25);
  usb_.ExpectCommand(TextOf(wire::TransferPacket(2, BytesOf("content")))).Answer(wire::kDone, 25);
  usb_.ExpectCommand(TextOf(wire::PushEnd(255, "/tmp/x.pdf"))).Answer(wire::kDone, 150);
  EXPECT_EQ(Run(), 0);
}

// ------------------------------------------------------------------ the link

TEST_F(Push, AbsentTerminalGivesMinus3) {
  usb_.Unplug();
  const LogCapture log;
  EXPECT_EQ(Run(), -3);
  EXPECT_THAT(OwnMessages(log), ElementsAre("Z11DownLoadFile Z11ChangeMode nRet=-3"));
}

TEST_F(Push, CancelWhileAPieceIsSentGivesMinus10) {
  Exchange(wire::kModeChange);
  Exchange(wire::kPushStart);
  usb_.ExpectCommand(TextOf(wire::TransferPacket(2, BytesOf("content"))));
  usb_.OnTransfer([](const Transfer& transfer) {
    if (!transfer.in && transfer.index == 2) CancelRead();
  });
  EXPECT_EQ(Run(), -10);
}

TEST_F(Push, CancelWhileAnAnswerIsAwaitedGivesMinus23) {
  Exchange(wire::kModeChange);
  usb_.ExpectCommand(wire::kPushStart);
  usb_.OnTransfer([](const Transfer& transfer) {
    if (transfer.in && transfer.index == 1) CancelRead();
  });
  EXPECT_EQ(Run(), -23);
}

TEST_F(Push, SerialPortTakesThePacketsUnpadded) {
  FakeTty tty("/dev/ttyS41");
  tty.Respond([](const Bytes&) { return std::string(wire::kDone); });
  EXPECT_EQ(Z11DownLoadFile(42, '9', 19200, 255, file_.c_str(), "/tmp/x.pdf"), 0);
  Bytes expected = Concat(BytesOf(wire::kModeChange), BytesOf(wire::kPushStart));
  expected = Concat(expected, wire::TransferPacket(2, BytesOf("content")));
  EXPECT_EQ(tty.Received(), Concat(expected, wire::PushEnd(255, "/tmp/x.pdf")));
  EXPECT_EQ(tty.Applied().at(0).c_cflag & CBAUD, static_cast<unsigned>(B19200));
  EXPECT_THAT(usb_.Calls(), IsEmpty());
}

TEST_F(Push, ChannelIsWithoutMeaning) {
  for (const char channel : {'\0', '0', '\xFF'}) {
    ExpectPush(255, "/tmp/x.pdf");
    EXPECT_EQ(Z11DownLoadFile(0, channel, 0, 255, file_.c_str(), "/tmp/x.pdf"), 0);
  }
}

// ------------------------------------------------------------------ the local file

class PushOfNoFile : public Push, public testing::WithParamInterface<const char*> {};

TEST_P(PushOfNoFile, EndsAfterTheStartWithMinus1) {
  file_ = GetParam();
  Exchange(wire::kModeChange);
  Exchange(wire::kPushStart);
  const LogCapture log;
  EXPECT_EQ(Run(), -1);
  EXPECT_THAT(OwnMessages(log),
              ElementsAre("Z11DownLoadFile Z11ChangeMode nRet=0", "Z11DownLoadFile Z11StartDownload nRet=0",
                          " Z11SendFile szFilePath=" + file_, " Z11SendFile open file faild",
                          "Z11DownLoadFile Z11SendFile nRet=-1"));
}

INSTANTIATE_TEST_SUITE_P(Paths, PushOfNoFile, testing::Values("/nonexistent/local.pdf", ""));

TEST_F(Push, FileWithoutPermissionGivesMinus1) {
  std::filesystem::permissions(file_, std::filesystem::perms::none);
  Exchange(wire::kModeChange);
  Exchange(wire::kPushStart);
  const AsOrdinaryUser user;
  ASSERT_TRUE(user.Holds());
  EXPECT_EQ(Run(), -1);
}

TEST_F(Push, DirectoryGivesMinus1AndSendsNoPieceOrEnd) {
  file_ = directory_.Path().string();
  Exchange(wire::kModeChange);
  Exchange(wire::kPushStart);
  EXPECT_EQ(Run(), -1);
}

TEST_F(Push, FileThatCannotBeReadGivesMinus1AndSendsNoPieceOrEnd) {
  file_ = "/proc/self/mem";  // opens, but nothing is mapped where it begins
  Exchange(wire::kModeChange);
  Exchange(wire::kPushStart);
  EXPECT_EQ(Run(), -1);
}

TEST_F(Push, NullPathGivesMinus1AfterTheStart) {
  Exchange(wire::kModeChange);
  Exchange(wire::kPushStart);
  EXPECT_EQ(Z11DownLoadFile(0, '9', 9600, 0, nullptr, "x"), -1);
}

// ------------------------------------------------------------------ type and name

struct NameCase {
  int type;
  std::uint8_t sent;
  const char* remote;
  const char* stored;
};

std::string NameOf(const NameCase& each) {
  return std::to_string(each.type) + (each.remote == nullptr ? " NULL" : std::string(" ") + each.remote);
}

class PushNamed : public Push, public testing::WithParamInterface<NameCase> {};

TEST_P(PushNamed, EndPacketCarriesTypeAndName) {
  ExpectPush(GetParam().sent, GetParam().stored);
  EXPECT_EQ(Run(GetParam().type, GetParam().remote), 0);
}

INSTANTIATE_TEST_SUITE_P(
    Types, PushNamed,
    testing::Values(NameCase{255, 255, "/tmp/x.pdf", "/tmp/x.pdf"}, NameCase{255, 255, "", ""},
                    NameCase{255, 255, nullptr, ""}, NameCase{0, 0, "/tmp/x.pdf", "local.pdf"},
                    NameCase{0, 0, nullptr, "local.pdf"}, NameCase{2, 2, "other", "local.pdf"},
                    NameCase{4, 4, nullptr, "local.pdf"}, NameCase{254, 254, "other", "local.pdf"},
                    NameCase{256, 0, "other", "local.pdf"}, NameCase{-1, 255, "other", "local.pdf"}));

TEST_F(Push, PathWithoutSlashHasNoBaseName) {
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(directory_.Path());
  ExpectPush(0, "");
  EXPECT_EQ(Z11DownLoadFile(0, '9', 9600, 0, "local.pdf", nullptr), 0);
  std::filesystem::current_path(before);
}

TEST_F(Push, NameOf1022BytesIsSentAndALongerOneIsRefusedBeforeAnythingIs) {
  const std::string name(1022, 'n');
  ExpectPush(255, name);
  EXPECT_EQ(Run(255, name.c_str()), 0);
  const std::size_t calls = usb_.Calls().size();
  EXPECT_EQ(Run(255, (name + "n").c_str()), -1);
  EXPECT_EQ(Z11DownLoadHead(0, '9', 9600, 2, file_.c_str(), (name + "n").c_str()), -1);
  EXPECT_EQ(usb_.Calls().size(), calls);
}

TEST_F(Push, HeadIsStoredAsNamedWhateverTheType) {
  for (const int type : {0, 2, 255}) {
    ExpectPush(static_cast<std::uint8_t>(type), "face.jpg");
    EXPECT_EQ(Z11DownLoadHead(0, '9', 9600, type, file_.c_str(), "face.jpg"), 0);
  }
  ExpectPush(2, "");
  EXPECT_EQ(Z11DownLoadHead(0, '9', 9600, 2, file_.c_str(), nullptr), 0);
}

TEST_F(Push, HeadFailsAsAFileDoes) {
  Exchange(wire::kModeChange, wire::kRefused);
  EXPECT_EQ(Z11DownLoadHead(0, '9', 9600, 2, file_.c_str(), "face.jpg"), -14);
  Exchange(wire::kModeChange);
  Exchange(wire::kPushStart);
  EXPECT_EQ(Z11DownLoadHead(0, '9', 9600, 2, "/nonexistent/x", "face.jpg"), -1);
}

TEST_F(Push, WorkBuffersHoldThePieceAndItsPacket) {
  EXPECT_EQ(sizeof m_szBuf, 200'000U);
  EXPECT_EQ(sizeof m_szCMD, 204'800U);
  Exchange(wire::kModeChange);
  Exchange(wire::kPushStart);
  Exchange(wire::TransferPacket(2, BytesOf("content")), wire::kRefused);
  EXPECT_EQ(Run(), -14);
  EXPECT_EQ(Bytes(m_szBuf, m_szBuf + 7), BytesOf("content"));
  EXPECT_EQ(Bytes(m_szCMD, m_szCMD + 13), wire::TransferPacket(2, BytesOf("content")));
}

}  // namespace
}  // namespace gwq::test
