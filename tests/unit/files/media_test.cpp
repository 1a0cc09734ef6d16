// SPDX-License-Identifier: MIT
// Listing, deleting and sending media with the exchanges of their own.
#include <gwq/files/media.h>

#include <libusb-1.0/libusb.h>

#include <optional>
#include <random>
#include <sstream>

#include <gwq/codec/text_forms.h>
#include <gwq/frame/port.h>
#include <gwq/frame/transaction.h>
#include "support/fake_tty.h"
#include "support/guarded_buffer.h"
#include "unit/files/files_rig.h"
#include "usb_ids.h"

namespace gwq::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kSerialDevice[] = "/dev/ttyS41";
constexpr int kSerialPort = 42;

std::string PaddedTo(std::string_view text, std::size_t size) {
  std::string padded(text);
  padded.resize(size, '\0');
  return padded;
}

class Media : public FilesRig {
 protected:
  int List(std::size_t capacity, int type = 2) {
    out_.emplace(capacity, 0x55);
    return GetVideoList(0, '9', 9600, type, out_->text(), static_cast<int>(capacity));
  }

  std::optional<GuardedBuffer> out_;
};

// ------------------------------------------------------------------ listing

TEST_F(Media, ListIsTheAnswerWithoutItsMarks) {
  Exchange(PaddedTo(wire::kListHeadPhotos, 4096), wire::kTwoNames);
  EXPECT_EQ(List(20), 0);
  EXPECT_EQ(out_->Content(), Concat(BytesOf("a.jpg|b.jpg"), Bytes(9, 0x55))) << "no terminator";
  EXPECT_EQ(usb_.Count("out"), 4) << "the whole buffer of 4096 bytes";
}

TEST_F(Media, ListMayFillTheOutput) {
  Exchange(PaddedTo(wire::kListHeadPhotos, 4096), wire::kTwoNames);
  EXPECT_EQ(List(11), 0);
  EXPECT_EQ(out_->Content(), BytesOf("a.jpg|b.jpg"));
}

TEST_F(Media, ListThatDoesNotFitIsMinus24AndTheOutputUntouched) {
  Exchange(PaddedTo(wire::kListHeadPhotos, 4096), wire::kTwoNames);
  EXPECT_EQ(List(10), -24);
  EXPECT_TRUE(out_->AllAre(0x55));
}

TEST_F(Media, ListOfNothingIsEmpty) {
  for (const char* answer : {"\x02\x03", "\x03"}) {
    Exchange(PaddedTo(wire::kListPictures, 4096), answer);
    EXPECT_EQ(List(0, 0), 0);
  }
}

TEST_F(Media, ListWithoutAnOutputIsMinus24) {
  Exchange(PaddedTo(wire::kListPictures, 4096), wire::kTwoNames);
  EXPECT_EQ(GetVideoList(0, '9', 9600, 0, nullptr, 100), -24);
}

TEST_F(Media, LongListComesInSeveralReports) {
  const std::string names(4000, 'n');
  const std::string answer = std::string(1, '\x02').append(names).append("\x03");
  usb_.ExpectCommand(PaddedTo(wire::kListHeadPhotos, 4096));
  for (std::size_t at = 0; at < answer.size(); at += 1024) usb_.Answer(answer.substr(at, 1024));
  EXPECT_EQ(List(4000), 0);
  EXPECT_EQ(out_->Content(), BytesOf(names));
}

TEST_F(Media, ListBeyondTheAnswerBufferIsCutThere) {
  usb_.ExpectCommand(PaddedTo(wire::kListHeadPhotos, 4096));
  for (int i = 0; i < 4; ++i) usb_.Answer(Bytes(1024, 'n'));
  EXPECT_EQ(List(4094), 0);
  EXPECT_TRUE(out_->AllAre('n'));
}

TEST_F(Media, ListWaitsTenSeconds) {
  usb_.ExpectCommand(PaddedTo(wire::kListHeadPhotos, 4096));
  EXPECT_EQ(List(10), -11);
  EXPECT_EQ(Now() - kStart, 11);
  EXPECT_TRUE(out_->AllAre(0x55));
}

TEST_F(Media, ListOnASerialPortIsTheWholeBufferToo) {
  FakeTty tty(kSerialDevice);
  tty.Respond([](const Bytes&) { return std::string(wire::kTwoNames); });
  char out[11];
  EXPECT_EQ(GetVideoList(kSerialPort, '9', 19200, 0, out, 11), 0);
  EXPECT_EQ(std::string(out, 11), "a.jpg|b.jpg");
  EXPECT_EQ(tty.Received(), BytesOf(PaddedTo(wire::kListPictures, 4096)));
  EXPECT_EQ(tty.Applied().at(0).c_cflag & CBAUD, static_cast<unsigned>(B19200));
}

