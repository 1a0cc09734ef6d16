// SPDX-License-Identifier: MIT
// Listing, deleting, asking for files, text in pieces, the firmware update.
#include <gtest/gtest.h>

#include "unit/terminal/device/files/file_rig.h"

namespace gwq::terminal::test {

using namespace device;
namespace {

const std::string kPictures = "/mnt/internal_sd/media/picture/";
const std::string kHeads = "/mnt/sdcard/media/headphoto/";

std::string List(int type) {
  return NamedCommand("GETFILELIST", std::to_string(type));
}
std::string Delete(int type, const std::string& name) {
  return NamedCommand("DELETE", std::to_string(type) + "|" + name);
}

TEST(FileList, OfNothingIsEmpty) {
  FileRig host;
  EXPECT_EQ(host.Ask(List(2)), "\x02\x03");
}

TEST(FileList, HoldsTheNamesOfItsTypeInGbk) {
  FileRig host;
  host.store.files = {{kHeads + "a.jpg", ""}, {kHeads + "张三.jpg", ""}, {kPictures + "b.jpg", ""}};
  EXPECT_EQ(host.Ask(List(2)),
            "\x02"
            "a.jpg|\xD5\xC5\xC8\xFD.jpg\x03");
  EXPECT_EQ(host.Ask(List(0)),
            "\x02"
            "b.jpg\x03");
}

TEST(FileList, MayBeLong) {
  FileRig host;
  std::string expected = "\x02";
  for (int i = 100; i < 400; ++i) {
    const std::string name = "picture " + std::to_string(i) + ".jpg";
    host.store.files[kPictures + name] = "";
    expected += (i == 100 ? "" : "|") + name;
  }
  EXPECT_EQ(host.Ask(List(0)), expected + "\x03");
}

TEST(FileList, IsReadFromAWholeZeroPaddedBuffer) {
  FileRig host;
  host.store.files[kHeads + "a.jpg"] = "";
  EXPECT_EQ(host.Ask(List(2).append(4096 - List(2).size(), '\0')),
            "\x02"
            "a.jpg\x03");
}

TEST(Delete, RemovesOneFile) {
  FileRig host;
  host.store.files = {{kHeads + "a.jpg", ""}, {kHeads + "b.jpg", ""}, {kPictures + "a.jpg", ""}};
  EXPECT_EQ(host.Ask(Delete(2, "a.jpg")), wire::kDone);
  EXPECT_EQ(host.store.files.size(), 2U);
  EXPECT_EQ(host.Ask(Delete(2, "a.jpg")), wire::kRefused);
  EXPECT_EQ(host.store.files.size(), 2U);
}

TEST(Delete, FindsNamesInGbkAndInUtf8) {
  FileRig host;
  host.store.files = {{kHeads + "张三.jpg", ""}, {kHeads + "李四.jpg", ""}};
  EXPECT_EQ(host.Ask(Delete(2, "\xD5\xC5\xC8\xFD.jpg")), wire::kDone);
  EXPECT_EQ(host.Ask(Delete(2, "李四.jpg")), wire::kDone);
  EXPECT_TRUE(host.store.files.empty());
}

TEST(Delete, OfAStarRemovesAllOfItsType) {
  FileRig host;
  host.store.files = {{kHeads + "a.jpg", ""}, {kPictures + "b.jpg", ""}, {kPictures + "c.jpg", ""}};
  EXPECT_EQ(host.Ask(Delete(0, "*")), wire::kDone);
  EXPECT_EQ(host.store.files.size(), 1U);
  EXPECT_EQ(host.Ask(Delete(0, "*")), wire::kDone);
}

TEST(Delete, OfNamesThatLeadElsewhereIsRefused) {
  FileRig host;
  host.store.files["/tmp/x"] = "";
  for (const char* name : {"", "..", "../../../../tmp/x", "/tmp/x", "a/b"})
    EXPECT_EQ(host.Ask(Delete(0, name)), wire::kRefused) << name;
  EXPECT_EQ(host.store.files.size(), 1U);
}

TEST(Delete, AnswersThatNobodyReadDoNotReachTheNextCommand) {
  FileRig host;
  host.rig.Send(Delete(0, "a"));
  host.rig.Send(Delete(0, "b"));
  EXPECT_TRUE(host.rig.device().TakeWithdrawal());
  EXPECT_EQ(host.Ask(List(0)), "\x02\x03");
  EXPECT_TRUE(host.rig.device().TakeWithdrawal());
  EXPECT_EQ(host.Ask(List(0)), "\x02\x03");
  EXPECT_FALSE(host.rig.device().TakeWithdrawal());
}

TEST(Query, AnswersThePathOfAFileThatIsThere) {
  FileRig host;
  host.store.files[kPictures + "张三.jpg"] = "";
  const std::string path = kPictures + "张三.jpg";
  EXPECT_EQ(host.Ask(NamedCommand("SPECQUERYFILE", path)), "\x02" + path + "\x03");
  EXPECT_EQ(host.Ask(NamedCommand("SPECQUERYFILE", kPictures + "b.jpg")), wire::kRefused);
  EXPECT_EQ(host.Ask(NamedCommand("SPECQUERYFILE", "")), wire::kRefused);
}

TEST(QrCode, IsDeletedWithoutAnAnswer) {
  FileRig host;
  host.store.files = {{"/mnt/sdcard/media/file/QRcode.jpg", ""}, {"/tmp/x", ""}};
  EXPECT_EQ(host.Ask(wire::kDeleteQrCode), "(none)");
  EXPECT_EQ(host.store.files.size(), 1U);
  EXPECT_EQ(host.Ask(wire::kDeleteQrCode), "(none)");
}

const std::string kUpdate = NamedCommand("UPDATE", "/mnt/sdcard/media/data/update.dat");

TEST(Update, ChangesTheVersionToTheOneInTheFirstLine) {
  FileRig host;
  host.Push(4, "fw.dat", "V2.5|20250131\nbinary");
  EXPECT_EQ(host.Ask(kUpdate), "(none)");
  EXPECT_EQ(host.Ask(wire::kGetVersion), "\x02V2.5|20250131\x03");
}

TEST(Update, WithoutAVersionLineChangesNothing) {
  for (const std::string firmware :
       {"", "V2.5|20250131", "|x\n", "x|\n", "no bar\n", "V\x01|1\n",
        "V2|0000000000000000000000000000000000000000000000000000000000000000\n"}) {
    FileRig host;
    host.Push(4, "fw.dat", firmware);
    EXPECT_EQ(host.Ask(kUpdate), "(none)");
    EXPECT_EQ(host.Ask(wire::kGetVersion), "\x02V1.0.0|20240615\x03") << firmware;
  }
}

TEST(Update, FromAMissingFileChangesNothing) {
  FileRig host;
  EXPECT_EQ(host.Ask(kUpdate), "(none)");
  EXPECT_EQ(host.Ask(wire::kGetVersion), "\x02V1.0.0|20240615\x03");
}

TEST(FileCommands, GoWrongAsScripted) {
  const std::vector<std::pair<std::string, std::string>> commands{{"GETFILELIST", "2"},
                                                                  {"DELETE", "2|*"},
                                                                  {"SPECQUERYFILE", "/tmp/x"},
                                                                  {"PULLFILE", "/tmp/x"},
                                                                  {"DOWNLOAD", "1|x|00"}};
  for (const auto& [word, argument] : commands) {
    FileFaults faults;
    faults.refuse = {word + ":1"};
    faults.fail = {word + ":2"};
    faults.ignore = {word + ":3"};
    FileRig host(Line::kUsb, faults);
    host.store.files["/tmp/x"] = "x";
    EXPECT_EQ(host.Ask(NamedCommand(word, argument)), wire::kRefused) << word;
    EXPECT_EQ(host.Ask(NamedCommand(word, argument)), wire::kFailed) << word;
    EXPECT_EQ(host.Ask(NamedCommand(word, argument)), "(none)") << word;
    EXPECT_NE(host.Ask(NamedCommand(word, argument)), "(none)") << word;
  }
}

TEST(FileCommands, ThatAreNotAnsweredDoNothingWhenScripted) {
  FileFaults faults;
  faults.ignore = {"QRCODEDELETE", "UPDATE"};
  FileRig host(Line::kUsb, faults);
  host.store.files["/mnt/sdcard/media/file/QRcode.jpg"] = "";
  host.Push(4, "fw.dat", "V2.5|20250131\n");
  EXPECT_EQ(host.Ask(wire::kDeleteQrCode), "(none)");
  EXPECT_EQ(host.Ask(kUpdate), "(none)");
  EXPECT_EQ(host.store.files.size(), 2U);
  EXPECT_EQ(host.Ask(wire::kGetVersion), "\x02V1.0.0|20240615\x03");
}

// The piece of a text as the host lays it out.
std::string Piece(std::uint8_t total, std::uint8_t remaining, const std::string& bytes) {
  std::vector<std::uint8_t> record{total, 0, 0, 0, remaining, 0, 0, 0};
  record.insert(record.end(), bytes.begin(), bytes.end());
  std::uint8_t check = 0;
  for (const std::uint8_t byte : record) check = static_cast<std::uint8_t>(check ^ byte);
  record.push_back(check);
  return Split(record);
}
std::string Download(const std::string& piece, const std::string& name = "text.txt") {
  return NamedCommand("DOWNLOAD", "1|" + name + "|" + piece);
}
const std::string kText = "/mnt/internal_sd/media/video/text.txt";

TEST(TextDownload, OfOnePieceIsStored) {
  FileRig host;
  EXPECT_EQ(host.Ask(Download(Piece(1, 0, "hello"))), wire::kDone);
  EXPECT_EQ(host.store.files[kText], "hello");
  EXPECT_EQ(host.store.writers, 0);
}

TEST(TextDownload, JoinsItsPieces) {
  FileRig host;
  EXPECT_EQ(host.Ask(Download(Piece(3, 2, "one "))), wire::kDone);
  EXPECT_EQ(host.Ask(Download(Piece(3, 1, "two "))), wire::kDone);
  EXPECT_TRUE(host.store.files.empty());
  EXPECT_EQ(host.Ask(Download(Piece(3, 0, "three"))), wire::kDone);
  EXPECT_EQ(host.store.files[kText], "one two three");
}

TEST(TextDownload, RefusesAPieceOutOfItsTurnAndGoesOnWithTheRightOne) {
  FileRig host;
  EXPECT_EQ(host.Ask(Download(Piece(3, 1, "two "))), wire::kRefused);
  EXPECT_EQ(host.Ask(Download(Piece(3, 2, "one "))), wire::kDone);
  EXPECT_EQ(host.Ask(Download(Piece(3, 0, "three"))), wire::kRefused);
  EXPECT_EQ(host.Ask(Download(Piece(4, 2, "two "))), wire::kRefused);
  EXPECT_EQ(host.Ask(Download(Piece(3, 1, "two "), "other.txt")), wire::kRefused);
  EXPECT_EQ(host.Ask(Download(Piece(3, 1, "two "))), wire::kDone);
  EXPECT_EQ(host.Ask(Download(Piece(3, 0, "three"))), wire::kDone);
  EXPECT_EQ(host.store.files[kText], "one two three");
}

TEST(TextDownload, RefusesDamagedPieces) {
  std::string wrong_check = Piece(1, 0, "hello");
  wrong_check.back() = wrong_check.back() == '0' ? '1' : '0';
  for (const std::string& piece :
       {wrong_check, std::string(), std::string("0"), std::string("xx"), std::string(16, '0'),
        Piece(0, 0, "x"), Piece(1, 1, "x"), Piece(1, 2, "x")}) {
    FileRig host;
    EXPECT_EQ(host.Ask(Download(piece)), wire::kRefused) << piece;
    EXPECT_EQ(host.Ask(NamedCommand("DOWNLOAD", "1|" + piece)), wire::kRefused) << piece;
    EXPECT_TRUE(host.store.files.empty());
  }
}

TEST(TextDownload, FailsWhenThereIsNoRoom) {
  FileRig host;
  host.store.room = 5;
  EXPECT_EQ(host.Ask(Download(Piece(2, 1, "hello"))), wire::kDone);
  EXPECT_EQ(host.Ask(Download(Piece(2, 0, "!"))), wire::kFailed);
  EXPECT_EQ(host.store.writers, 0);
  host.store.writable = false;
  EXPECT_EQ(host.Ask(Download(Piece(1, 0, "x"))), wire::kFailed);
}

TEST(TextDownload, APieceCutOffByItsReportIsRefusedWhenTheNextCommandComes) {
  FileRig host;
  const std::string piece = Download(Piece(2, 1, std::string(1024, 'x')));
  host.rig.Feed(piece.substr(0, kReport));
  EXPECT_EQ(host.rig.Answer(), "(none)");
  host.rig.Send(Download(Piece(1, 0, "hello")));
  EXPECT_EQ(host.rig.Answer(), wire::kRefused);
  EXPECT_EQ(host.rig.Answer(), wire::kDone);
  EXPECT_EQ(host.store.files[kText], "hello");
}

TEST(TextDownload, APieceCutOffByItsReportIsRefusedAfterASecond) {
  FileRig host;
  host.rig.Feed(Download(Piece(2, 1, std::string(1024, 'x'))).substr(0, kReport));
  host.rig.Wait(1s);
  EXPECT_EQ(host.rig.Answer(), wire::kRefused);
}

}  // namespace
}  // namespace gwq::terminal::test
