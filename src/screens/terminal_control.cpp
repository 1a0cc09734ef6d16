// SPDX-License-Identifier: MIT
#include <gwq/screens/terminal_control.h>

#include <string_view>

#include <gwq/diag/log.h>
#include <gwq/status_codes.h>
#include "diag/internal/pause.h"
#include "frame/internal/cancel.h"
#include "frame/internal/operation.h"
#include "frame/internal/turn.h"
#include "screens/internal/screen.h"

namespace gwq {
namespace {

constexpr int kVersionBaud = 9600;
constexpr int kVersionTimeoutMs = 1000;
constexpr int kCloseTimeoutMs = 2000;

constexpr int kPauseBeforeCancelMs = 200;
constexpr int kPauseBeforeCloseMs = 300;
constexpr int kPauseAfterCloseMs = 100;

// Logs a failed exchange and returns its status to the caller.
// Contract: a time-out and a failed read are GWQ_NO_VERSION_ANSWER, which no other call returns.
int LogVersionExchange(int exchange) {
  switch (exchange) {
    case GWQ_OK:
      return GWQ_OK;
    case GWQ_NOT_OPENED:
      ICC_DPrintLogToFile("ERR_OPEN, End");
      return GWQ_NOT_OPENED;
    case GWQ_NO_ANSWER:
    case GWQ_READ_FAILED:
      ICC_DPrintLogToFile("ERR_TIMEOUT iRet:%d", GWQ_NO_VERSION_ANSWER);
      ICC_DPrintLogToFile("End");
      return GWQ_NO_VERSION_ANSWER;
    default:
      ICC_DPrintLogToFile("[MP_GetFirmwareVersion] Error End!");
      return GWQ_REFUSED;
  }
}

void LogVersion(AnswerText<1024>& answer, std::string_view version) {
  ICC_DPrintLogToFile("szRes=%s", answer.data());
  ICC_DPrintLogToFile("strlen(szRes)=%d", static_cast<int>(answer.text().size()));
  ICC_DPrintLogToFile("resLen=%d", *answer.length());
  ICC_DPrintLogToFile("szVersionTemp=%.*s", static_cast<int>(version.size()), version.data());
  ICC_DPrintLogToFile("nVersionLength=%d", static_cast<int>(version.size()));
}

void LogAndCopyPart(std::string_view part, const char* log, char* out) {
  ICC_DPrintLogToFile(log, static_cast<int>(part.size()), part.data());
  CopyTerminated(part, out);
}

// Contract: a refusal is parsed like any other answer; it has no "|" and is GWQ_REFUSED for that.
int ParseVersions(std::string_view version, char* common, char* private_part) {
  const std::size_t bar = version.find('|');
  const int index = bar == std::string_view::npos ? -1 : static_cast<int>(bar);
  ICC_DPrintLogToFile("nIndex=%d", index);
  if (index <= 0 || bar + 1 == version.size()) {
    ICC_DPrintLogToFile("nIndex Error iRet:%d", GWQ_REFUSED);
    return GWQ_REFUSED;
  }
  LogAndCopyPart(version.substr(0, bar), "szCommonVersion = %.*s", common);
  version.remove_prefix(bar + 1);
  LogAndCopyPart(version, "szPrivateVersion = %.*s", private_part);
  ICC_DPrintLogToFile("[MP_GetFirmwareVersion] Success End");
  return GWQ_OK;
}

}  // namespace

// Contract: USB at 9600 baud, without a drain; the arguments for these are ignored.
int MP_GetFirmwareVersion(void* /*ignored1*/, void* /*ignored2*/, int /*ignored3*/, int /*ignored4*/,
                          char* szCommonVersion, char* szPrivateVersion) {
  ICC_DPrintLogToFile("[MP_GetFirmwareVersion]2025.01.16 v02");
  Command<1024> command(Channel::kPinPad, "GETFIRMVERSION");
  AnswerText<1024> answer;
  const int exchange = Ask({0, kVersionBaud}, command, answer, &EndOfRead2, kVersionTimeoutMs);
  ICC_DPrintLogToFile("TransProc nRet:%d", exchange);
  if (const int status = LogVersionExchange(exchange); status != GWQ_OK) return status;
  const std::string_view version = WithoutMarks(answer.text());
  LogVersion(answer, version);
  return ParseVersions(version, szCommonVersion, szPrivateVersion);
}

int MP_CancelCurrentOperation(void* /*ignored1*/, void* /*ignored2*/, int iBaudRate, int /*ignored3*/) {
  PauseMs(kPauseBeforeCancelMs);
  CancelOperations();
  CancelRead();
  ICC_DPrintLogToFile("after CancelRead ");
  PauseMs(kPauseBeforeCloseMs);
  const CancelsWhileWaiting cancels;
  Command<1024> command(Channel::kDevice, "CLOSECURPROGRAM");
  AnswerText<4096> answer;
  const int result = Ask({0, iBaudRate}, command, answer, &EndOfRead2, kCloseTimeoutMs);
  PauseMs(kPauseAfterCloseMs);
  return result;
}

}  // namespace gwq
