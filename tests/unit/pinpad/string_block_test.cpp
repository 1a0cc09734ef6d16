// SPDX-License-Identifier: MIT
// Bytes enciphered by the terminal and fetched as a file, by way of a file of a fixed name on the host.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include <gwq/extra.h>
#include <gwq/pinpad/entry.h>
#include "support/fake_tty.h"
#include "support/host_file_turn.h"
#include "support/temp_dir.h"
#include "unit/pinpad/pinpad_rig.h"

namespace gwq::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kBaud = 115200;
constexpr int kTimeout = 30;
constexpr const char* kHostFile = "/tmp/enctemp.data";
constexpr std::string_view kAnswer = "\x02\x30HIDDEN TEXT\x03";

class StringBlock : public PinPadRig {
 protected:
  int Call(std::string_view info = "abc", int timeout = kTimeout, int port = 0) {
    length_ = static_cast<int>(info.size());
    return PN_GetStringBlock(port, nullptr, kBaud, timeout, 0, InBytes(info), file_.text(), &length_,
                             answer_.text());
  }

  void TellsVersion() { ExchangeText(wire::kGetFirmwareVersion, BytesOf("\x02V1.0\x03")); }
  void Enciphers(std::string_view answer = kAnswer) {
    TellsVersion();
    ExchangeText(wire::kEncipher, BytesOf(answer));
  }
  void Packet(std::uint8_t type, std::string_view payload) {
    for (const Bytes& report : CutIntoReports(wire::TransferPacket(type, BytesOf(payload))))
      usb_.Answer(report);
    Sent(wire::kAccepted);
  }
  void HandsOver(std::string_view content) {
    Sent(wire::kPullEnciphered);
    Packet(1, "");
    if (!content.empty()) Packet(2, content);
    Packet(3, "");
  }

  void ExpectOutputsUntouched() {
    EXPECT_TRUE(file_.AllAre(kFill));
    EXPECT_TRUE(answer_.AllAre(kFill));
    EXPECT_EQ(length_, 3);
  }
  static Lines LogWith(const Lines& more) {
    Lines lines{"PN_GetStringBlock  iAlgoType=0,szInfo=abc", "TransProcOnlyRead iRet=-11"};
    lines.insert(lines.end(), more.begin(), more.end());
    return lines;
  }
  // Ends the text that the caller's buffer holds, so that so many bytes of it are cleared.
  void EndFileTextAt(std::size_t at) { file_.data()[at] = 0; }

  HostFileTurn turn_{kHostFile};
  GuardedBuffer file_{6000, kFill};
  GuardedBuffer answer_{4096, kFill};
  int length_ = 0;
};

TEST_F(StringBlock, IsEncipheredPulledAndRead) {
  EndFileTextAt(0);
  Enciphers();
  HandsOver("file content");
  const LogCapture log;
  EXPECT_EQ(Call(), 0);
  ExpectText(file_, "file content");
  ExpectText(answer_, "HIDDEN TEXT");
  EXPECT_EQ(length_, 12);
  EXPECT_EQ(OwnMessages(log), LogWith({"TransProc nRet=0", "[PN_GetStringBlock] PullFile nRet=0",
                                       "file_size = 12", "[PN_GetStringBlock] nRet=0"}));
  EXPECT_THAT(SleptMs(), ElementsAre(200, 10, 10)) << "before the pull, and in it";
  EXPECT_EQ(Elapsed(), 1);
}

TEST_F(StringBlock, GoesToUsbWhateverThePort) {
  const FakeTty tty("/dev/ttyS41");
  EndFileTextAt(0);
  Enciphers();
  HandsOver("x");
  EXPECT_EQ(Call("abc", kTimeout, 42), 0);
  EXPECT_THAT(tty.Calls(), IsEmpty());
}

TEST_F(StringBlock, PullComes200MillisecondsBehindTheAnswer) {
  Enciphers();
  FailsText(wire::kPullEnciphered, Failure::kNotSent);
  EXPECT_EQ(Call(), -14);
  EXPECT_THAT(SleptMs(), ElementsAre(200));
}

// ---------------------------------------------------------------- the file

class StringBlockFile : public StringBlock, public testing::WithParamInterface<std::size_t> {};

INSTANTIATE_TEST_SUITE_P(Sizes, StringBlockFile, testing::Values(0, 1, 1018, 1019, 5000));

