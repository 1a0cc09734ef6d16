// SPDX-License-Identifier: MIT
#include <gwq/screens/signing.h>

#include <climits>
#include <cstdio>
#include <cstring>
#include <string_view>

#include <gwq/codec/encodings.h>
#include <gwq/diag/log.h>
#include <gwq/frame/port.h>
#include "codec/internal/secret.h"
#include "diag/internal/log_gbk.h"
#include "diag/internal/pause.h"
#include "files/internal/file.h"
#include "files/internal/output_room.h"
#include "files/internal/path_list.h"
#include "files/internal/private_file.h"
#include "files/internal/transfer.h"
#include "frame/internal/ask.h"
#include "frame/internal/operation.h"
#include "screens/internal/document_steps.h"
#include "screens/internal/screen.h"

namespace gwq {
namespace {

// For the command word, numbers and separators around the parts whose size depends on the caller.
constexpr std::size_t kRoomAroundParts = 128;

constexpr std::size_t kListRoom = 4096;
using SignedDocuments = DocumentList<kListRoom>;
// A path that is cut to this is too long for the system to open.
using StrokesPath = SecretText<PATH_MAX + 16>;

// ------------------------------------------------------------------ fetching the signature

int PullPicture(const char* path) {
  const int result = PullTo("/tmp/hw.png", path);
  if (result < 0) LogGbk(Gbk("[GWQ_CallShowPDF]获取签名图片失败 nRet=%d"), result);
  return result;
}

void LogStrokesFailure(int result) {
  LogGbk(Gbk("[GWQ_CallShowPDF]获取矢量数据失败 nRet=%d"), result);
}

int PullStrokes(const char* path) {
  const int result = PullTo("/tmp/hw.txt", path);
  if (result < 0) LogStrokesFailure(result);
  return result;
}

// The size of an open file, which is at its beginning afterwards; negative on failure.
long SeekSize(std::FILE* file) {
  if (std::fseek(file, 0, SEEK_END) != 0) return -1;
  const long size = std::ftell(file);
  return std::fseek(file, 0, SEEK_SET) == 0 ? size : -1;
}

// Reads the file into the caller's buffer.
// Contract: MP_SignPDF clears the buffer only up to the end of the text that it has on entry, the
// other calls not at all; no terminator is written.
int ReadStrokes(const char* path, bool clears, char* data) {
  const File file = OpenFile(path, "rb");
  if (!file) {
    LogGbk(Gbk("[GWQ_CallShowPDF]打开矢量数据文件失败"));
    return GWQ_REFUSED;
  }
  const long size = SeekSize(file.get());
  LogGbk(Gbk("读文件  file_size = %d"), static_cast<int>(size));
  if (size < 0) return GWQ_REFUSED;
  if (data == nullptr) return GWQ_OK;
  const auto count = static_cast<std::size_t>(size);
  if (!FitsOutputRoom(count)) return GWQ_TOO_SMALL;
  if (clears) std::memset(data, 0, std::strlen(data));
  return std::fread(data, 1, count, file.get()) == count ? GWQ_OK : GWQ_REFUSED;
}

// ------------------------------------------------------------------ signing documents

// How the functions differ in what they write to the log and to the caller's buffer.
struct SigningVariant {
  const char* bad_argument;
  const char* timeout;
  const char* cancelled;
  const char* failed;
  const char* signed_log;  // this and the next may be null: no log line
  const char* success;
  bool empty_answer_fails;
  bool clears_data;
};

constexpr SigningVariant kPlain{.bad_argument = kParamError,
                                .timeout = "ERR_TIMEOUT,return\n",
                                .cancelled = "ERR_CANCAL,return\n",
                                .failed = "ERR_FAILD,return\n",
                                .signed_log = nullptr,
                                .success = "MP_SignPDF Success , End",
                                .empty_answer_fails = false,
                                .clears_data = true};

constexpr auto kVoiceBadArgument = Gbk("参数错误");
constexpr auto kVoiceTimeout = Gbk("电子签名超时");
constexpr auto kVoiceCancelled = Gbk("电子签名取消");
constexpr auto kVoiceFailed = Gbk("电子签名返回失败");
constexpr auto kVoiceSigned = Gbk("启动电子签名成功");
constexpr SigningVariant kVoice{.bad_argument = kVoiceBadArgument.c_str(),
                                .timeout = kVoiceTimeout.c_str(),
                                .cancelled = kVoiceCancelled.c_str(),
                                .failed = kVoiceFailed.c_str(),
                                .signed_log = kVoiceSigned.c_str(),
                                .success = "MP_SignPDF_Voice Success, end",
                                .empty_answer_fails = false,
                                .clears_data = false};

constexpr SigningVariant kTzg{.bad_argument = nullptr,
                              .timeout = kPlain.timeout,
                              .cancelled = kPlain.cancelled,
                              .failed = kPlain.failed,
                              .signed_log = nullptr,
                              .success = nullptr,
                              .empty_answer_fails = true,
                              .clears_data = false};

// The caller's arguments.
struct Signing {
  Endpoint endpoint;
  int timeout_s;
  const char* documents;
  std::string_view location;
  const char* picture;
  char* data;
};

// Ends a call that has no signature.
// Contract: the library closes the screen only here; after a signature the terminal does it.
int EndUnsigned(const Signing& signing, const char* log, int status) {
  LogIfSet(log);
  CloseScreen(signing.endpoint, Channel::kInformation);
  return status;
}

// Returns GWQ_OK when the signature is to be fetched.
// Contract: of the failures of the exchange only GWQ_NO_ANSWER ends the call; after any other the
// call goes on to the pull.
int CheckSignatureAnswer(const Signing& signing, const SigningVariant& variant, int result,
                         std::string_view answer) {
  if (result == GWQ_NO_ANSWER || answer == kTimeoutAnswer) {
    return EndUnsigned(signing, variant.timeout, GWQ_NO_ANSWER);
  }
  if (answer == kCancelAnswer) return EndUnsigned(signing, variant.cancelled, GWQ_CANCELLED);
  if (answer == kRefusalAnswer) return EndUnsigned(signing, variant.failed, GWQ_REFUSED);
  if (variant.empty_answer_fails && answer.empty()) return EndUnsigned(signing, nullptr, GWQ_REFUSED);
  LogIfSet(variant.signed_log);
  return GWQ_OK;
}

// Waits for the customer.
// Contract: an answer counts even if the exchange failed; a cancel that arrived before the failure
// is returned as one.
int AwaitSignature(const Signing& signing, const SigningVariant& variant, HeapCommand& command) {
  AnswerText<4096> answer;
  const int result =
      Ask(signing.endpoint, command, answer, &EndOfRead2, WaitMs(signing.timeout_s, kAnswerMarginMs));
  ICC_DPrintLogToFile("TransProc nRet=%d\n", result);
  return CheckSignatureAnswer(signing, variant, result, answer.data());
}

int FetchPicture(const Signing& signing) {
  PauseMs(kPauseBeforePullMs);
  if (!IsSet(signing.picture)) return GWQ_OK;
  return PullPicture(signing.picture) < 0 ? GWQ_REFUSED : GWQ_OK;
}

int FetchStrokes(const Signing& signing, const SigningVariant& variant, const char* path) {
  if (PullStrokes(path) < 0) return GWQ_REFUSED;
  return ReadStrokes(path, variant.clears_data, signing.data);
}

// "hw.data" in the picture's directory.
// Contract: for a picture's path without "/" it is "/hw.data", not a file in the working directory.
void FillStrokesPath(StrokesPath& path, const char* picture) {
  const std::string_view beside = OrEmpty(picture);
  const std::size_t slash = beside.rfind('/');
  path << beside.substr(0, slash == std::string_view::npos ? 0 : slash) << "/hw.data";
}

int FetchSignature(const Signing& signing, const SigningVariant& variant) {
  if (const int result = FetchPicture(signing); result != GWQ_OK) return result;
  StrokesPath path;
  FillStrokesPath(path, signing.picture);
  ICC_DPrintLogToFile("Get signData Path=%s", path.data());
  const int result = FetchStrokes(signing, variant, path.data());
  if (result == GWQ_OK) LogIfSet(variant.success);
  return result;
}

int SignDocuments(const Signing& signing, const SigningVariant& variant) {
  SignedDocuments list;
  if (const int result = PushDocuments(signing.documents, list.span()); result != GWQ_OK) return result;
  HeapCommand command(Channel::kInformation, "YCNEWSTARTSIGN",
                      signing.location.size() + list.size() + kRoomAroundParts);
  if (!command) return GWQ_TOO_SMALL;
  command.Fields('|', 0, signing.timeout_s, signing.location, list.data());
  const int result = AwaitSignature(signing, variant, command);
  return result == GWQ_OK ? FetchSignature(signing, variant) : result;
}

bool IsValidSigning(const Signing& signing) {
  return IsSet(signing.documents) && !signing.location.empty() && IsCustomerTimeout(signing.timeout_s) &&
         DocumentsFit(signing.documents, kListRoom);
}

// ------------------------------------------------------------------ the spoken prompt

constexpr std::string_view kVoiceWord = "YCSETVOICECONTENT";

int SendVoiceInGbk(Endpoint endpoint, std::string_view text) {
  SecretHeap<char> gbk(2 * text.size() + 255);
  if (!gbk) return GWQ_TOO_SMALL;
  if (u2g(text.data(), static_cast<int>(text.size()), gbk.data(), static_cast<int>(gbk.size() - 1)) != 0) {
    return GWQ_BAD_ARGUMENT;
  }
  HeapCommand command(Channel::kInformation, kVoiceWord, gbk.size() + kRoomAroundParts);
  if (!command) return GWQ_TOO_SMALL;
  AnswerText<1024> answer;
  return Ask(endpoint, command.Fields('|', gbk.data()), answer, &EndOfRead2, kSendTimeoutMs);
}

int SignWithVoice(const Signing& signing, const char* voice) {
  const bool valid = IsValidSigning(signing) && voice != nullptr;
  const int begun = CheckAndDrain(signing.endpoint, valid, kVoice.bad_argument);
  if (begun != GWQ_OK) return begun;
  if (const int result = SendVoiceInGbk(signing.endpoint, voice); result != GWQ_OK) {
    ICC_DPrintLogToFile("setSignVoice\tFail   nRet= %d", result);
    return result;
  }
  return SignDocuments(signing, kVoice);
}

// ------------------------------------------------------------------ TZG mode

struct TzgMode {
  int flag;
  int length;

