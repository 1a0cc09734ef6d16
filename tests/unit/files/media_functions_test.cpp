// SPDX-License-Identifier: MIT
// Head photos, the QR code and the lists of the terminal's files.
#include <gwq/files/media_functions.h>

#include <optional>

#include <gwq/frame/transaction.h>
#include "support/guarded_buffer.h"
#include "support/iconv_text.h"
#include "unit/files/files_rig.h"

namespace gwq::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kDrained[] = "TransProcOnlyRead iRet=-11";

class MediaFunctions : public FilesRig {
 protected:
  // What an earlier screen left behind, which must be gone before the command.
  void LeaveSomething() { usb_.Answer("B0F"); }

  int Find(std::size_t capacity) {
    length_ = static_cast<int>(capacity);
    list_.emplace(capacity + 1, 0x55);
    return MP_FindHeadPhoto(nullptr, nullptr, 9600, list_->text(), &length_);
  }
  static int Delete(const char* name = "x.jpg") { return MP_DelHeadFile(nullptr, nullptr, 9600, name); }
  static int Down(const char* path, const char* name) {
    return MP_DownHeadFile(nullptr, "9", 9600, path, name);
  }
  static int SetBarcode(const char* path) { return MP_SetBarcodePic(nullptr, nullptr, 9600, path); }
  int GetList(int type = 0) {
    list_.emplace(1024, 0x55);
    return MP_GetFileList(nullptr, nullptr, 9600, nullptr, type, list_->text());
  }

  std::optional<GuardedBuffer> list_;
  int length_ = 0;
};

// ------------------------------------------------------------------ the drain

TEST_F(MediaFunctions, EveryFunctionDrainsFirst) {
  const std::string picture = MakeFile("x.jpg");
  LeaveSomething();
  Exchange(wire::kListHeadPhotos, wire::kTwoNames);
  EXPECT_EQ(Find(20), 0);
  LeaveSomething();
  Exchange(wire::kDeleteHeadPhoto);
  EXPECT_EQ(Delete(), 0);
  LeaveSomething();
  ExpectPush(2, "n");
  EXPECT_EQ(Down(picture.c_str(), "n"), 0);
  LeaveSomething();
  usb_.ExpectCommand(wire::kDeleteQrCode);
  EXPECT_EQ(SetBarcode(""), 0);
  LeaveSomething();
  Exchange(wire::kListPictures, wire::kTwoNames);
  EXPECT_EQ(GetList(), 0);
}

TEST_F(MediaFunctions, DrainLastsUntilTheSecondChanges) {
  usb_.ExpectCommand(wire::kDeleteQrCode);
  EXPECT_EQ(SetBarcode(""), 0);
  EXPECT_EQ(usb_.Count("in"), kDrainReads);
  EXPECT_EQ(Now() - kStart, 1);
}

TEST_F(MediaFunctions, DrainsResultIsLogged) {
  LeaveSomething();
  usb_.ExpectCommand(wire::kDeleteQrCode);
  const LogCapture log;
  EXPECT_EQ(SetBarcode(""), 0);
  EXPECT_THAT(OwnMessages(log), ElementsAre("[MP_SetBarcodePic]", "TransProcOnlyRead iRet=0"));
}

TEST_F(MediaFunctions, AbsentTerminalIsMinus3FromTheDrain) {
  const std::string picture = MakeFile("x.jpg");
  usb_.Unplug();
  const LogCapture log;
  EXPECT_EQ(Find(20), -3);
  EXPECT_EQ(Delete(), -3);
  EXPECT_EQ(Down(picture.c_str(), "n"), -3);
  EXPECT_EQ(SetBarcode(""), -3);
  EXPECT_EQ(SetBarcode("/nonexistent"), -3);
  EXPECT_EQ(GetList(), -3);
  const char* drained = "TransProcOnlyRead iRet=-3";
  EXPECT_THAT(OwnMessages(log),
              ElementsAre("MP_FindHeadPhoto", drained, "MP_DelHeadFile", drained, "MP_DownHeadFile", drained,
                          "[MP_SetBarcodePic]", drained, "[MP_SetBarcodePic]", drained, "[MP_GetFileList]",
                          "nFileType=0", drained));
  EXPECT_TRUE(list_->AllAre(0x55));
}