TEST_P(StringBlockFile, IsReadWholeWithATerminatorAndNoMore) {
  std::string content;
  for (std::size_t i = 0; i < GetParam(); ++i) content += static_cast<char>(i * 7);
  GuardedBuffer file(GetParam() + 1, 0);
  Enciphers();
  HandsOver(content);
  length_ = 3;
  EXPECT_EQ(
      PN_GetStringBlock(0, nullptr, kBaud, kTimeout, 0, In("abc"), file.text(), &length_, answer_.text()), 0);
  EXPECT_EQ(file.Content(), Concat(BytesOf(content), {0}));
  EXPECT_EQ(length_, static_cast<int>(GetParam()));
}

TEST_F(StringBlock, BufferIsClearedAsFarAsItsText) {
  EndFileTextAt(40);
  Enciphers();
  HandsOver("new");
  EXPECT_EQ(Call(), 0);
  Bytes expected = Concat(BytesOf("new"), Bytes(38, 0));
  expected.resize(file_.size(), kFill);
  EXPECT_EQ(file_.Content(), expected);
}

TEST_F(StringBlock, FileStaysForItsOwnerAlone) {
  EndFileTextAt(0);
  Enciphers();
  HandsOver("file content");
  EXPECT_EQ(Call(), 0);
  struct stat status {};
  ASSERT_EQ(lstat(kHostFile, &status), 0);
  EXPECT_TRUE(S_ISREG(status.st_mode));
  EXPECT_EQ(status.st_mode & 07777U, 0600U);
  EXPECT_EQ(ReadFile(kHostFile), "file content");
}

TEST_F(StringBlock, OlderFileOfTheNameIsReplaced) {
  WriteFile(kHostFile, "something much longer than what comes");
  ASSERT_EQ(chmod(kHostFile, 0666), 0);
  EndFileTextAt(0);
  Enciphers();
  HandsOver("new");
  EXPECT_EQ(Call(), 0);
  ExpectText(file_, "new");
  struct stat status {};
  ASSERT_EQ(lstat(kHostFile, &status), 0);
  EXPECT_EQ(status.st_mode & 07777U, 0600U);
}

TEST_F(StringBlock, LinkOfTheNameIsNotFollowed) {
  const TempDir directory;
  const std::filesystem::path target = directory / "target";
  WriteFile(target, "precious");
  std::filesystem::create_symlink(target, kHostFile);
  EndFileTextAt(0);
  Enciphers();
  HandsOver("file content");
  EXPECT_EQ(Call(), 0);
  ExpectText(file_, "file content");
  EXPECT_EQ(ReadFile(target), "precious");
  EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status(kHostFile)));
}

TEST_F(StringBlock, LinkToNowhereIsNotFollowed) {
  const TempDir directory;
  std::filesystem::create_symlink(directory / "made", kHostFile);
  EndFileTextAt(0);
  Enciphers();
  HandsOver("file content");
  EXPECT_EQ(Call(), 0);
  EXPECT_FALSE(std::filesystem::exists(directory / "made"));
}

TEST_F(StringBlock, NameThatCannotBeTakenFailsThePull) {
  std::filesystem::create_directory(kHostFile);
  Enciphers();
  const LogCapture log;
  EXPECT_EQ(Call(), -14);
  EXPECT_EQ(OwnMessages(log), LogWith({"TransProc nRet=0", "[PN_GetStringBlock] PullFile nRet=-11",
                                       "[PN_GetStringBlock] PullFile failed"}));
  ExpectOutputsUntouched();
}

TEST_F(StringBlock, FileThatIsGoneAgainCannotBeOpened) {
  Enciphers();
  HandsOver("file content");
  usb_.OnTransfer([](const Transfer& transfer) {
    constexpr int kLastAcknowledgement = 5;
    if (!transfer.in && transfer.index == kLastAcknowledgement) unlink(kHostFile);
  });
  const LogCapture log;
  EXPECT_EQ(Call(), -14);
  EXPECT_EQ(OwnMessages(log), LogWith({"TransProc nRet=0", "[PN_GetStringBlock] PullFile nRet=0",
                                       "[PN_GetStringBlock] open file failed"}));
  ExpectOutputsUntouched();
}

// ---------------------------------------------------------------- what is sent

struct Info {
  const char* name;
  std::string info;
  int length;
  std::string fields;
};

std::string Hex(std::size_t bytes) {
  std::string hex;
  for (std::size_t i = 0; i < bytes; ++i) hex += "5A";
  return hex;
}

class StringBlockInfo : public StringBlock, public testing::WithParamInterface<Info> {};

// With the log on: the line stays within the caller's bytes too.
TEST_P(StringBlockInfo, IsSentInHexWithItsLength) {
  const LogCapture log;
  TellsVersion();
  ExchangeText("\x1B[1GETENCDATA\x02\x30|" + GetParam().fields + "\x03", BytesOf(wire::kUnknownCommand));
  length_ = GetParam().length;
  EXPECT_EQ(PN_GetStringBlock(0, nullptr, kBaud, kTimeout, 0, InBytes(GetParam().info), file_.text(),
                              &length_, answer_.text()),
            -406);
}