TEST_F(Media, AbsentTerminalIsMinus3) {
  usb_.Unplug();
  EXPECT_EQ(List(10), -3);
  EXPECT_EQ(DelVideoFile(0, '9', 9600, 0, "x.jpg"), -3);
  EXPECT_EQ(DelAllVideoFile(0, '9', 9600, 0), -3);
  EXPECT_EQ(DeleteMediaFile(0, '9', 9600, 0, "x.jpg"), -3);
}

// ------------------------------------------------------------------ deleting

TEST_F(Media, DeletingSendsTheWholeBufferOf4096Bytes) {
  Exchange(PaddedTo(wire::kDeletePicture, 4096));
  EXPECT_EQ(DelVideoFile(0, '9', 9600, 0, "x.jpg"), 0);
  EXPECT_EQ(usb_.Count("out"), 4);
}

TEST_F(Media, DeletingAllNamesAStarInABufferOf1024Bytes) {
  Exchange(PaddedTo(wire::kDeleteAllPictures, 1024));
  EXPECT_EQ(DelAllVideoFile(0, '9', 9600, 0), 0);
  EXPECT_EQ(usb_.Count("out"), 1);
}

TEST_F(Media, RefusedDeletionPassesForSuccess) {
  Exchange(PaddedTo(wire::kDeletePicture, 4096), wire::kRefused);
  EXPECT_EQ(DelVideoFile(0, '9', 9600, 0, "x.jpg"), 0);
  Exchange(PaddedTo(wire::kDeleteAllPictures, 1024), wire::kRefused);
  EXPECT_EQ(DelAllVideoFile(0, '9', 9600, 0), 0);
}

TEST_F(Media, DeletionWaitsThreeSeconds) {
  usb_.ExpectCommand(PaddedTo(wire::kDeletePicture, 4096));
  EXPECT_EQ(DelVideoFile(0, '9', 9600, 0, "x.jpg"), -11);
  EXPECT_EQ(Now() - kStart, 4);
  usb_.ExpectCommand(PaddedTo(wire::kDeleteAllPictures, 1024));
  EXPECT_EQ(DelAllVideoFile(0, '9', 9600, 0), -11);
  EXPECT_EQ(Now() - kStart, 8);
}

TEST_F(Media, DeletionOnASerialPortSendsTheSameBuffers) {
  FakeTty tty(kSerialDevice);
  tty.Respond([](const Bytes&) { return std::string(wire::kDone); });
  EXPECT_EQ(DelVideoFile(kSerialPort, '9', 9600, 0, "x.jpg"), 0);
  EXPECT_EQ(DelAllVideoFile(kSerialPort, '9', 9600, 0), 0);
  const std::string expected =
      PaddedTo(wire::kDeletePicture, 4096) + PaddedTo(wire::kDeleteAllPictures, 1024);
  EXPECT_EQ(tty.Received(), BytesOf(expected));
}

TEST_F(Media, DeletionWithoutAnAnswerSendsTheCommandAndReadsNothing) {
  usb_.ExpectCommand(wire::kDeletePicture);
  EXPECT_EQ(DeleteMediaFile(0, '9', 9600, 0, "x.jpg"), 0);
  EXPECT_EQ(usb_.Count("out"), 1);
  EXPECT_EQ(usb_.Count("in"), 0);
}

TEST_F(Media, DeletionWithoutAnAnswerIsJustItsTextOnASerialPort) {
  FakeTty tty(kSerialDevice);
  EXPECT_EQ(DeleteMediaFile(kSerialPort, '9', 9600, 0, "x.jpg"), 0);
  EXPECT_EQ(tty.Received(), BytesOf(wire::kDeletePicture));
}

TEST_F(Media, DeletionThatIsNotSentIsMinus10) {
  usb_.ExpectCommand(wire::kDeletePicture);
  usb_.OnTransfer([](const Transfer&) { CancelRead(); });
  EXPECT_EQ(DeleteMediaFile(0, '9', 9600, 0, "x.jpg"), -10);
}

