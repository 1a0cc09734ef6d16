// A text enciphered by the terminal, which hands the result over as a file.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string_view>

#include <gwq/codec/text_forms.h>
#include <gwq/diag/log.h>
#include <gwq/files/host_files.h>
#include <gwq/frame/port.h>
#include <gwq/pinpad/entry.h>
#include "diag/internal/pause.h"
#include "files/internal/file.h"
#include "files/internal/output_room.h"
#include "files/internal/private_file.h"
#include "files/internal/transfer.h"
#include "frame/internal/ask.h"
#include "frame/internal/operation.h"

namespace gwq {
namespace {

constexpr std::string_view kRemoteFile = "/tmp/encdata.txt";
constexpr char kLocalFile[] = "/tmp/enctemp.data";
constexpr int kPauseBeforePullMs = 200;
constexpr int kEncipherBaud = 9600;
constexpr std::size_t kHexRoom = 40960;
constexpr std::size_t kCommandRoom = 49152;

constexpr std::size_t kLongestAnswer = 4095;  // of an answer that overshoots its room the rest is cut

using Answer = AnswerText<4096>;

// Only whether the link opens counts here; what the terminal answers does not.
bool TerminalIsThere(int baud) {
  constexpr int kTimeoutMs = 1000;
  Command<64> command(Channel::kPinPad, "GETFIRMVERSION");
  AnswerText<1024> answer;
  const int result = Ask({0, baud}, command, answer, &EndOfRead2, kTimeoutMs);
  if (result == GWQ_NO_ANSWER) ICC_DPrintLogToFile("Timeout -405");
  if (result != GWQ_NOT_OPENED) return true;
  ICC_DPrintLogToFile("ERR_OPEN -3");
  return false;
}

int Failed(int code) {
  ICC_DPrintLogToFile("[PN_GetStringBlock] nRet=%d", code);
  return code;
}

// A function of its own: the registers that it leaves are cleared, the text's last characters in them.
[[gnu::noinline]] int HexOf(std::string_view info, SecretHeap<char>& hex) {
  return GetHexString(reinterpret_cast<const unsigned char*>(info.data()), static_cast<int>(info.size()),
                      hex.data(), static_cast<int>(hex.size()));
}

int AskToEncipher(int timeout_s, int algorithm, std::string_view info, Answer& answer) {
  SecretHeap<char> hex(kHexRoom);
  HeapCommand command(Channel::kPinPad, "GETENCDATA", kCommandRoom);
  if (!hex || !command) return Failed(GWQ_TOO_SMALL);
  const int digits = HexOf(info, hex);
  command.Fields('|', algorithm, digits, std::string_view(hex.data(), static_cast<std::size_t>(digits)));
  const int result = Ask({0, kEncipherBaud}, command, answer, &EndOfRead2, WaitMs(timeout_s, 3000));
  ICC_DPrintLogToFile("TransProc nRet=%d", result);
  if (result == GWQ_NOT_OPENED) return result;
  if (result != GWQ_OK) return Failed(GWQ_REFUSED);
  if (!answer.text().starts_with(kRefusalAnswer)) return GWQ_OK;
  ICC_DPrintLogToFile("[PN_GetStringBlock] EncKey not exist,nRet=%d", GWQ_NO_ENCRYPTION_KEY);
  return GWQ_NO_ENCRYPTION_KEY;
}

int PullResult(PrivateTempFile& place) {
  constexpr int kTimeoutMs = 3000;
  PauseMs(kPauseBeforePullMs);
  const int result =
      place ? PullTo(kRemoteFile, place.path(), kTimeoutMs) : static_cast<int>(GWQ_READ_FAILED);
  ICC_DPrintLogToFile("[PN_GetStringBlock] PullFile nRet=%d", result);
  if (result == GWQ_OK) return GWQ_OK;
  ICC_DPrintLogToFile("[PN_GetStringBlock] PullFile failed");
  return GWQ_REFUSED;
}

// The whole file, terminated, into a buffer that is cleared first as far as its present text.
int ReadResult(const char* path, char* data, int* size) {
  const File file = OpenFile(path, "rb");
  if (!file) {
    ICC_DPrintLogToFile("[PN_GetStringBlock] open file failed");
    return GWQ_REFUSED;
  }
  const int file_size = std::max(FileSize(path), 0);
  const auto count = static_cast<std::size_t>(file_size);
  if (!FitsOutputRoom(count + 1)) return Failed(GWQ_TOO_SMALL);
  *size = file_size;
  std::memset(data, 0, std::strlen(data));
  ICC_DPrintLogToFile("file_size = %d", file_size);
  data[std::fread(data, 1, count, file.get())] = '\0';
  return GWQ_OK;
}

// The answer without STX, the code behind it, and ETX.
void TakeAnswer(const Answer& answer, char* out) {
  constexpr std::size_t kMarks = 3;
  const std::string_view text = answer.text();
  const std::size_t length = std::min(text.size() < kMarks ? 0 : text.size() - kMarks, kLongestAnswer);
  if (length > 0) text.copy(out, length, 2);
  out[length] = '\0';
}

}  // namespace
}  // namespace gwq

using namespace gwq;

int PN_GetStringBlock(int /*iPortNo*/, const char* /*szReserved*/, int iBaudRate, int nTimeout, int iAlgoType,
                      const char* szInfo, char* pFileData, int* pnLen, char* szEncData) {
  const Operation operation;
  if (szInfo == nullptr || pFileData == nullptr || pnLen == nullptr || szEncData == nullptr) {
    return GWQ_BAD_ARGUMENT;
  }
  const std::string_view info(szInfo, static_cast<std::size_t>(std::max(*pnLen, 0)));
  ICC_DPrintLogToFile("PN_GetStringBlock  iAlgoType=%d,szInfo=%.*s", iAlgoType, static_cast<int>(info.size()),
                      szInfo);
  if (const int status = DrainFirst({0, iBaudRate}, DrainLog::kLogged); status != GWQ_OK) return status;
  if (!TerminalIsThere(iBaudRate)) return GWQ_NOT_OPENED;
  Answer answer;
  if (const int result = AskToEncipher(nTimeout, iAlgoType, info, answer); result != GWQ_OK) return result;
  PrivateTempFile place(kLocalFile);
  if (const int result = PullResult(place); result != GWQ_OK) return result;
  if (const int result = ReadResult(place.path(), pFileData, pnLen); result != GWQ_OK) return result;
  TakeAnswer(answer, szEncData);
  ICC_DPrintLogToFile("[PN_GetStringBlock] nRet=%d", GWQ_OK);
  return GWQ_OK;
}