  [[nodiscard]] bool IsValid() const {
    return length >= 1 && length <= 4 && Value() >= 2 && Value() <= 4 && !(Value() == 2 && flag == 1);
  }
  [[nodiscard]] int Value() const { return length + (flag == 1 ? 1 : 0); }
};

bool SupportsTzg(Endpoint endpoint) {
  constexpr int kQueryTimeoutMs = 1000;
  Command<64> command(Channel::kInformation, "YCISSUPPORTTZG");
  AnswerText<1024> answer;
  const int result = Ask(endpoint, command, answer, &EndOfRead2, kQueryTimeoutMs);
  return result == GWQ_OK && answer.text() == kDoneAnswer;
}

// Contract: in TZG mode the text is sent unconverted, and whether it arrives does not count.
int SendPlainVoice(Endpoint endpoint, std::string_view text) {
  HeapCommand command(Channel::kInformation, kVoiceWord, text.size() + kRoomAroundParts);
  if (!command) return GWQ_TOO_SMALL;
  Tell(endpoint, command.Fields('|', text), kSendTimeoutMs);
  return GWQ_OK;
}

int FetchTzgSignature(const Signing& signing) {
  if (const int result = FetchPicture(signing); result != GWQ_OK) return result;
  PrivateTempFile strokes("/tmp/data.txt");
  if (!strokes) {
    LogStrokesFailure(GWQ_READ_FAILED);
    return GWQ_REFUSED;
  }
  return FetchStrokes(signing, kTzg, strokes.path());
}

int SignInTzgMode(const Signing& signing, const TzgMode& mode, std::string_view voice) {
  SignedDocuments list;
  if (const int result = PushDocuments(signing.documents, list.span()); result != GWQ_OK) return result;
  if (const int result = SendPlainVoice(signing.endpoint, voice); result != GWQ_OK) return result;
  HeapCommand command(Channel::kInformation, "YCNEWSTARTZGTSIGN",
                      signing.location.size() + list.size() + kRoomAroundParts);
  if (!command) return GWQ_TOO_SMALL;
  command.Fields('|', 0, signing.timeout_s, mode.flag, mode.Value(), signing.location, list.data());
  const int result = AwaitSignature(signing, kTzg, command);
  return result == GWQ_OK ? FetchTzgSignature(signing) : result;
}

// ------------------------------------------------------------------ one page signed by hand

struct PageType {
  std::string_view extension;
  int type;
  const char* on_terminal;
};

constexpr PageType kPageTypes[] = {
    {"pdf", 3, "/tmp/infoviewer.pdf"},
    {"jpg", 2, "/tmp/infoviewer.jpg"},
    {"htm", 1, "/tmp/infoviewer.html"},
};

// Contract: only the first three characters of the extension count, and their case does: "html" is
// "htm", "HTML" is unknown.
const PageType* PageTypeOf(const char* path) {
  const char* extension = AfterLast(path, '.');
  if (extension == nullptr) return nullptr;
  for (const PageType& page : kPageTypes) {
    if (std::string_view(extension).starts_with(page.extension)) return &page;
  }
  return nullptr;
}

// Returns GWQ_OK when the signature is to be fetched.
// Contract: a failed exchange does not end the call, which goes on to the pulls.
int AwaitHandSignature(Endpoint endpoint, int type, int timeout_s) {
  // Contract: the terminal gets a second less than for documents.
  constexpr int kMarginMs = 2000;
  Command<64> command(Channel::kInformation, "HANDSIGN");
  AnswerText<1024> answer;
  const int result =
      Ask(endpoint, command.Fields('|', type, timeout_s), answer, &EndOfRead2, WaitMs(timeout_s, kMarginMs));
  LogGbk(Gbk("启动签名返回：%d\r\n"), result);
  return result == GWQ_OK && !answer.text().starts_with(kDoneAnswer) ? GWQ_REFUSED : GWQ_OK;
}

int FetchHandSignature(const char* picture, const char* strokes) {
  PauseMs(kPauseBeforePullMs);
  const int result = PullPicture(picture);
  return result < 0 ? result : PullStrokes(strokes);
}

}  // namespace

int MP_SignPDF(void* /*ignored1*/, const char* /*ignored2*/, int iBaudRate, int iTimeout,
               const char* szFilePath, const char* szLocation, const char* szSignPath, char* szSignData) {
  const Operation operation;
  const Signing signing{{0, iBaudRate}, iTimeout, szFilePath, OrEmpty(szLocation), szSignPath, szSignData};
  const int begun = CheckAndDrain(signing.endpoint, IsValidSigning(signing), kPlain.bad_argument);
  return begun == GWQ_OK ? SignDocuments(signing, kPlain) : begun;
}

int MP_SignPDF_Voice(void* /*ignored1*/, const char* /*ignored2*/, int iBaudRate, int iTimeout,
                     const char* szFilePath, const char* szLocation, const char* szVoiceContent,
                     const char* szSignPath, char* szSignData) {
  const Operation operation;
  const Signing signing{{0, iBaudRate}, iTimeout, szFilePath, OrEmpty(szLocation), szSignPath, szSignData};
  return SignWithVoice(signing, szVoiceContent);
}

int MP_Sign_With_TZG(void* /*ignored1*/, const char* /*ignored2*/, int iBaudRate, int iTimeout,
                     const char* szFilePath, const char* szLocation, const char* szVoiceContent,
                     const char* szSignPath, int nOperFlag, int nSignLen, char* szSignData) {
  const Operation operation;
  ICC_DPrintLogToFile("[MP_Sign_With_TZG]");
  ICC_DPrintLogToFile("nTimeout = %d", iTimeout);
  ICC_DPrintLogToFile("szFilePath = %s", szFilePath);
  ICC_DPrintLogToFile("szLocation = %s", szLocation);
  ICC_DPrintLogToFile("szVoiceContent = %s", szVoiceContent);
  ICC_DPrintLogToFile("szSignPath = %s", szSignPath);
  ICC_DPrintLogToFile("nOperFlag = %d", nOperFlag);
  ICC_DPrintLogToFile("nSignLen = %d", nSignLen);
  const Signing signing{{0, iBaudRate}, iTimeout, szFilePath, OrEmpty(szLocation), szSignPath, szSignData};
  const TzgMode mode{nOperFlag, nSignLen};
  // Range errors take precedence over GWQ_NOT_OPENED; SignWithVoice returns them.
  const bool in_range =
      IsCustomerTimeout(iTimeout) && (szFilePath == nullptr || DocumentsFit(szFilePath, kListRoom));
  if (in_range && DrainFirst(signing.endpoint) != GWQ_OK) return GWQ_NOT_OPENED;
  // Contract: an unknown mode, and a terminal without TZG mode, sign as by MP_SignPDF_Voice.
  if (!in_range || !mode.IsValid() || !SupportsTzg(signing.endpoint)) {
    return SignWithVoice(signing, szVoiceContent);
  }
  return SignInTzgMode(signing, mode, OrEmpty(szVoiceContent));
}

// Contract: USB; the port argument is ignored.
int GWQ_StartSign(int /*iPortNo*/, int iBaudRate, int iTimeout, const char* szFilePath,
                  const char* szSignPath, const char* szSignDataPath) {
  const Operation operation;
  if (!IsSet(szFilePath) || !IsSet(szSignPath) || !IsSet(szSignDataPath)) {
    return GWQ_BAD_ARGUMENT;
  }
  const PageType* page = PageTypeOf(szFilePath);
  if (page == nullptr || !IsCustomerTimeout(iTimeout)) return GWQ_BAD_ARGUMENT;
  const Endpoint endpoint{0, iBaudRate};
  // Contract: the status of the drain does not count, unlike in the MP_ functions.
  Drain(endpoint);
  const int pushed = PushFile(endpoint, kNamedFile, szFilePath, page->on_terminal);
  if (pushed < 0) return pushed;
  CloseScreen(endpoint, Channel::kInformation);
  if (const int result = AwaitHandSignature(endpoint, page->type, iTimeout); result != GWQ_OK) return result;
  return FetchHandSignature(szSignPath, szSignDataPath);
}

}  // namespace gwq