INSTANTIATE_TEST_SUITE_P(
    Sizes, StringBlockInfo,
    testing::Values(Info{"Bytes", std::string("\x00\xAB\xFF", 3), 3, "6|00ABFF"},
                    Info{"FewerThanThereAre", "abc", 2, "4|6162"}, Info{"None", "abc", 0, "0|"},
                    Info{"NegativeLength", "abc", -1, "0|"},
                    Info{"AllThatFit", std::string(20480, 'Z'), 20480, "40960|" + Hex(20480)},
                    Info{"NoMoreThanFit", std::string(20481, 'Z'), 20481, "40960|" + Hex(20480)}),
    kByName);

TEST_F(StringBlock, NullPointersAreRefusedBeforeAnythingIsSent) {
  int length = 3;
  char* const info = In("abc");
  const auto call = [&](char* text, char* file, int* size, char* answer) {
    return PN_GetStringBlock(0, nullptr, kBaud, kTimeout, 0, text, file, size, answer);
  };
  EXPECT_EQ(call(nullptr, file_.text(), &length, answer_.text()), -1);
  EXPECT_EQ(call(info, nullptr, &length, answer_.text()), -1);
  EXPECT_EQ(call(info, file_.text(), nullptr, answer_.text()), -1);
  EXPECT_EQ(call(info, file_.text(), &length, nullptr), -1);
  EXPECT_THAT(usb_.Calls(), IsEmpty());
}

// ---------------------------------------------------------------- its three exchanges failing

class StringBlockFailure : public StringBlock, public testing::WithParamInterface<Failure> {
 protected:
  const Failure how_ = GetParam();
  const int status_ = StatusOf(how_);
};

INSTANTIATE_TEST_SUITE_P(All, StringBlockFailure, testing::ValuesIn(kFailures), kByName);

TEST_P(StringBlockFailure, OfTheVersionIsIgnoredUnlessTheLinkCouldNotBeOpened) {
  FailsText(wire::kGetFirmwareVersion, how_);
  const LogCapture log;
  if (how_ == Failure::kNotOpened) {
    EXPECT_EQ(Call(), -3);
    EXPECT_EQ(OwnMessages(log), LogWith({"ERR_OPEN -3"}));
    return;
  }
  ExchangeText(wire::kEncipher, BytesOf(wire::kUnknownCommand));
  EXPECT_EQ(Call(), -406);
  EXPECT_EQ(OwnMessages(log),
            LogWith({"TransProc nRet=0", "[PN_GetStringBlock] EncKey not exist,nRet=-406"}));
  EXPECT_EQ(Elapsed(), how_ == Failure::kSilent ? 1 + 2 : 1) << "the drain, and more than a second";
}

TEST_P(StringBlockFailure, OfTheEnciphermentIsMinus14UnlessTheLinkCouldNotBeOpened) {
  TellsVersion();
  FailsText(wire::kEncipher, how_);
  const LogCapture log;
  const bool not_opened = how_ == Failure::kNotOpened;
  EXPECT_EQ(Call(), not_opened ? -3 : -14);
  Lines expected{"TransProc nRet=" + std::to_string(status_)};
  if (!not_opened) expected.emplace_back("[PN_GetStringBlock] nRet=-14");
  EXPECT_EQ(OwnMessages(log), LogWith(expected));
  EXPECT_EQ(Elapsed(), how_ == Failure::kSilent ? 1 + 34 : 1) << "30 and 3 seconds, and more";
  ExpectOutputsUntouched();
}

TEST_P(StringBlockFailure, OfThePullIsMinus14) {
  Enciphers();
  FailsText(wire::kPullEnciphered, how_);
  const LogCapture log;
  EXPECT_EQ(Call(), -14);
  // The pull's own receiving tells a cancel as any failed read.
  const int pulled = how_ == Failure::kCancelled ? -11 : status_;
  EXPECT_EQ(OwnMessages(log),
            LogWith({"TransProc nRet=0", "[PN_GetStringBlock] PullFile nRet=" + std::to_string(pulled),
                     "[PN_GetStringBlock] PullFile failed"}));
  ExpectOutputsUntouched();
}

TEST_F(StringBlock, PacketThatFailsItsCheckFailsThePull) {
  Enciphers();
  ExchangeText(wire::kPullEnciphered, Bytes(1024, 0xFF));
  Sent(wire::kRejected);
  const LogCapture log;
  EXPECT_EQ(Call(), -14);
  EXPECT_EQ(OwnMessages(log).at(3), "[PN_GetStringBlock] PullFile nRet=-14");
  ExpectOutputsUntouched();
}

