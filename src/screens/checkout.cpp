// SPDX-License-Identifier: MIT
#include <gwq/screens/checkout.h>

#include <array>
#include <string_view>

#include <gwq/diag/log.h>
#include <gwq/status_codes.h>
#include "codec/internal/gbk_text.h"
#include "diag/internal/log_gbk.h"
#include "frame/internal/operation.h"
#include "screens/internal/screen.h"

namespace gwq {
namespace {

// Contract: "f" is a time-out and "w" a cancel; where documents are signed it is the reverse.
constexpr std::array kFailures{Meaning{kRefusalAnswer, GWQ_REFUSED},
                               Meaning{"\x02"
                                       "f\x03",
                                       GWQ_NO_ANSWER},
                               Meaning{"\x02w\x03", GWQ_CANCELLED}};

int ParseCheckOutAnswer(std::string_view answer, char* out) {
  constexpr std::size_t kAfterCode = 2;
  if (const auto failure = MeaningOf(kFailures, answer)) return *failure;
  CopyTerminated(AnswerFrom(answer, kAfterCode), out);
  ICC_DPrintLogToFile("result=%s", out);
  return GWQ_OK;
}

int AskCheckOut(Endpoint endpoint, int timeout_s, HeapCommand& command, char* out) {
  AnswerText<1024> answer;
  int result = Ask(endpoint, command, answer, &EndOfRead2, WaitMs(timeout_s, kAnswerMarginMs));
  ICC_DPrintLogToFile("iRet:%d\r\n", result);
  if (result == GWQ_OK) result = ParseCheckOutAnswer(answer.text(), out);
  ICC_DPrintLogToFile("MP_CheckOut_All  iRet:%d", result);
  return result;
}

int CheckOut(Endpoint endpoint, int timeout_s, std::string_view first, std::string_view second, char* out) {
  constexpr std::size_t kRoomAround = 64;
  const SplitCopy split_second(second);
  const SplitCopy split_first(first);
  HeapCommand command(Channel::kInformation, "YCCHECKOUTALLUTF8",
                      2 * (first.size() + second.size()) + kRoomAround);
  if (!split_second || !split_first || !command) return GWQ_TOO_SMALL;
  return AskCheckOut(endpoint, timeout_s,
                     command.Fields('#', timeout_s, split_second.text(), split_first.text()), out);
}

}  // namespace

int MP_CheckOut_All(void* /*ignored1*/, void* /*ignored2*/, int iBaudRate, int iTimeout,
                    const char* szFirstText, const char* szSecondText, char* szResult) {
  const Operation operation;
  ICC_DPrintLogToFile("MP_CheckOut_All");
  const bool texts_valid = IsSet(szFirstText) && szSecondText != nullptr;
  if (!texts_valid || szResult == nullptr || !IsCustomerTimeout(iTimeout)) {
    LogGbk(Gbk("参数错误"));
    return GWQ_BAD_ARGUMENT;
  }
  const Endpoint endpoint{0, iBaudRate};
  if (const int status = DrainFirst(endpoint); status != GWQ_OK) return status;
  return CheckOut(endpoint, iTimeout, szFirstText, szSecondText, szResult);
}

}  // namespace gwq
