#include "frame/ask.h"

#include "diag/log.h"

namespace gwq {

int Drain(Line line) {
  constexpr int kTimeoutMs = 100;
  AnswerText<1024> scratch;
  return TransProcOnlyRead(line.port, line.baud, scratch.data(), scratch.length(), kTimeoutMs);
}

int DrainLogged(int baud) {
  const int result = Drain({0, baud});
  ICC_DPrintLogToFile("TransProcOnlyRead iRet=%d", result);
  return result;
}

std::string_view WithoutMarks(std::string_view answer) {
  return answer.size() < 2 ? std::string_view("") : answer.substr(1, answer.size() - 2);
}

}  // namespace gwq