TEST_F(StringBlock, LinkThatCannotBeOpenedEndsItAtTheDrain) {
  usb_.Unplug();
  const LogCapture log;
  EXPECT_EQ(Call(), -3);
  EXPECT_THAT(OwnMessages(log),
              ElementsAre("PN_GetStringBlock  iAlgoType=0,szInfo=abc", "TransProcOnlyRead iRet=-3"));
  ExpectOutputsUntouched();
}

// ---------------------------------------------------------------- the answer

TEST_F(StringBlock, TerminalWithoutAKeyIsMinus406AndNothingIsPulled) {
  for (const std::string_view answer : {wire::kUnknownCommand, std::string_view("\x02U\x03more\x03")}) {
    TellsVersion();
    ExchangeText(wire::kEncipher, BytesOf(answer));
    const LogCapture log;
    EXPECT_EQ(Call(), -406);
    EXPECT_EQ(OwnMessages(log),
              LogWith({"TransProc nRet=0", "[PN_GetStringBlock] EncKey not exist,nRet=-406"}));
    ExpectOutputsUntouched();
  }
  EXPECT_THAT(SleptMs(), IsEmpty());
}

TEST_F(StringBlock, VersionAnswerIsNotLookedAt) {
  for (const std::string_view version : {wire::kUnknownCommand, std::string_view("\x03")}) {
    EndFileTextAt(0);
    ExchangeText(wire::kGetFirmwareVersion, BytesOf(version));
    ExchangeText(wire::kEncipher, BytesOf(kAnswer));
    HandsOver("x");
    EXPECT_EQ(Call(), 0);
  }
}

struct Answer {
  const char* name;
  std::string answer;
  std::string taken;
};

class StringBlockAnswer : public StringBlock, public testing::WithParamInterface<Answer> {};

TEST_P(StringBlockAnswer, IsTakenWithoutItsFirstTwoAndItsLastByte) {
  EndFileTextAt(0);
  Enciphers(GetParam().answer);
  HandsOver("x");
  EXPECT_EQ(Call(), 0);
  ExpectText(answer_, GetParam().taken);
}

INSTANTIATE_TEST_SUITE_P(Answers, StringBlockAnswer,
                         testing::Values(Answer{"OneByte", "\x02\x30X\x03", "X"},
                                         Answer{"NoByte", "\x02\x30\x03", ""},
                                         Answer{"TwoMarks", "\x02\x03", ""}, Answer{"EtxAlone", "\x03", ""},
                                         Answer{"Of2000Bytes", "\x02\x30" + std::string(2000, 'X') + "\x03",
                                                std::string(2000, 'X')}),
                         kByName);

TEST_F(StringBlock, LongestAnswerIsCopiedUpTo4096Bytes) {
  GuardedBuffer answer(8192, kFill);
  EndFileTextAt(0);
  TellsVersion();
  Sent(wire::kEncipher);
  for (int i = 0; i < 3; ++i) usb_.Answer(Bytes(1024, 'X'));
  usb_.Answer(Bytes(1023, 'X')).Answer(Bytes(1024, 'X'));
  HandsOver("x");
  length_ = 3;
  EXPECT_EQ(
      PN_GetStringBlock(0, nullptr, kBaud, kTimeout, 0, In("abc"), file_.text(), &length_, answer.text()), 0);
  EXPECT_EQ(std::string_view(answer.text()).substr(0, 4000), std::string(4000, 'X'));
  const Bytes content = answer.Content();
  EXPECT_EQ(Bytes(content.begin() + 4096, content.end()), Bytes(4096, kFill));
}

// ---------------------------------------------------------------- an output whose size is told

TEST_F(StringBlock, FileThatFillsTheRoomToldWithItsTerminatorIsRead) {
  EndFileTextAt(0);
  ASSERT_EQ(GWQ_SetOutputRoom(13), 0);
  Enciphers();
  HandsOver("file content");
  EXPECT_EQ(Call(), 0);
  ExpectText(file_, "file content");
  EXPECT_EQ(GWQ_SetOutputRoom(0), 0);
}

TEST_F(StringBlock, FileBeyondTheRoomToldIsMinus24AndLeavesTheOutputs) {
  ASSERT_EQ(GWQ_SetOutputRoom(12), 0);
  Enciphers();
  HandsOver("file content");
  EXPECT_EQ(Call(), -24);
  ExpectOutputsUntouched();
  EXPECT_EQ(GWQ_SetOutputRoom(0), 0);
}

}  // namespace
}  // namespace gwq::test
