// SPDX-License-Identifier: MIT
// The firmware package and the pictures of the idle screen.
#include <gwq/files/media_functions.h>
#include <gwq/frame/transaction.h>
#include "support/iconv_text.h"
#include "unit/files/files_rig.h"

namespace gwq::test {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

enum FileType { kPictures = 0, kFirmware = 1 };
enum SaveType { kDeleteAll = 0, kReplaceAll = 1, kAdd = 2, kAddMissing = 3, kDeleteListed = 4 };

class DownloadFile : public FilesRig {
 protected:
  int Run(const std::string& list, int save_type, int file_type = kPictures) {
    list_ = list;
    return MP_DownloadFile(nullptr, nullptr, 9600, nullptr, file_type, list_.data(), save_type);
  }

  // The log of a call: what every call writes, then these.
  static void ExpectLog(const LogCapture& log, int type, const std::string& list, int save_type,
                        const std::vector<std::string>& rest) {
    std::string arguments("nFileType=");
    arguments.append(std::to_string(type)).append(",szFilePath=").append(list);
    arguments.append(",nSaveType=").append(std::to_string(save_type));
    std::vector<std::string> expected = {"[MP_DownloadFile]", arguments, "TransProcOnlyRead iRet=-11"};
    expected.insert(expected.end(), rest.begin(), rest.end());
    EXPECT_THAT(OwnMessages(log), ElementsAreArray(expected));
  }
  static std::vector<std::string> PushLog(const std::string& path, const std::string& name, int type) {
    return {"Z11DownLoadFile Z11ChangeMode nRet=0",
            "Z11DownLoadFile Z11StartDownload nRet=0",
            " Z11SendFile szFilePath=" + path,
            " Z11SendFile nCount=7",
            "Z11DownLoadFile Z11SendFile nRet=0",
            "Z11EndDownload szTempName=" + name,
            std::string("cmdEnd type=").append(std::to_string(type)).append("\r\n"),
            "Z11DownLoadFile Z11EndDownload nRet=0"};
  }
  static std::vector<std::string> Joined(std::vector<std::string> first,
                                         const std::vector<std::string>& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
  }
  static std::string ListOf(const std::vector<std::string>& paths) {
    std::string list;
    for (const std::string& path : paths) list.append(list.empty() ? "" : "|").append(path);
    return list;
  }
  static std::string Query(std::string_view name) {
    return std::string("\x1B[0SPECQUERYFILE\x02/mnt/internal_sd/media/picture/").append(name).append("\x03");
  }
  static std::string Deletion(std::string_view name) {
    return std::string("\x1B[0DELETE\x02\x30|").append(name).append("\x03");
  }

  // In the files' directory, where a name without "/" exists.
  class InDirectory {
   public:
    explicit InDirectory(const TempDir& directory) : before_(std::filesystem::current_path()) {
      std::filesystem::current_path(directory.Path());
    }
    ~InDirectory() { std::filesystem::current_path(before_); }
    InDirectory(const InDirectory&) = delete;
    InDirectory& operator=(const InDirectory&) = delete;

   private:
    std::filesystem::path before_;
  };

  static constexpr std::string_view kKnown = "\x02known!!!\x03";  // 10 bytes

