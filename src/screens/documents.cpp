// SPDX-License-Identifier: MIT
#include <gwq/screens/documents.h>

#include <string_view>

#include <gwq/diag/log.h>
#include <gwq/frame/port.h>
#include "frame/internal/ask.h"
#include "frame/internal/operation.h"
#include "screens/internal/document_steps.h"
#include "screens/internal/screen.h"

namespace gwq {
namespace {

constexpr std::size_t kListRoom = 1024;
using ShownDocuments = DocumentList<kListRoom>;
// The list, and the word and numbers around it.
using DocumentsCommand = Command<kListRoom + 128>;

// pnDisplayResult: what the customer decided.
enum Decision { kAgreed = 0, kDeclined = 1, kUndecided = 2 };

struct Outcome {
  std::string_view answer;
  Decision decision;
  int status;
};

constexpr Outcome kOutcomes[] = {
    {kDoneAnswer, kAgreed, GWQ_OK},
    {kCancelAnswer, kDeclined, GWQ_OK},
    {kTimeoutAnswer, kUndecided, GWQ_NO_ANSWER},
    {kRefusalAnswer, kUndecided, GWQ_REFUSED},
};

bool AreValidDocuments(const char* paths, int timeout_s) {
  return IsSet(paths) && IsCustomerTimeout(timeout_s) && DocumentsFit(paths, kListRoom);
}

int SetUndecided(int status, int& decision) {
  decision = kUndecided;
  return status;
}

// Contract: an answer that is none of these is GWQ_OK, and leaves the decision as it was.
int ParseDecision(std::string_view answer, int& decision) {
  for (const Outcome& outcome : kOutcomes) {
    if (answer != outcome.answer) continue;
    decision = outcome.decision;
    return outcome.status;
  }
  return GWQ_OK;
}

int AskToConfirm(int baud, int timeout_s, const ShownDocuments& list, int& decision) {
  DocumentsCommand command(Channel::kInformation, "YCNEWSTARTFILE");
  AnswerText<1024> answer;
  const int result = Ask({0, baud}, command.Fields('|', 0, timeout_s, list.data()), answer, &EndOfRead2,
                         WaitMs(timeout_s, kAnswerMarginMs));
  ICC_DPrintLogToFile("TransProc nRet=%d\n", result);
  return result == GWQ_OK ? ParseDecision(answer.text(), decision) : SetUndecided(result, decision);
}

}  // namespace

int MP_ShowPDF(void* /*ignored1*/, void* /*ignored2*/, int iBaudRate, int iTimeout, const char* szFilePath) {
  const Operation operation;
  const Endpoint endpoint{0, iBaudRate};
  const bool valid = AreValidDocuments(szFilePath, iTimeout);
  if (const int result = CheckAndDrain(endpoint, valid, nullptr); result != GWQ_OK) return result;
  ShownDocuments list;
  if (const int result = PushDocuments(szFilePath, list.span()); result != GWQ_OK) return result;
  DocumentsCommand command(Channel::kInformation, "YCNEWSHOWFILE");
  return Tell(endpoint, command.Fields('|', 0, iTimeout, list.data()), kSendTimeoutMs);
}

int MP_ConfirmPDF(void* /*ignored1*/, void* /*ignored2*/, int iBaudRate, int iTimeout, const char* szFilePath,
                  int* pnDisplayResult) {
  const Operation operation;
  int nowhere = 0;
  int& decision = pnDisplayResult == nullptr ? nowhere : *pnDisplayResult;
  const bool valid = AreValidDocuments(szFilePath, iTimeout);
  const int begun = CheckAndDrain({0, iBaudRate}, valid, kParamError);
  if (begun == GWQ_BAD_ARGUMENT) return SetUndecided(begun, decision);
  // Contract: a terminal that is not there leaves the decision as it was.
  if (begun != GWQ_OK) return begun;
  ShownDocuments list;
  const int pushed = PushDocuments(szFilePath, list.span());
  if (pushed != GWQ_OK) return SetUndecided(pushed, decision);
  return AskToConfirm(iBaudRate, iTimeout, list, decision);
}

}  // namespace gwq