// ------------------------------------------------------------------ finding head photos

TEST_F(MediaFunctions, HeadPhotosAreTheAnswerWithoutItsMarks) {
  Exchange(wire::kListHeadPhotos, wire::kTwoNames);
  const LogCapture log;
  EXPECT_EQ(Find(11), 0);
  EXPECT_EQ(length_, 11);
  EXPECT_EQ(list_->Content(), Concat(BytesOf("a.jpg|b.jpg"), {0}));
  EXPECT_THAT(OwnMessages(log), ElementsAre("MP_FindHeadPhoto", kDrained));
}

TEST_F(MediaFunctions, HeadPhotosInALargerOutputAreTerminatedAndNoMore) {
  Exchange(wire::kListHeadPhotos, wire::kTwoNames);
  EXPECT_EQ(Find(20), 0);
  EXPECT_EQ(length_, 11);
  EXPECT_EQ(list_->Content(), Concat(BytesOf(std::string("a.jpg|b.jpg\0", 12)), Bytes(9, 0x55)));
}

TEST_F(MediaFunctions, HeadPhotosThatDoNotFitAreMinus24AndOutputsUntouched) {
  Exchange(wire::kListHeadPhotos, wire::kTwoNames);
  EXPECT_EQ(Find(10), -24);
  EXPECT_EQ(length_, 10);
  EXPECT_TRUE(list_->AllAre(0x55));
}

TEST_F(MediaFunctions, NoHeadPhotosAreAnEmptyList) {
  for (const char* answer : {"\x02\x03", "\x03"}) {
    Exchange(wire::kListHeadPhotos, answer);
    EXPECT_EQ(Find(0), 0);
    EXPECT_EQ(length_, 0);
    EXPECT_EQ(list_->Content(), Bytes{0});
  }
}

TEST_F(MediaFunctions, HeadPhotosWithoutOutputsAreMinus24) {
  char list[20];
  int length = 20;
  Exchange(wire::kListHeadPhotos, wire::kTwoNames);
  EXPECT_EQ(MP_FindHeadPhoto(nullptr, nullptr, 9600, nullptr, &length), -24);
  Exchange(wire::kListHeadPhotos, wire::kTwoNames);
  EXPECT_EQ(MP_FindHeadPhoto(nullptr, nullptr, 9600, list, nullptr), -24);
}

TEST_F(MediaFunctions, HeadPhotosLongerThanTheAnswerBufferAreCutThere) {
  usb_.ExpectCommand(wire::kListHeadPhotos).Answer(Bytes(1024, 'n'));
  EXPECT_EQ(Find(1022), 0);
  EXPECT_EQ(length_, 1022);
}

TEST_F(MediaFunctions, SilenceAboutHeadPhotosIsMinus11AfterThreeSeconds) {
  usb_.ExpectCommand(wire::kListHeadPhotos);
  EXPECT_EQ(Find(10), -11);
  EXPECT_EQ(length_, 10);
  EXPECT_TRUE(list_->AllAre(0x55));
  EXPECT_EQ(Now() - kStart, 1 + 4);
}

// ------------------------------------------------------------------ deleting a head photo

TEST_F(MediaFunctions, HeadPhotoIsDeletedByName) {
  Exchange(wire::kDeleteHeadPhoto);
  const LogCapture log;
  EXPECT_EQ(Delete(), 0);
  EXPECT_THAT(OwnMessages(log), ElementsAre("MP_DelHeadFile", kDrained));
}

TEST_F(MediaFunctions, RefusedDeletionIsMinus14) {
  Exchange(wire::kDeleteHeadPhoto, wire::kRefused);
  EXPECT_EQ(Delete(), -14);
}

