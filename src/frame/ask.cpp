#include "frame/ask.h"

namespace gwq {

int Drain(Line line) {
  constexpr int kTimeoutMs = 100;
  AnswerText<1024> scratch;
  return TransProcOnlyRead(line.port, line.baud, scratch.data(), scratch.length(), kTimeoutMs);
}

}  // namespace gwq