TEST_F(Media, NullNameIsEmpty) {
  usb_.ExpectCommand("\x1B[0DELETE\x02\x37|\x03");
  EXPECT_EQ(DeleteMediaFile(0, '9', 9600, 7, nullptr), 0);
  Exchange(PaddedTo("\x1B[0DELETE\x02-1|\x03", 4096));
  EXPECT_EQ(DelVideoFile(0, '9', 9600, -1, nullptr), 0);
}

TEST_F(Media, NameThatFillsTheBufferIsSentAndALongerOneIsRefusedBeforeAnythingIs) {
  const std::string start = "\x1B[0DELETE\x02\x30|";
  const std::string name(4095 - start.size() - 1, 'n');
  const std::string sent = start + name + "\x03";
  Exchange(PaddedTo(sent, 4096));
  EXPECT_EQ(DelVideoFile(0, '9', 9600, 0, name.c_str()), 0);
  usb_.ExpectCommand(sent);
  EXPECT_EQ(DeleteMediaFile(0, '9', 9600, 0, name.c_str()), 0);
  EXPECT_EQ(DelVideoFile(0, '9', 9600, 0, (name + "n").c_str()), -1);
  EXPECT_EQ(DeleteMediaFile(0, '9', 9600, 0, (name + "n").c_str()), -1);
}

// ------------------------------------------------------------------ piece records

TEST(PieceRecord, HoldsTotalRemainingBytesAndTheirXor) {
  const unsigned char byte = 0x41;
  GuardedBuffer out(10);
  EXPECT_EQ(GetDownParam3(2, 1, &byte, 1, out.data()), 10);
  EXPECT_EQ(out.Content(), (Bytes{2, 0, 0, 0, 1, 0, 0, 0, 0x41, 0x42}));
}

TEST(PieceRecord, WithoutAnOutputHasNoLength) {
  const unsigned char byte = 0x41;
  EXPECT_EQ(GetDownParam3(2, 1, &byte, 1, nullptr), 0);
}

TEST(PieceRecord, NumbersAreLittleEndianAndMayBeNegative) {
  GuardedBuffer out(9);
  EXPECT_EQ(GetDownParam3(0x01020304, -2, nullptr, 0, out.data()), 9);
  EXPECT_EQ(out.Content(), (Bytes{4, 3, 2, 1, 0xFE, 0xFF, 0xFF, 0xFF, 4 ^ 3 ^ 2 ^ 1 ^ 0xFE ^ 0xFF}));
}

TEST(PieceRecord, NegativeCountIsNone) {
  const unsigned char byte = 0x41;
  GuardedBuffer out(9);
  EXPECT_EQ(GetDownParam3(1, 0, &byte, -5, out.data()), 9);
  EXPECT_EQ(out.Content(), (Bytes{1, 0, 0, 0, 0, 0, 0, 0, 1}));
}

TEST(PieceRecord, XorOfEveryRandomRecordIsZero) {
  std::mt19937 random(1);
  for (std::size_t count = 0; count < 200; ++count) {
    Bytes bytes(count);
    for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random());
    GuardedBuffer in(bytes);
    GuardedBuffer out(count + 9);
    ASSERT_EQ(GetDownParam3(7, 3, in.data(), static_cast<int>(count), out.data()),
              static_cast<int>(count) + 9);
    std::uint8_t sum = 0;
    for (const std::uint8_t byte : out.Content()) sum = static_cast<std::uint8_t>(sum ^ byte);
    ASSERT_EQ(sum, 0);
    const Bytes record = out.Content();
    ASSERT_EQ(Bytes(record.begin() + 8, record.end() - 1), bytes);
  }
}

// ------------------------------------------------------------------ pieces

// The 1024 bytes that go out for a piece, put together digit by digit.
Bytes PieceCommand(std::string_view head, int total, int remaining, std::string_view piece) {
  Bytes record = {static_cast<std::uint8_t>(total), 0, 0, 0, static_cast<std::uint8_t>(remaining), 0, 0, 0};
  record = Concat(record, BytesOf(piece));
  std::uint8_t check = 0;
  for (const std::uint8_t byte : record) check = static_cast<std::uint8_t>(check ^ byte);
  record.push_back(check);
  std::string command = std::string("\x1B[0DOWNLOAD\x02").append(head);
  for (const std::uint8_t byte : record) {
    command += static_cast<char>(0x30 + byte / 16);
    command += static_cast<char>(0x30 + byte % 16);
  }
  command += '\x03';
  command.resize(1024, '\0');
  return BytesOf(command);
}

