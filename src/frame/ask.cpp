// SPDX-License-Identifier: MIT
#include "frame/internal/ask.h"

#include <algorithm>
#include <climits>
#include <cstdint>

#include <gwq/diag/log.h>
#include <gwq/status_codes.h>

namespace gwq {

int DrainFirst(Endpoint endpoint, DrainLog log) {
  const int result = Drain(endpoint);
  if (log == DrainLog::kLogged) ICC_DPrintLogToFile("TransProcOnlyRead iRet=%d", result);
  return result == GWQ_NOT_OPENED ? GWQ_NOT_OPENED : GWQ_OK;
}

void DrainUsb(Endpoint endpoint) {
  if (endpoint.port == 0) Drain(endpoint);
}

int WaitMs(int seconds, int margin_ms) {
  const std::int64_t wait = std::int64_t{seconds} * 1000 + margin_ms;
  return static_cast<int>(std::clamp<std::int64_t>(wait, INT_MIN, INT_MAX));
}

std::string_view WithoutMarks(std::string_view answer) {
  return answer.size() < 2 ? std::string_view("") : answer.substr(1, answer.size() - 2);
}

}  // namespace gwq