  std::string x_ = MakeFile("x.jpg");
  std::string y_ = MakeFile("sub/y.jpg");
  std::string list_;
};

// ------------------------------------------------------------------ common

TEST_F(DownloadFile, AbsentTerminalIsMinus3BeforeAnythingElse) {
  usb_.Unplug();
  for (const int file_type : {0, 1, 2}) {
    const LogCapture log;
    EXPECT_EQ(Run("/nonexistent", kAdd, file_type), -3);
    EXPECT_EQ(OwnMessages(log).back(), "TransProcOnlyRead iRet=-3");
  }
}

TEST_F(DownloadFile, LeftoversAreDrainedFirst) {
  usb_.Answer("B0F").ExpectCommand(wire::kDeleteAllPictures);
  const LogCapture log;
  EXPECT_EQ(Run("", kDeleteAll), 0);
  EXPECT_EQ(OwnMessages(log).at(2), "TransProcOnlyRead iRet=0");
}

TEST_F(DownloadFile, UnknownTypesAreMinus1) {
  for (const int file_type : {-1, 2, 4}) {
    const LogCapture log;
    EXPECT_EQ(Run(x_, kAdd, file_type), -1);
    ExpectLog(log, file_type, x_, kAdd, {"Z11DownLoadFile Error nRet=-1"});
  }
  for (const int save_type : {-1, 5}) {
    const LogCapture log;
    EXPECT_EQ(Run(x_, save_type), -1);
    ExpectLog(log, kPictures, x_, save_type, {"Z11DownLoadFile Error nRet=-1"});
  }
  EXPECT_EQ(usb_.Count("out"), 0);
}

TEST_F(DownloadFile, NullListIsAnEmptyOne) {
  for (const int save_type : {kAdd, kAddMissing, kDeleteListed}) {
    EXPECT_EQ(MP_DownloadFile(nullptr, nullptr, 9600, nullptr, kPictures, nullptr, save_type), 0);
  }
  EXPECT_EQ(MP_DownloadFile(nullptr, nullptr, 9600, nullptr, kFirmware, nullptr, 0), -15);
  EXPECT_EQ(usb_.Count("out"), 0);
}

// ------------------------------------------------------------------ firmware

TEST_F(DownloadFile, FirmwareIsPushedAndTheUpdateStarted) {
  const std::string package = MakeFile("fw.dat");
  ExpectPush(4, "fw.dat");
  usb_.ExpectCommand(wire::kUpdate);
  const LogCapture log;
  EXPECT_EQ(Run(package, 0, kFirmware), 0);
  ExpectLog(log, kFirmware, package, 0, Joined(PushLog(package, "fw.dat", 4), {InGbk("升级包下载成功")}));
  EXPECT_EQ(usb_.Count("in"), kDrainReads + 4) << "no answer to the update is read";
  EXPECT_THAT(SleptMs(), ElementsAre(200));
}

TEST_F(DownloadFile, FirmwareWithALongerExtensionOrABarInItsNameIsTaken) {
  for (const char* name : {"fw.data", "a|b.dat", "a.b.dat"}) {
    const std::string package = MakeFile(name);
    ExpectPush(4, name);
    usb_.ExpectCommand(wire::kUpdate);
    EXPECT_EQ(Run(package, 7, kFirmware), 0) << name;
    EXPECT_EQ(list_, package) << "one path, not a list";
  }
}

TEST_F(DownloadFile, UpdateThatIsNotSentIsIgnored) {
  const std::string package = MakeFile("fw.dat");
  ExpectPush(4, "fw.dat");
  usb_.ExpectCommand(wire::kUpdate);
  usb_.OnTransfer([](const Transfer& transfer) {
    if (!transfer.in && transfer.index == 4) CancelRead();
  });
  EXPECT_EQ(Run(package, 0, kFirmware), 0);
  EXPECT_THAT(SleptMs(), ElementsAre(200));
}

TEST_F(DownloadFile, MissingFirmwareIsMinus15) {
  const LogCapture log;
  const std::string missing = Path("missing.bin");
  EXPECT_EQ(Run(missing, 0, kFirmware), -15);
  ExpectLog(log, kFirmware, missing, 0, {InGbk("文件不存在")});
  EXPECT_EQ(Run("", 0, kFirmware), -15);
}

TEST_F(DownloadFile, FirmwareOfAnotherExtensionIsMinus1BeforeAnyPush) {
  for (const char* name : {"fw.bin", "fw.DAT", "fw.da", "fw", "dat", "fw.dat.zip", "fw."}) {
    const std::string package = MakeFile(name);
    const LogCapture log;
    EXPECT_EQ(Run(package, 0, kFirmware), -1) << name;
    ExpectLog(log, kFirmware, package, 0, {InGbk("升级包类型错误")});
  }
  EXPECT_EQ(usb_.Count("out"), 0);
}

TEST_F(DownloadFile, FailedPushOfTheFirmwareIsReturnedAndNoUpdateStarted) {
  const std::string package = MakeFile("fw.dat");
  Exchange(wire::kModeChange, wire::kRefused);
  const LogCapture log;
  EXPECT_EQ(Run(package, 0, kFirmware), -14);
  ExpectLog(log, kFirmware, package, 0,
            {"Z11DownLoadFile Z11ChangeMode nRet=-14", InGbk("升级包下载失败 nRet=-14")});
  EXPECT_THAT(SleptMs(), IsEmpty());
}

// ------------------------------------------------------------------ 0: delete all

TEST_F(DownloadFile, DeletingAllDoesNotReadTheList) {
  usb_.ExpectCommand(wire::kDeleteAllPictures);
  const LogCapture log;
  const std::string list = ListOf({"/nonexistent/a.jpg", "b"});
  EXPECT_EQ(Run(list, kDeleteAll), 0);
  EXPECT_EQ(list_, list);
  ExpectLog(log, kPictures, list, kDeleteAll, {"nRet=0"});
  EXPECT_EQ(usb_.Count("in"), kDrainReads) << "no answer is read";
}

TEST_F(DownloadFile, DeletionOfAllThatIsNotSentIsReturned) {
  usb_.ExpectCommand(wire::kDeleteAllPictures);
  usb_.OnTransfer([](const Transfer& transfer) {
    if (!transfer.in) CancelRead();
  });
  const LogCapture log;
  EXPECT_EQ(Run("", kDeleteAll), -10);
  EXPECT_EQ(OwnMessages(log).back(), "nRet=-10");
}

// ------------------------------------------------------------------ 1: replace all

TEST_F(DownloadFile, ReplacingDeletesAllAndThenAdds) {
  usb_.ExpectCommand(wire::kDeleteAllPictures);
  ExpectPush(0, "x.jpg");
  const LogCapture log;
  EXPECT_EQ(Run(x_, kReplaceAll), 0);
  ExpectLog(log, kPictures, x_, kReplaceAll,
            Joined(Joined({"DeleteMediaFile nRet=0"}, PushLog(x_, "x.jpg", 0)),
                   {"nNeedDown=1", "nHavedDown=1", "OK"}));
}

TEST_F(DownloadFile, ReplacingEndsWhenTheDeletionIsNotSent) {
  usb_.ExpectCommand(wire::kDeleteAllPictures);
  usb_.OnTransfer([](const Transfer& transfer) {
    if (!transfer.in) CancelRead();
  });
  const LogCapture log;
  EXPECT_EQ(Run(x_, kReplaceAll), -10);
  ExpectLog(log, kPictures, x_, kReplaceAll, {"DeleteMediaFile nRet=-10"});
}

TEST_F(DownloadFile, ReplacingByNothingDeletesAll) {
  usb_.ExpectCommand(wire::kDeleteAllPictures);
  EXPECT_EQ(Run("", kReplaceAll), 0);
}

// ------------------------------------------------------------------ 2: add

TEST_F(DownloadFile, AddingPushesEveryPictureUnderItsBaseName) {
  ExpectPush(0, "x.jpg");
  ExpectPush(0, "y.jpg");
  const LogCapture log;
  const std::string list = ListOf({x_, y_});
  EXPECT_EQ(Run(list, kAdd), 0);
  ExpectLog(log, kPictures, list, kAdd,
            Joined(Joined(PushLog(x_, "x.jpg", 0), PushLog(y_, "y.jpg", 0)),
                   {"nNeedDown=2", "nHavedDown=2", "OK"}));
}

TEST_F(DownloadFile, AddingNothingLogsCountsOf0) {
  for (const std::string list : {"", "|", "|||"}) {
    const LogCapture log;
    EXPECT_EQ(Run(list, kAdd), 0);
    ExpectLog(log, kPictures, list, kAdd, {"nNeedDown=0", "nHavedDown=0", "OK"});
  }
  EXPECT_EQ(usb_.Count("out"), 0);
}

TEST_F(DownloadFile, ListIsCutInTheCallersMemory) {
  for (const int save_type : {kAdd, kAddMissing, kDeleteListed}) {
    const std::string list = ListOf({"/nonexistent/a", "/nonexistent/b"});
    if (save_type == kDeleteListed) {
      usb_.ExpectCommand(Deletion("/nonexistent/a")).ExpectCommand(Deletion("/nonexistent/b"));
    }
    EXPECT_EQ(Run(list, save_type), save_type == kDeleteListed ? 0 : -15);
    std::string cut = list;
    cut[cut.find('|')] = '\0';
    EXPECT_EQ(list_, cut);
  }
}

TEST_F(DownloadFile, EmptyElementsAreSkippedAndNotCounted) {
  ExpectPush(0, "x.jpg");
  ExpectPush(0, "y.jpg");
  const LogCapture log;
  EXPECT_EQ(Run(ListOf({"", x_, "", "", y_, ""}).insert(0, "||"), kAdd), 0);
  EXPECT_EQ(OwnMessages(log).at(OwnMessages(log).size() - 3), "nNeedDown=2");
}

TEST_F(DownloadFile, MissingPictureEndsAddingWithMinus15AfterThoseBefore) {
  ExpectPush(0, "x.jpg");
  const LogCapture log;
  const std::string list = ListOf({x_, "/nonexistent/a.jpg", y_});
  EXPECT_EQ(Run(list, kAdd), -15);
  ExpectLog(log, kPictures, list, kAdd,
            Joined(PushLog(x_, "x.jpg", 0), {InGbk("文件不存在 szFilePath = " + x_),
                                             InGbk("文件不存在 szFilePathUTF8 = /nonexistent/a.jpg")}));
}

TEST_F(DownloadFile, AddedPathWithoutSlashIsMinus15) {
  const InDirectory here(directory_);
  const LogCapture log;
  EXPECT_EQ(Run("x.jpg", kAdd), -15);
  ExpectLog(log, kPictures, "x.jpg", kAdd, {InGbk("路径格式异常")});
}

TEST_F(DownloadFile, FailedPushEndsAddingWithItsStatus) {
  Exchange(wire::kModeChange, wire::kFailed);
  const LogCapture log;
  const std::string list = ListOf({x_, y_});
  EXPECT_EQ(Run(list, kAdd), -2);
  ExpectLog(log, kPictures, list, kAdd,
            {"Z11DownLoadFile Z11ChangeMode nRet=-2", "Z11DownLoadFile Error nRet=-2"});
}

// ------------------------------------------------------------------ 3: add missing

TEST_F(DownloadFile, OnlyPicturesThatTheTerminalLacksArePushed) {
  Exchange(Query("x.jpg"), kKnown);
  Exchange(Query("y.jpg"), wire::kRefused);
  ExpectPush(0, "y.jpg");
  const LogCapture log;
  const std::string list = ListOf({x_, y_});
  EXPECT_EQ(Run(list, kAddMissing), 0);
  const std::vector<std::string> queries = {"query File szDevicePath=/mnt/internal_sd/media/picture/x.jpg",
                                            "query File  OK",
                                            "query File nExist=1",
                                            "query File szDevicePath=/mnt/internal_sd/media/picture/y.jpg",
                                            "query File  OK",
                                            "query File nExist=0"};
  ExpectLog(log, kPictures, list, kAddMissing, Joined(Joined(queries, PushLog(y_, "y.jpg", 0)), {"OK"}));
}

struct QueryCase {
  const char* name;
  std::string answer;
  bool known;
};

std::string Framed(std::size_t count) {
  return std::string(1, '\x02').append(count, 'k').append("\x03");
}

class DownloadFileQuery : public DownloadFile, public testing::WithParamInterface<QueryCase> {};

TEST_P(DownloadFileQuery, TellsWhetherThePictureIsThere) {
  Exchange(wire::kQueryPicture, GetParam().answer);
  if (!GetParam().known) ExpectPush(0, "x.jpg");
  EXPECT_EQ(Run(x_, kAddMissing), 0);
}

INSTANTIATE_TEST_SUITE_P(Answers, DownloadFileQuery,
                         testing::Values(QueryCase{"TenBytes", Framed(8), true},
                                         QueryCase{"NineBytes", Framed(7), false},
                                         QueryCase{"Long", Framed(1000), true},
                                         QueryCase{"Refusal", std::string(wire::kRefused), false},
                                         QueryCase{"RefusalWithMore", "\x02U\x03more and more\x03", false},
                                         QueryCase{"UnknownLikeRefusal", "\x02Umore and more\x03", true},
                                         QueryCase{"Done", std::string(wire::kDone), false}),
                         kByName);

TEST_F(DownloadFile, AddingMissingPicturesOfAnEmptyListIsOk) {
  const LogCapture log;
  EXPECT_EQ(Run("", kAddMissing), 0);
  ExpectLog(log, kPictures, "", kAddMissing, {"OK"});
}

TEST_F(DownloadFile, SilenceToAQueryIsReturned) {
  usb_.ExpectCommand(wire::kQueryPicture);
  const LogCapture log;
  EXPECT_EQ(Run(x_, kAddMissing), -11);
  ExpectLog(
      log, kPictures, x_, kAddMissing,
      {"query File szDevicePath=/mnt/internal_sd/media/picture/x.jpg", "SPECQUERYFILE\tError  nRet=-11"});
  EXPECT_EQ(Now() - kStart, 1 + 4);
}

TEST_F(DownloadFile, MissingLocalPictureIsMinus15BeforeItsQuery) {
  Exchange(Query("x.jpg"), kKnown);
  const LogCapture log;
  EXPECT_EQ(Run(ListOf({x_, "/nonexistent/a.jpg"}), kAddMissing), -15);
  EXPECT_EQ(OwnMessages(log).back(), InGbk("文件不存在"));
}

TEST_F(DownloadFile, QueriedPathWithoutSlashIsMinus15) {
  const InDirectory here(directory_);
  const LogCapture log;
  EXPECT_EQ(Run("x.jpg", kAddMissing), -15);
  ExpectLog(log, kPictures, "x.jpg", kAddMissing, {InGbk("路径格式异常")});
}

TEST_F(DownloadFile, FailedPushOfAMissingPictureIsReturned) {
  Exchange(Query("x.jpg"), wire::kRefused);
  Exchange(wire::kModeChange, wire::kRefused);
  const LogCapture log;
  EXPECT_EQ(Run(ListOf({x_, y_}), kAddMissing), -14);
  EXPECT_EQ(OwnMessages(log).back(), "Z11DownLoadFile Error nRet=-14");
}

// ------------------------------------------------------------------ 4: delete listed

TEST_F(DownloadFile, ListedPicturesAreDeletedByName) {
  usb_.ExpectCommand(Deletion("a.jpg")).ExpectCommand(Deletion("b c.jpg"));
  const LogCapture log;
  EXPECT_EQ(Run("a.jpg||b c.jpg|", kDeleteListed), 0);
  ExpectLog(log, kPictures, "a.jpg||b c.jpg|", kDeleteListed, {"nNeedDown=2", "nHavedDown=2", "OK"});
  EXPECT_EQ(usb_.Count("in"), kDrainReads) << "no answers are read";
}

TEST_F(DownloadFile, DeletionThatIsNotSentEndsTheList) {
  usb_.ExpectCommand(Deletion("a.jpg")).ExpectCommand(Deletion("b.jpg"));
  usb_.OnTransfer([](const Transfer& transfer) {
    if (!transfer.in && transfer.index == 1) CancelRead();
  });
  const LogCapture log;
  EXPECT_EQ(Run("a.jpg|b.jpg|c.jpg", kDeleteListed), -10);
  ExpectLog(log, kPictures, "a.jpg|b.jpg|c.jpg", kDeleteListed, {"DeleteMediaFile Error nRet=-10"});
}

TEST_F(DownloadFile, DeletingAnEmptyListLogsCountsOf0) {
  const LogCapture log;
  EXPECT_EQ(Run("", kDeleteListed), 0);
  ExpectLog(log, kPictures, "", kDeleteListed, {"nNeedDown=0", "nHavedDown=0", "OK"});
}

}  // namespace
}  // namespace gwq::test