// How the link's read of the piece's answer ends, which a real answer cannot do with 0.
int AnswersNothing(unsigned char*, int) {
  return 0;
}
int AnswersDone(unsigned char* data, int) {
  std::copy(wire::kDone.begin(), wire::kDone.end(), data);
  return 0;
}

class Piece : public Media {
 protected:
  ~Piece() override { ICC_CloseTransPort(); }

  static void Open(GwqEndOfRead end) {
    TransMssionLinux_t port{};
    port.nVid = kUsbIdentities[0].vid;
    port.nPid = kUsbIdentities[0].pid;
    port.nTimeOut = 1;
    port.pfnEndOfRead = end;
    ASSERT_EQ(ICC_OpenTransPort(&port), 0);
  }
  static int Send(std::string_view piece, const char* name = "n.txt") {
    const Bytes bytes = BytesOf(piece);
    return DownFile(0, 2, 1, bytes.data(), static_cast<int>(bytes.size()), name);
  }
};

TEST_F(Piece, CommandIs1024Bytes) {
  Open(&EndOfRead2);
  usb_.ExpectCommand(wire::kPiece).Answer(wire::kDone);
  EXPECT_EQ(Send("A"), -11);
}

TEST_F(Piece, AnswerCountsAsAFailedRead) {
  Open(&EndOfRead2);
  usb_.Expect(PieceCommand("0|n.txt|", 2, 1, "A")).Answer(wire::kDone);
  const LogCapture log;
  EXPECT_EQ(Send("A"), -11);
  EXPECT_THAT(OwnMessages(log), IsEmpty());
}

TEST_F(Piece, SilenceIsMinus11) {
  Open(&EndOfRead2);
  usb_.Expect(PieceCommand("0|n.txt|", 2, 1, "A"));
  EXPECT_EQ(Send("A"), -11);
}

TEST_F(Piece, ReadOf0WithTheRightAnswerIs0) {
  Open(&AnswersDone);
  usb_.Expect(PieceCommand("0|n.txt|", 2, 1, "A"));
  EXPECT_EQ(Send("A"), 0);
}

TEST_F(Piece, ReadOf0WithoutTheRightAnswerIsMinus14) {
  Open(&AnswersNothing);
  usb_.Expect(PieceCommand("0|n.txt|", 2, 1, "A"));
  const LogCapture log;
  EXPECT_EQ(Send("A"), -14);
  EXPECT_THAT(OwnMessages(log), ElementsAre(" read fail "));
}

TEST_F(Piece, ShortWriteIsMinus10AndNothingIsRead) {
  Open(&EndOfRead2);
  for (int i = 0; i < 5; ++i) usb_.NextOutMoves(0, LIBUSB_ERROR_TIMEOUT);
  EXPECT_EQ(Send("A"), -10);
  EXPECT_EQ(usb_.Count("in"), 0);
}

TEST_F(Piece, LinkThatIsNotOpenIsMinus10) {
  EXPECT_EQ(Send("A"), -10);
}

TEST_F(Piece, LongPieceIsCutWithTheCommand) {
  Open(&AnswersDone);
  const std::string piece = FileContent(1024);
  usb_.Expect(PieceCommand("0|n.txt|", 2, 1, piece));
  EXPECT_EQ(Send(piece), 0);
}

TEST_F(Piece, MoreThan1024BytesAreNotTaken) {
  Open(&AnswersDone);
  const std::string piece = FileContent(3000);
  usb_.Expect(PieceCommand("0|n.txt|", 2, 1, piece.substr(0, 1024)));
  EXPECT_EQ(Send(piece), 0);
}

TEST_F(Piece, EmptyPieceWithoutANameIsSent) {
  Open(&AnswersDone);
  usb_.Expect(PieceCommand("0||", 2, 1, ""));
  EXPECT_EQ(Send("", nullptr), 0);
}

TEST_F(Piece, NameThatIsNotSentWholeIsRefused) {
  Open(&AnswersDone);
  const std::string start = "\x1B[0DOWNLOAD\x02\x30|";
  const std::string name(1024 - start.size() - 1, 'n');
  usb_.ExpectCommand(start + name + "|");
  EXPECT_EQ(Send("A", name.c_str()), 0);
  EXPECT_EQ(Send("A", (name + "n").c_str()), -1);
  EXPECT_EQ(Send("A", std::string(6000, 'n').c_str()), -1);
}

// ------------------------------------------------------------------ a text in pieces

