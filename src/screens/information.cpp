// SPDX-License-Identifier: MIT
#include <gwq/screens/information.h>

#include <array>
#include <string_view>

#include <gwq/diag/log.h>
#include <gwq/status_codes.h>
#include "frame/internal/operation.h"
#include "screens/internal/screen.h"

namespace gwq {
namespace {

constexpr std::size_t kSplitMessageSize = 61440;
constexpr std::size_t kMessageCommandSize = 65536;

// Contract: the screen has no key 2, and every unknown answer is key 4.
constexpr std::array kKeys{Meaning{"B0F", 0}, Meaning{"B1F", 1}, Meaning{"B3F", 3}};
constexpr int kAnyOtherKey = 4;

int AwaitKey(Endpoint endpoint, HeapCommand& command, int timeout_s, unsigned* key) {
  const WaitingScreen screen(endpoint, Channel::kInformation);
  AnswerText<1024> answer;
  const int result = Ask(endpoint, command, answer, &EndOfRead3, WaitMs(timeout_s, kAnswerMarginMs));
  if (result == GWQ_OK && key != nullptr) {
    *key = static_cast<unsigned>(MeaningOf(kKeys, answer.text()).value_or(kAnyOtherKey));
  }
  return result;
}

int AskKeyboard(Endpoint endpoint, std::string_view word, int timeout_s, AnswerText<1024>& answer) {
  const WaitingScreen screen(endpoint, Channel::kKeyboard);
  Command<1024> command(word);
  // Contract: no margin beyond the customer's time; an answer in the last moment is lost.
  return Ask(endpoint, command.Text(kLineEnd), answer, &EndOfRead3, WaitMs(timeout_s, 0));
}

// Copies the number after the screen is closed: the copy leaves it in registers, which the log
// calls of the closing would save on the stack.
int AwaitNumber(Endpoint endpoint, std::string_view word, int timeout_s, char* out) {
  AnswerText<1024> answer;
  const int result = AskKeyboard(endpoint, word, timeout_s, answer);
  if (result != GWQ_OK) return result;
  const std::string_view number = WithoutMarks(answer.text());
  // Contract: no terminator is written; the caller passes a zeroed buffer.
  number.copy(out, number.size());
  return GWQ_OK;
}

}  // namespace

int GWQ_StartInfo(int iPortNo, int iBaudRate, int iTimeout, const char* szMessage,
                  unsigned int* pnKeyPressed) {
  const Operation operation;
  ICC_DPrintLogToFile("[GWQ_StartInfo]");
  if (!IsSet(szMessage) || !IsCustomerTimeout(iTimeout)) return GWQ_BAD_ARGUMENT;
  SecretHeap<char> split(kSplitMessageSize);
  HeapCommand command(Channel::kInformation, "A", kMessageCommandSize);
  if (!split || !command) return GWQ_TOO_SMALL;
  const Endpoint endpoint{iPortNo, iBaudRate};
  DrainUsb(endpoint);
  CloseScreen(endpoint, Channel::kInformation);
  const int result = SetScreenTimeout(endpoint, Channel::kInformation, iTimeout);
  if (result != GWQ_OK) return result;
  command.Fields('|', SplitInto({split.data(), split.size()}, szMessage));
  return AwaitKey(endpoint, command, iTimeout, pnKeyPressed);
}

int GWQ_StartKeyboard(int iPortNo, int iBaudRate, int iTimeout, int iMode, char* pOutput) {
  const Operation operation;
  if (!Within(iMode, 0, 1) || pOutput == nullptr || !IsCustomerTimeout(iTimeout)) {
    return GWQ_BAD_ARGUMENT;
  }
  const Endpoint endpoint{iPortNo, iBaudRate};
  DrainUsb(endpoint);
  const int result = SetScreenTimeout(endpoint, Channel::kKeyboard, iTimeout);
  if (result != GWQ_OK) return result;
  return AwaitNumber(endpoint, iMode == 0 ? "GM" : "FA", iTimeout, pOutput);
}

}  // namespace gwq
