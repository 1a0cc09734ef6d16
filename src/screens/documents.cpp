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

// Room for the list and what stands around it.
constexpr std::size_t kListRoom = 1024;
using Request = Command<kListRoom + 128>;
using List = DocumentList<kListRoom>;

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

bool ArgumentsHold(const char* paths, int timeout_s) {
  return IsSet(paths) && IsCustomerTimeout(timeout_s) && DocumentsFit(paths, kListRoom);
}

int Undecided(int status, int& decision) {
  decision = kUndecided;
  return status;
}

int TakeDecision(std::string_view answer, int& decision) {
  for (const Outcome& outcome : kOutcomes) {
    if (answer != outcome.answer) continue;
    decision = outcome.decision;
    return outcome.status;
  }
  return GWQ_OK;
}

int AskToConfirm(int baud, int timeout_s, const List& list, int& decision) {
  Request command(Channel::kInformation, "YCNEWSTARTFILE");
  AnswerText<1024> answer;
  const int result = Ask({0, baud}, command.Fields('|', 0, timeout_s, list.data()), answer, &EndOfRead2,
                         WaitMs(timeout_s, kAnswerMarginMs));
  ICC_DPrintLogToFile("TransProc nRet=%d\n", result);
  return result == GWQ_OK ? TakeDecision(answer.text(), decision) : Undecided(result, decision);
}

}  // namespace
}  // namespace gwq

using namespace gwq;

int MP_ShowPDF(void* /*ignored1*/, void* /*ignored2*/, int iBaudRate, int iTimeout, const char* szFilePath) {
  const Operation operation;
  const Endpoint endpoint{0, iBaudRate};
  const bool hold = ArgumentsHold(szFilePath, iTimeout);
  if (const int result = Begin(endpoint, hold, nullptr); result != GWQ_OK) return result;
  List list;
  if (const int result = PushDocuments(szFilePath, list.span()); result != GWQ_OK) return result;
  Request command(Channel::kInformation, "YCNEWSHOWFILE");
  return Tell(endpoint, command.Fields('|', 0, iTimeout, list.data()), kSendTimeoutMs);
}

int MP_ConfirmPDF(void* /*ignored1*/, void* /*ignored2*/, int iBaudRate, int iTimeout, const char* szFilePath,
                  int* pnDisplayResult) {
  const Operation operation;
  int nowhere = 0;
  int& decision = pnDisplayResult == nullptr ? nowhere : *pnDisplayResult;
  const bool hold = ArgumentsHold(szFilePath, iTimeout);
  const int begun = Begin({0, iBaudRate}, hold, kParamError);
  if (begun == GWQ_BAD_ARGUMENT) return Undecided(begun, decision);
  if (begun != GWQ_OK) return begun;
  List list;
  const int pushed = PushDocuments(szFilePath, list.span());
  if (pushed != GWQ_OK) return Undecided(pushed, decision);
  return AskToConfirm(iBaudRate, iTimeout, list, decision);
}