class TextInPieces : public Media {
 protected:
  static int Send(const char* text, int port = 0) { return DownVideoInfo(port, '9', 9600, 3, text, "n.txt"); }

  static std::string OpeningLog(int identity, int result) {
    std::ostringstream line;
    line << "ICC_OpenTransPort: PID=" << std::hex << kUsbIdentities[identity].pid
         << ",VID=" << kUsbIdentities[identity].vid << ", nRet=" << std::dec << result;
    return line.str();
  }

  std::string text_ = std::string(1024, 'a') + std::string(1024, 'b') + std::string(452, 'c');
};

TEST_F(TextInPieces, EachCountsDownTheRemainingOnes) {
  usb_.Expect(PieceCommand("3|n.txt|", 3, 2, std::string(1024, 'a'))).Answer(wire::kDone);
  usb_.Expect(PieceCommand("3|n.txt|", 3, 1, std::string(1024, 'b'))).Answer(wire::kDone);
  usb_.Expect(PieceCommand("3|n.txt|", 3, 0, std::string(452, 'c'))).Answer(wire::kDone);
  EXPECT_EQ(Send(text_.c_str()), -11) << "as every answered piece";
  EXPECT_EQ(usb_.Count("open"), 1) << "all on one link";
  EXPECT_EQ(usb_.Count("close"), 1);
}

TEST_F(TextInPieces, ExactMultipleHasNoEmptyPiece) {
  usb_.Expect(PieceCommand("3|n.txt|", 1, 0, std::string(1024, 'a'))).Answer(wire::kDone);
  EXPECT_EQ(Send(std::string(1024, 'a').c_str()), -11);
}

TEST_F(TextInPieces, FailedPieceDoesNotStopTheOthersAndTheLastOneTells) {
  for (int i = 0; i < 5; ++i) usb_.NextOutMoves(0, LIBUSB_ERROR_TIMEOUT);
  usb_.Expect(PieceCommand("3|n.txt|", 3, 1, std::string(1024, 'b'))).Answer(wire::kDone);
  usb_.Expect(PieceCommand("3|n.txt|", 3, 0, std::string(452, 'c'))).Answer(wire::kDone);
  EXPECT_EQ(Send(text_.c_str()), -11);
}

TEST_F(TextInPieces, FailureOfTheLastPieceIsReturned) {
  usb_.Expect(PieceCommand("3|n.txt|", 3, 2, std::string(1024, 'a'))).Answer(wire::kDone);
  usb_.Expect(PieceCommand("3|n.txt|", 3, 1, std::string(1024, 'b'))).Answer(wire::kDone);
  usb_.NextOutMoves(1024).NextOutMoves(1024);
  for (int i = 0; i < 5; ++i) usb_.NextOutMoves(0, LIBUSB_ERROR_TIMEOUT);
  EXPECT_EQ(Send(text_.c_str()), -10);
}

TEST_F(TextInPieces, EachAnswerIsAwaitedFiveSeconds) {
  usb_.Expect(PieceCommand("3|n.txt|", 1, 0, "x"));
  EXPECT_EQ(Send("x"), -11);
  EXPECT_EQ(Now() - kStart, 6);
}

TEST_F(TextInPieces, EmptyTextOpensAndClosesTheLinkOnly) {
  EXPECT_EQ(Send(""), 0);
  EXPECT_EQ(Send(nullptr), 0);
  EXPECT_EQ(usb_.Count("open"), 2);
  EXPECT_EQ(usb_.Count("out"), 0);
}

TEST_F(TextInPieces, PortIsIgnored) {
  for (const int port : {1, 42, -1}) {
    usb_.Expect(PieceCommand("3|n.txt|", 1, 0, "x")).Answer(wire::kDone);
    EXPECT_EQ(Send("x", port), -11);
  }
}

TEST_F(TextInPieces, AbsentTerminalIsMinus3AfterBothIdentities) {
  usb_.Unplug();
  const LogCapture log;
  EXPECT_EQ(Send("x"), -3);
  EXPECT_THAT(log.Messages(), testing::IsSupersetOf({OpeningLog(0, -7), OpeningLog(1, -7)}));
}

TEST_F(TextInPieces, OpeningIsLogged) {
  usb_.Expect(PieceCommand("3|n.txt|", 1, 0, "x")).Answer(wire::kDone);
  const LogCapture log;
  EXPECT_EQ(Send("x"), -11);
  EXPECT_THAT(log.Messages(), testing::Contains(OpeningLog(0, 0)));
}

}  // namespace
}  // namespace gwq::test
