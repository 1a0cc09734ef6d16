#include <gwq/screens/information.h>

#include <array>

#include <gwq/diag/log.h>
#include <gwq/status_codes.h>
#include "frame/internal/operation.h"
#include "screens/internal/screen.h"

namespace gwq {
namespace {

constexpr std::size_t kSplitMessageSize = 61440;
constexpr std::size_t kMessageCommandSize = 65536;
constexpr int kNoMargin = 0;

// Key 2 is none of them, unlike a rating of 2.
constexpr std::array kKeys{Meaning{"B0F", 0}, Meaning{"B1F", 1}, Meaning{"B3F", 3}};
constexpr unsigned kAnyOtherKey = 4;

unsigned KeyIn(std::string_view answer) {
  const auto key = MeaningOf(kKeys, answer);
  return key ? static_cast<unsigned>(*key) : kAnyOtherKey;
}

int AwaitKey(Line line, HeapCommand& command, int timeout_s, unsigned* key) {
  const WaitingScreen screen(line, Channel::kInformation);
  AnswerText<1024> answer;
  const int result = Ask(line, command, answer, &EndOfRead3, WaitMs(timeout_s, kAnswerMarginMs));
  if (result == GWQ_OK && key != nullptr) *key = KeyIn(answer.text());
  return result;
}

int AskNumber(Line line, std::string_view word, int timeout_s, AnswerText<1024>& answer) {
  const WaitingScreen screen(line, Channel::kKeyboard);
  CommandText<1024> command;
  return Ask(line, command << word, answer, &EndOfRead3, WaitMs(timeout_s, kNoMargin));
}

// The number is copied once the screen is closed: log calls would save the copy's registers on the stack.
int AwaitNumber(Line line, std::string_view word, int timeout_s, char* out) {
  AnswerText<1024> answer;
  const int result = AskNumber(line, word, timeout_s, answer);
  if (result != GWQ_OK) return result;
  const std::string_view number = WithoutMarks(answer.text());
  number.copy(out, number.size());
  return GWQ_OK;
}

}  // namespace
}  // namespace gwq

int GWQ_StartInfo(int iPortNo, int iBaudRate, int iTimeout, const char* szMessage,
                  unsigned int* pnKeyPressed) {
  const gwq::Operation operation;
  ICC_DPrintLogToFile("[GWQ_StartInfo]");
  if (!gwq::Given(szMessage) || !gwq::IsCustomerTimeout(iTimeout)) return GWQ_BAD_ARGUMENT;
  gwq::SecretHeap<char> split(gwq::kSplitMessageSize);
  gwq::HeapCommand command(gwq::kMessageCommandSize);
  if (!split || !command) return GWQ_TOO_SMALL;
  const gwq::Line line{iPortNo, iBaudRate};
  if (iPortNo == 0) gwq::Drain(line);
  CloseScreen(line, gwq::Channel::kInformation);
  const int result = SetScreenTimeout(line, gwq::Channel::kInformation, iTimeout);
  if (result != GWQ_OK) return result;
  command << "\x1B[2A\x02" << gwq::SplitInto({split.data(), split.size()}, szMessage) << "\x03";
  return gwq::AwaitKey(line, command, iTimeout, pnKeyPressed);
}

int GWQ_StartKeyboard(int iPortNo, int iBaudRate, int iTimeout, int iMode, char* pOutput) {
  const gwq::Operation operation;
  if (!gwq::Within(iMode, 0, 1) || pOutput == nullptr || !gwq::IsCustomerTimeout(iTimeout)) {
    return GWQ_BAD_ARGUMENT;
  }
  const gwq::Line line{iPortNo, iBaudRate};
  if (iPortNo == 0) gwq::Drain(line);
  const int result = SetScreenTimeout(line, gwq::Channel::kKeyboard, iTimeout);
  if (result != GWQ_OK) return result;
  return gwq::AwaitNumber(line,
                          iMode == 0 ? "\x1BGM\r\n"
                                     : "\x1B"
                                       "FA\r\n",
                          iTimeout, pOutput);
}