TEST_F(MediaFunctions, AnyOtherAnswerToADeletionIs0) {
  for (const std::string answer : {"\x02Umore\x03", "\x02x\x03", "U\x03", "\x03", "\x02\xAA\x31\x03"}) {
    Exchange(wire::kDeleteHeadPhoto, answer);
    EXPECT_EQ(Delete(), 0) << answer;
  }
}

TEST_F(MediaFunctions, SilenceAboutADeletionIsMinus14) {
  usb_.ExpectCommand(wire::kDeleteHeadPhoto);
  EXPECT_EQ(Delete(), -14);
  EXPECT_EQ(Now() - kStart, 1 + 4);
}

TEST_F(MediaFunctions, TerminalThatVanishesDuringTheDrainOfADeletionIsMinus3) {
  usb_.OnTransfer([this](const Transfer&) { usb_.Unplug(); });
  const LogCapture log;
  EXPECT_EQ(Delete(), -3);
  EXPECT_THAT(OwnMessages(log), ElementsAre("MP_DelHeadFile", kDrained));
}

TEST_F(MediaFunctions, HeadPhotoWithoutANameIsTheEmptyName) {
  Exchange("\x1B[0DELETE\x02\x32|\x03");
  EXPECT_EQ(Delete(nullptr), 0);
}

// ------------------------------------------------------------------ sending a head photo

TEST_F(MediaFunctions, HeadPhotoIsSentUnderItsGivenName) {
  const std::string path = MakeFile("local.jpg");
  ExpectPush(2, "face.jpg");
  const LogCapture log;
  EXPECT_EQ(Down(path.c_str(), "face.jpg"), 0);
  EXPECT_THAT(OwnMessages(log),
              ElementsAre("MP_DownHeadFile", kDrained, "Z11DownLoadFile Z11ChangeMode nRet=0",
                          "Z11DownLoadFile Z11StartDownload nRet=0", " Z11SendFile szFilePath=" + path,
                          " Z11SendFile nCount=7", "Z11DownLoadFile Z11SendFile nRet=0",
                          "Z11EndDownload szTempName=face.jpg", "cmdEnd type=2\r\n",
                          "Z11DownLoadFile Z11EndDownload nRet=0", "nRet=0"));
}

TEST_F(MediaFunctions, HeadPhotoWithoutANameKeepsItsOwn) {
  const std::string path = MakeFile("local.jpg");
  for (const char* name : {static_cast<const char*>(nullptr), ""}) {
    ExpectPush(2, "local.jpg");
    const LogCapture log;
    EXPECT_EQ(Down(path.c_str(), name), 0);
    EXPECT_EQ(OwnMessages(log).at(2), "szFileNameNew:local.jpg");
    EXPECT_EQ(OwnMessages(log).back(), "nRet=0");
  }
}

TEST_F(MediaFunctions, HeadPhotoWithoutAPathIsMinus1BeforeTheDrain) {
  const LogCapture log;
  EXPECT_EQ(Down(nullptr, "n"), -1);
  EXPECT_EQ(Down("", "n"), -1);
  EXPECT_THAT(log.Messages(), ElementsAre("MP_DownHeadFile", "MP_DownHeadFile"));
  EXPECT_THAT(usb_.Calls(), IsEmpty());
}

TEST_F(MediaFunctions, MissingHeadPhotoIsMinus15BeforeTheDrain) {
  const LogCapture log;
  EXPECT_EQ(Down("/nonexistent/x.jpg", "n"), -15);
  EXPECT_THAT(log.Messages(), ElementsAre("MP_DownHeadFile", InGbk("[MP_DownHeadFile]文件不存在")));
  EXPECT_THAT(usb_.Calls(), IsEmpty());
}

TEST_F(MediaFunctions, FailedPushOfAHeadPhotoIsReturnedAndLogged) {
  const std::string path = MakeFile("local.jpg");
  Exchange(wire::kModeChange, wire::kFailed);
  const LogCapture log;
  EXPECT_EQ(Down(path.c_str(), "n"), -2);
  EXPECT_EQ(OwnMessages(log).back(), "nRet=-2");
}

