// SPDX-License-Identifier: MIT
// What the terminal shows of its files: the teller's head photo, the QR code, the pictures of the
// idle screen, and the firmware. The commands for stored media as such are in media.cpp.
#include <gwq/files/media_functions.h>

#include <algorithm>
#include <array>
#include <string_view>

#include <gwq/codec/encodings.h>
#include <gwq/diag/log.h>
#include <gwq/frame/port.h>
#include "diag/internal/log_gbk.h"
#include "diag/internal/pause.h"
#include "files/internal/file.h"
#include "files/internal/path_list.h"
#include "files/internal/transfer.h"
#include "frame/internal/arguments.h"
#include "frame/internal/ask.h"
#include "frame/internal/operation.h"

namespace gwq {
namespace {

constexpr int kTimeoutMs = 3000;
constexpr int kPauseAfterUpdateMs = 200;

// nSaveType of MP_DownloadFile, for pictures.
enum SaveType { kDeleteAll = 0, kReplaceAll = 1, kAdd = 2, kAddMissing = 3, kDeleteListed = 4 };

using MediaCommand = Command<1024 + 64>;

template <std::size_t N>
int AskMedia(int baud, MediaCommand& command, AnswerText<N>& answer) {
  return Ask({0, baud}, command, answer, &EndOfRead2, kTimeoutMs);
}

int PushPicture(const char* path) {
  const int result = PushFile(kPushEndpoint, kPicture, path, BaseName(path));
  if (result != GWQ_OK) ICC_DPrintLogToFile("Z11DownLoadFile Error nRet=%d", result);
  return result;
}

// Contract: the baud rate is 0; the caller's is ignored.
int DeletePicture(const char* name) {
  return DeleteOnTerminal({.port = 0, .baud = 0}, kPicture, name);
}

// Contract: only the first three characters of the extension count; "a.data" is a package as well.
bool IsFirmwarePackage(const char* path) {
  const char* extension = AfterLast(path, '.');
  return extension != nullptr && std::string_view(extension).starts_with("dat");
}

int UpdateFirmware(int baud, const char* path) {
  if (!IsSet(path) || !FileExists(path)) {
    LogGbk(Gbk("文件不存在"));
    return GWQ_NO_FILE;
  }
  if (!IsFirmwarePackage(path)) {
    LogGbk(Gbk("升级包类型错误"));
    return GWQ_BAD_ARGUMENT;
  }
  const int result = PushFile(kPushEndpoint, kFirmwareImage, path, BaseName(path));
  if (result != GWQ_OK) {
    LogGbk(Gbk("升级包下载失败 nRet=%d"), result);
    return result;
  }
  LogGbk(Gbk("升级包下载成功"));
  // Contract: whether the command to install it arrives does not count; the call succeeds.
  MediaCommand command(Channel::kDevice, "UPDATE");
  Tell({0, baud}, command.Fields('|', "/mnt/sdcard/media/data/update.dat"), kTimeoutMs);
  PauseMs(kPauseAfterUpdateMs);
  return GWQ_OK;
}

// Contract: compared and logged although every failure returns earlier; never GWQ_REFUSED.
int CompareCounts(int needed, int done) {
  ICC_DPrintLogToFile("nNeedDown=%d", needed);
  ICC_DPrintLogToFile("nHavedDown=%d", done);
  ICC_DPrintLogToFile(needed == done ? "OK" : "Error");
  return needed == done ? GWQ_OK : GWQ_REFUSED;
}

int AddPicture(const char* list, const char* path) {
  if (!FileExists(path)) {
    LogGbk(Gbk("文件不存在 szFilePath = %s"), list);
    LogGbk(Gbk("文件不存在 szFilePathUTF8 = %s"), path);
    return GWQ_NO_FILE;
  }
  if (AfterLast(path, '/') == nullptr) {
    LogGbk(Gbk("路径格式异常"));
    return GWQ_NO_FILE;
  }
  return PushPicture(path);
}

int AddPictures(char* list) {
  PathList paths(list);
  int needed = 0;
  int done = 0;
  while (const char* path = paths.Next()) {
    ++needed;
    if (const int result = AddPicture(list, path); result != GWQ_OK) return result;
    ++done;
  }
  return CompareCounts(needed, done);
}

int QueryPicture(int baud, const char* path, bool& on_terminal) {
  SecretText<1024 + 64> remote;
  remote << "/mnt/internal_sd/media/picture/" << BaseName(path);
  ICC_DPrintLogToFile("query File szDevicePath=%s", remote.data());
  MediaCommand command(Channel::kDevice, "SPECQUERYFILE");
  AnswerText<4096> answer;
  const int result = AskMedia(baud, command.Fields('|', remote.text()), answer);
  if (result != GWQ_OK) {
    ICC_DPrintLogToFile("SPECQUERYFILE\tError  nRet=%d", result);
    return result;
  }
  // Contract: an answer of at most 9 bytes means that the terminal does not have it.
  on_terminal = !answer.text().starts_with(kRefusalAnswer) && answer.text().size() > 9;
  ICC_DPrintLogToFile("query File  OK");
  ICC_DPrintLogToFile("query File nExist=%d", on_terminal ? 1 : 0);
  return GWQ_OK;
}

int AddMissingPicture(int baud, const char* path) {
  if (!FileExists(path)) {
    LogGbk(Gbk("文件不存在"));
    return GWQ_NO_FILE;
  }
  if (AfterLast(path, '/') == nullptr) {
    LogGbk(Gbk("路径格式异常"));
    return GWQ_NO_FILE;
  }
  bool on_terminal = false;
  if (const int result = QueryPicture(baud, path, on_terminal); result != GWQ_OK) return result;
  return on_terminal ? GWQ_OK : PushPicture(path);
}

int AddMissingPictures(int baud, char* list) {
  PathList paths(list);
  while (const char* path = paths.Next()) {
    if (const int result = AddMissingPicture(baud, path); result != GWQ_OK) return result;
  }
  ICC_DPrintLogToFile("OK");
  return GWQ_OK;
}

int DeletePictures(char* list) {
  PathList names(list);
  int needed = 0;
  int done = 0;
  while (const char* name = names.Next()) {
    ++needed;
    if (const int result = DeletePicture(name); result != GWQ_OK) {
      ICC_DPrintLogToFile("DeleteMediaFile Error nRet=%d", result);
      return result;
    }
    ++done;
  }
  return CompareCounts(needed, done);
}

int DeleteAllPictures() {
  const int result = DeletePicture("*");
  ICC_DPrintLogToFile("nRet=%d", result);
  return result;
}

int ReplacePictures(char* list) {
  const int result = DeletePicture("*");
  ICC_DPrintLogToFile("DeleteMediaFile nRet=%d", result);
  return result == GWQ_OK ? AddPictures(list) : result;
}

int RejectType() {
  ICC_DPrintLogToFile("Z11DownLoadFile Error nRet=%d", GWQ_BAD_ARGUMENT);
  return GWQ_BAD_ARGUMENT;
}

// A missing list must not replace all pictures; a name that is cut would delete another picture.
bool IsValidList(const char* list, int save_type) {
  if (list == nullptr) return save_type != kReplaceAll;
  return save_type != kDeleteListed || LongestElement(list) <= kMaxNameSize;
}

int ChangePictures(int baud, char* list, int save_type) {
  char none[] = "";
  if (list == nullptr) list = none;
  switch (save_type) {
    case kDeleteAll:
      return DeleteAllPictures();
    case kReplaceAll:
      return ReplacePictures(list);
    case kAdd:
      return AddPictures(list);
    case kAddMissing:
      return AddMissingPictures(baud, list);
    case kDeleteListed:
      return DeletePictures(list);
    default:
      return RejectType();
  }
}

}  // namespace

int MP_FindHeadPhoto(const char* /*ignored1*/, const char* /*ignored2*/, int baud, char* list, int* length) {
  ICC_DPrintLogToFile("MP_FindHeadPhoto");
  if (const int status = DrainFirst({0, baud}, DrainLog::kLogged); status != GWQ_OK) return status;
  MediaCommand command(Channel::kDevice, "GETFILELIST");
  AnswerText<1024> answer;
  const int result = AskMedia(baud, command.Fields('|', kHeadPhoto), answer);
  if (result != GWQ_OK) return result;
  const std::string_view names = WithoutMarks(answer.text());
  if (list == nullptr || length == nullptr || *length < static_cast<int>(names.size())) return GWQ_TOO_SMALL;
  *length = static_cast<int>(names.size());
  list[names.copy(list, names.size())] = '\0';
  return GWQ_OK;
}

int MP_DelHeadFile(const char* /*ignored1*/, const char* /*ignored2*/, int baud, const char* name) {
  ICC_DPrintLogToFile("MP_DelHeadFile");
  MediaCommand command(Channel::kDevice, "DELETE");
  command.Fields('|', kHeadPhoto, OrEmpty(name));
  if (command.IsCut()) return GWQ_BAD_ARGUMENT;
  if (const int status = DrainFirst({0, baud}, DrainLog::kLogged); status != GWQ_OK) return status;
  AnswerText<1024> answer;
  const int result = AskMedia(baud, command, answer);
  if (result != GWQ_OK) return result == GWQ_NOT_OPENED ? GWQ_NOT_OPENED : GWQ_REFUSED;
  return answer.text() == kRefusalAnswer ? GWQ_REFUSED : GWQ_OK;
}

int MP_DownHeadFile(const char* /*ignored1*/, const char* /*ignored2*/, int baud, const char* path,
                    const char* name) {
  const Operation operation;
  ICC_DPrintLogToFile("MP_DownHeadFile");
  if (!IsSet(path) || OrEmpty(name).size() > kMaxNameSize) return GWQ_BAD_ARGUMENT;
  if (!FileExists(path)) {
    LogGbk(Gbk("[MP_DownHeadFile]文件不存在"));
    return GWQ_NO_FILE;
  }
  if (const int status = DrainFirst({0, baud}, DrainLog::kLogged); status != GWQ_OK) return status;
  SecretText<256> base_name;
  base_name << BaseName(path);
  if (!IsSet(name)) ICC_DPrintLogToFile("szFileNameNew:%s", base_name.data());
  const int result = PushFile({0, baud}, kHeadPhoto, path, IsSet(name) ? name : base_name.text());
  ICC_DPrintLogToFile("nRet=%d", result);
  return result;
}

int MP_SetBarcodePic(const char* /*ignored1*/, const char* /*ignored2*/, int baud, const char* path) {
  const Operation operation;
  ICC_DPrintLogToFile("[MP_SetBarcodePic]");
  if (const int status = DrainFirst({0, baud}, DrainLog::kLogged); status != GWQ_OK) return status;
  if (!IsSet(path)) {
    MediaCommand command(Channel::kEvaluation, "QRCODEDELETE");
    return Tell({0, baud}, command, kTimeoutMs) == GWQ_OK ? GWQ_OK : GWQ_REFUSED;
  }
  if (!FileExists(path)) return GWQ_NO_FILE;
  // Contract: the caller's baud rate is used for the drain only.
  const int result = PushFile(kPushEndpoint, kNamedFile, path, "/mnt/sdcard/media/file/QRcode.jpg");
  ICC_DPrintLogToFile("nRet=%d", result);
  return result;
}

int MP_GetFileList(const char* /*ignored1*/, const char* /*ignored2*/, int baud, const char* /*ignored3*/,
                   int nFileType, char* list) {
  constexpr int kCapacity = 1024;
  ICC_DPrintLogToFile("[MP_GetFileList]");
  ICC_DPrintLogToFile("nFileType=%d", nFileType);
  if (const int status = DrainFirst({0, baud}, DrainLog::kLogged); status != GWQ_OK) return status;
  MediaCommand command(Channel::kDevice, "GETFILELIST");
  AnswerText<4096> answer;
  const int result = AskMedia(baud, command.Fields('|', nFileType), answer);
  ICC_DPrintLogToFile("TransProc nRet=%d", result);
  if (result != GWQ_OK) return result;
  const std::string_view names = WithoutMarks(answer.text()).substr(0, kCapacity - 1);
  std::array<char, kCapacity + 1> converted{};
  g2u(names.data(), static_cast<int>(names.size()), converted.data(), kCapacity - 1);
  // Contract: all 1024 bytes of the caller's buffer are overwritten.
  if (list != nullptr) std::copy_n(converted.data(), kCapacity, list);
  ICC_DPrintLogToFile("szFileList=%s", converted.data());
  return GWQ_OK;
}

int MP_DownloadFile(const char* /*ignored1*/, const char* /*ignored2*/, int baud, const char* /*ignored3*/,
                    int nFileType, char* szFilePath, int nSaveType) {
  const Operation operation;
  ICC_DPrintLogToFile("[MP_DownloadFile]");
  ICC_DPrintLogToFile("nFileType=%d,szFilePath=%s,nSaveType=%d", nFileType, szFilePath, nSaveType);
  if (nFileType == 0 && !IsValidList(szFilePath, nSaveType)) return GWQ_BAD_ARGUMENT;
  if (const int status = DrainFirst({0, baud}, DrainLog::kLogged); status != GWQ_OK) return status;
  if (nFileType == 1) return UpdateFirmware(baud, szFilePath);
  if (nFileType == 0) return ChangePictures(baud, szFilePath, nSaveType);
  return RejectType();
}

}  // namespace gwq
