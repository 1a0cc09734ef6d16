// SPDX-License-Identifier: MIT
// A number keyed by the customer, with a prompt.
#include <cstring>
#include <string_view>

#include <gwq/codec/encodings.h>
#include <gwq/codec/text_forms.h>
#include <gwq/diag/log.h>
#include <gwq/frame/port.h>
#include <gwq/pinpad/entry.h>
#include "codec/internal/secret.h"
#include "frame/internal/arguments.h"
#include "frame/internal/ask.h"
#include "frame/internal/operation.h"

namespace gwq {
namespace {

constexpr int kSplitRoom = 1024;
// An answer may be longer than its room; the rest is cut.
constexpr std::size_t kMaxNumberSize = 1023;

bool IsValidNumberCall(int timeout_s, int param1, int param2, const char* prompt, const char* result) {
  if (!IsSet(prompt) || result == nullptr) return false;
  return IsCustomerTimeout(timeout_s) && Within(param1, 0, 20) && Within(param2, 0, 2);
}

// Converts the prompt to GBK and to split form.
// Contract: a prompt that does not fit is sent empty.
int SplitPrompt(std::string_view prompt, SecretArray<char, kSplitRoom + 1>& split) {
  SecretHeap<char> gbk(2 * prompt.size() + 255);
  if (!gbk) return GWQ_TOO_SMALL;
  if (u2g(prompt.data(), static_cast<int>(prompt.size()), gbk.data(), static_cast<int>(gbk.size())) != 0) {
    return GWQ_BAD_ARGUMENT;
  }
  HexAsc1Split(reinterpret_cast<unsigned char*>(gbk.data()), static_cast<int>(std::strlen(gbk.data())),
               split.data(), kSplitRoom);
  return GWQ_OK;
}

}  // namespace

// Contract: USB; the port argument is ignored.
int PN_GetInNo(int /*iPortNo*/, const char* /*szReserved*/, int iBaudRate, int iTimeout, int iInParam1,
               int iInParam2, const char* szPrompt, char* szResult) {
  const Operation operation;
  constexpr int kMarginMs = 2000;
  ICC_DPrintLogToFile("PN_GetInNo ");
  if (!IsValidNumberCall(iTimeout, iInParam1, iInParam2, szPrompt, szResult)) return GWQ_BAD_ARGUMENT;
  if (const int status = DrainFirst({0, iBaudRate}, DrainLog::kLogged); status != GWQ_OK) return status;
  SecretArray<char, kSplitRoom + 1> prompt;
  if (const int result = SplitPrompt(szPrompt, prompt); result != GWQ_OK) return result;
  Command<2048> command(Channel::kKeyboard, "GETINNO");
  command.Fields('|', iTimeout, iInParam1, iInParam2, prompt.data());
  AnswerText<1024> answer;
  const int result = Ask({0, iBaudRate}, command, answer, &EndOfRead3, WaitMs(iTimeout, kMarginMs));
  // Logged before the copy, which leaves parts of the number in registers.
  ICC_DPrintLogToFile("iRet = %d", result);
  if (result != GWQ_OK) return result;
  const std::string_view number = WithoutMarks(answer.text()).substr(0, kMaxNumberSize);
  number.copy(szResult, number.size());
  szResult[number.size()] = '\0';
  return result;
}

}  // namespace gwq