TEST_F(MediaFunctions, ChannelOfAHeadPhotoMayBeMissing) {
  const std::string path = MakeFile("local.jpg");
  ExpectPush(2, "n");
  EXPECT_EQ(MP_DownHeadFile(nullptr, nullptr, 9600, path.c_str(), "n"), 0);
}

// ------------------------------------------------------------------ the QR code

TEST_F(MediaFunctions, QrCodePictureReplacesTheTerminals) {
  const std::string path = MakeFile("code.jpg");
  ExpectPush(255, "/mnt/sdcard/media/file/QRcode.jpg");
  const LogCapture log;
  EXPECT_EQ(SetBarcode(path.c_str()), 0);
  EXPECT_EQ(OwnMessages(log).at(0), "[MP_SetBarcodePic]");
  EXPECT_EQ(OwnMessages(log).at(1), kDrained);
  EXPECT_EQ(OwnMessages(log).back(), "nRet=0");
}

TEST_F(MediaFunctions, MissingQrCodePictureIsMinus15AfterTheDrain) {
  const LogCapture log;
  EXPECT_EQ(SetBarcode("/nonexistent/code.jpg"), -15);
  EXPECT_THAT(OwnMessages(log), ElementsAre("[MP_SetBarcodePic]", kDrained));
  EXPECT_EQ(usb_.Count("out"), 0);
}

TEST_F(MediaFunctions, FailedPushOfTheQrCodeIsReturnedAndLogged) {
  const std::string path = MakeFile("code.jpg");
  Exchange(wire::kModeChange, wire::kRefused);
  const LogCapture log;
  EXPECT_EQ(SetBarcode(path.c_str()), -14);
  EXPECT_EQ(OwnMessages(log).back(), "nRet=-14");
}

TEST_F(MediaFunctions, QrCodeWithoutAPathIsRemovedByOneCommand) {
  for (const char* path : {static_cast<const char*>(nullptr), ""}) {
    usb_.ExpectCommand(wire::kDeleteQrCode);
    const LogCapture log;
    EXPECT_EQ(SetBarcode(path), 0);
    EXPECT_THAT(OwnMessages(log), ElementsAre("[MP_SetBarcodePic]", kDrained));
  }
  EXPECT_EQ(usb_.Count("out"), 2);
  EXPECT_EQ(usb_.Count("in"), 2 * kDrainReads) << "no answer is read";
}

TEST_F(MediaFunctions, RemovalOfTheQrCodeThatIsNotSentIsMinus14) {
  usb_.ExpectCommand(wire::kDeleteQrCode);
  usb_.OnTransfer([](const Transfer& transfer) {
    if (!transfer.in) CancelRead();
  });
  EXPECT_EQ(SetBarcode(""), -14);
}

// ------------------------------------------------------------------ lists of files

TEST_F(MediaFunctions, FileListIsTheAnswerInUtf8) {
  Exchange(wire::kListPictures, "\x02\xD2\xBB.jpg|b.jpg\x03");
  const LogCapture log;
  EXPECT_EQ(GetList(), 0);
  EXPECT_EQ(list_->Content(), Concat(BytesOf("一.jpg|b.jpg"), Bytes(1024 - 13, 0)));
  EXPECT_THAT(OwnMessages(log), ElementsAre("[MP_GetFileList]", "nFileType=0", kDrained, "TransProc nRet=0",
                                            "szFileList=一.jpg|b.jpg"));
}

TEST_F(MediaFunctions, FileListIsAskedForByType) {
  Exchange("\x1B[0GETFILELIST\x02\x31\x32\x03", wire::kTwoNames);
  EXPECT_EQ(GetList(12), 0);
  Exchange("\x1B[0GETFILELIST\x02-1\x03", wire::kTwoNames);
  EXPECT_EQ(GetList(-1), 0);
}

TEST_F(MediaFunctions, FileListOfNothingIsEmpty) {
  for (const char* answer : {"\x02\x03", "\x03"}) {
    Exchange(wire::kListPictures, answer);
    EXPECT_EQ(GetList(), 0);
    EXPECT_TRUE(list_->AllAre(0));
  }
}

