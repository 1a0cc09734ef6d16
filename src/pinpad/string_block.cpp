// SPDX-License-Identifier: MIT
// A text enciphered by the terminal, which hands the result over as a file.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string_view>

#include <gwq/codec/text_forms.h>
#include <gwq/diag/log.h>
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
// Contract: the exchange that enciphers uses this baud rate; the caller's is ignored.
constexpr int kEncipherBaud = 9600;
constexpr std::size_t kHexRoom = 40960;
constexpr std::size_t kCommandRoom = 49152;

// An answer may be longer than its room; the rest is cut.
constexpr std::size_t kMaxAnswerSize = 4095;

using EncipherAnswer = AnswerText<4096>;

// Contract: only a link that does not open ends the call; the terminal's answer does not count.
bool IsTerminalPresent(int baud) {
  constexpr int kTimeoutMs = 1000;
  Command<64> command(Channel::kPinPad, "GETFIRMVERSION");
  AnswerText<1024> answer;
  const int result = Ask({0, baud}, command, answer, &EndOfRead2, kTimeoutMs);
  if (result == GWQ_NO_ANSWER) ICC_DPrintLogToFile("Timeout -405");
  if (result != GWQ_NOT_OPENED) return true;
  ICC_DPrintLogToFile("ERR_OPEN -3");
  return false;
}

int LogStringBlockResult(int code) {
  ICC_DPrintLogToFile("[PN_GetStringBlock] nRet=%d", code);
  return code;
}

// Not inlined, so that the registers that it uses are cleared on return: they have the text's last
// characters.
[[gnu::noinline]] int HexOf(std::string_view info, SecretHeap<char>& hex) {
  return GetHexString(reinterpret_cast<const unsigned char*>(info.data()), static_cast<int>(info.size()),
                      hex.data(), static_cast<int>(hex.size()));
}

int AskToEncipher(int timeout_s, int algorithm, std::string_view info, EncipherAnswer& answer) {
  SecretHeap<char> hex(kHexRoom);
  HeapCommand command(Channel::kPinPad, "GETENCDATA", kCommandRoom);
  if (!hex || !command) return LogStringBlockResult(GWQ_TOO_SMALL);
  const int digits = HexOf(info, hex);
  command.Fields('|', algorithm, digits, std::string_view(hex.data(), static_cast<std::size_t>(digits)));
  const int result = Ask({0, kEncipherBaud}, command, answer, &EndOfRead2, WaitMs(timeout_s, 3000));
  ICC_DPrintLogToFile("TransProc nRet=%d", result);
  if (result == GWQ_NOT_OPENED) return result;
  if (result != GWQ_OK) return LogStringBlockResult(GWQ_REFUSED);
  if (!answer.text().starts_with(kRefusalAnswer)) return GWQ_OK;
  ICC_DPrintLogToFile("[PN_GetStringBlock] EncKey not exist,nRet=%d", GWQ_NO_ENCRYPTION_KEY);
  return GWQ_NO_ENCRYPTION_KEY;
}

int PullResult(PrivateTempFile& file) {
  PauseMs(kPauseBeforePullMs);
  const int result = file ? PullTo(kRemoteFile, file.path()) : static_cast<int>(GWQ_READ_FAILED);
  ICC_DPrintLogToFile("[PN_GetStringBlock] PullFile nRet=%d", result);
  if (result == GWQ_OK) return GWQ_OK;
  ICC_DPrintLogToFile("[PN_GetStringBlock] PullFile failed");
  return GWQ_REFUSED;
}

// Reads the file into the caller's buffer and terminates it.
// Contract: the buffer is cleared only up to the end of the text that it has on entry.
int ReadResult(const char* path, char* data, int* size) {
  const File file = OpenFile(path, "rb");
  if (!file) {
    ICC_DPrintLogToFile("[PN_GetStringBlock] open file failed");
    return GWQ_REFUSED;
  }
  const int file_size = std::max(FileSize(path), 0);
  const auto count = static_cast<std::size_t>(file_size);
  if (!FitsOutputRoom(count + 1)) return LogStringBlockResult(GWQ_TOO_SMALL);
  *size = file_size;
  std::memset(data, 0, std::strlen(data));
  ICC_DPrintLogToFile("file_size = %d", file_size);
  data[std::fread(data, 1, count, file.get())] = '\0';
  return GWQ_OK;
}

// Copies the answer without STX, the code after it, and ETX.
void CopyEnciphered(const EncipherAnswer& answer, char* out) {
  constexpr std::size_t kMarks = 3;
  const std::string_view text = answer.text();
  const std::size_t length = std::min(text.size() < kMarks ? 0 : text.size() - kMarks, kMaxAnswerSize);
  if (length > 0) text.copy(out, length, 2);
  out[length] = '\0';
}

}  // namespace

// Contract: USB; the port argument is ignored.
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
  if (!IsTerminalPresent(iBaudRate)) return GWQ_NOT_OPENED;
  EncipherAnswer answer;
  if (const int result = AskToEncipher(nTimeout, iAlgoType, info, answer); result != GWQ_OK) return result;
  PrivateTempFile file(kLocalFile);
  if (const int result = PullResult(file); result != GWQ_OK) return result;
  if (const int result = ReadResult(file.path(), pFileData, pnLen); result != GWQ_OK) return result;
  CopyEnciphered(answer, szEncData);
  return LogStringBlockResult(GWQ_OK);
}

}  // namespace gwq