TEST_F(MediaFunctions, LongFileListIsCutToTheOutput) {
  const std::string answer = std::string(1, '\x02').append(std::string(3000, 'n')).append("\x03");
  usb_.ExpectCommand(wire::kListPictures);
  for (std::size_t at = 0; at < answer.size(); at += 1024) usb_.Answer(answer.substr(at, 1024));
  EXPECT_EQ(GetList(), 0);
  EXPECT_EQ(list_->Content(), Concat(Bytes(1023, 'n'), {0}));
}

TEST_F(MediaFunctions, FileListThatGrowsInUtf8IsCutBetweenCharacters) {
  std::string answer("\x02");
  for (int i = 0; i < 500; ++i) answer += "\xD2\xBB";
  Exchange(wire::kListPictures, answer.append("\x03"));
  EXPECT_EQ(GetList(), 0);
  std::string expected;
  for (int i = 0; i < 341; ++i) expected += "一";
  EXPECT_EQ(list_->Content(), Concat(BytesOf(expected), {0}));
}

TEST_F(MediaFunctions, FileListThatIsNotGbkEndsBeforeTheFirstWrongByte) {
  Exchange(wire::kListPictures, "\x02ok|\xFF.jpg\x03");
  EXPECT_EQ(GetList(), 0);
  EXPECT_EQ(list_->Content(), Concat(BytesOf("ok|"), Bytes(1021, 0)));
}

TEST_F(MediaFunctions, FileListWithoutAnOutputDoesNoHarm) {
  Exchange(wire::kListPictures, wire::kTwoNames);
  EXPECT_EQ(MP_GetFileList(nullptr, nullptr, 9600, nullptr, 0, nullptr), 0);
}

TEST_F(MediaFunctions, SilenceAboutTheFileListIsMinus11AndTheOutputUntouched) {
  usb_.ExpectCommand(wire::kListPictures);
  const LogCapture log;
  EXPECT_EQ(GetList(), -11);
  EXPECT_TRUE(list_->AllAre(0x55));
  EXPECT_THAT(OwnMessages(log),
              ElementsAre("[MP_GetFileList]", "nFileType=0", kDrained, "TransProc nRet=-11"));
  EXPECT_EQ(Now() - kStart, 1 + 4);
}

// ------------------------------------------------------------------ names that do not fit

TEST_F(MediaFunctions, NameOfAHeadPhotoThatDoesNotFitIsMinus1BeforeAnythingIsSent) {
  const std::string photo = MakeFile("x.jpg");
  const std::string long_name(2000, 'n');
  EXPECT_EQ(Delete(long_name.c_str()), -1);
  EXPECT_EQ(Down(photo.c_str(), long_name.c_str()), -1);
  EXPECT_EQ(Down(photo.c_str(), std::string(1023, 'n').c_str()), -1);
  EXPECT_THAT(usb_.Calls(), IsEmpty());
}

TEST_F(MediaFunctions, ListThatIsForgottenDoesNotReplaceAllPictures) {
  EXPECT_EQ(MP_DownloadFile(nullptr, nullptr, 9600, nullptr, 0, nullptr, 1), -1);
  EXPECT_THAT(usb_.Calls(), IsEmpty());
  EXPECT_EQ(MP_DownloadFile(nullptr, nullptr, 9600, nullptr, 0, nullptr, 2), 0) << "nothing to add";
}

TEST_F(MediaFunctions, ListWithANameToDeleteThatDoesNotFitIsMinus1BeforeAnythingIsSent) {
  std::string names = "a.jpg|" + std::string(1023, 'n') + "|b.jpg";
  EXPECT_EQ(MP_DownloadFile(nullptr, nullptr, 9600, nullptr, 0, names.data(), 4), -1);
  EXPECT_THAT(usb_.Calls(), IsEmpty());
}

}  // namespace
}  // namespace gwq::test
