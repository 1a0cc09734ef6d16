// SPDX-License-Identifier: MIT
#include "device/files/file_faults.h"

#include <algorithm>

namespace gwq::terminal::device {

bool Names(const std::vector<std::string>& steps, const std::string& step, std::uint64_t time) {
  const std::string one = step + ":" + std::to_string(time);
  return std::any_of(steps.begin(), steps.end(),
                     [&](const std::string& named) { return named == step || named == one; });
}

Verdict FaultCounter::Next(const std::string& step) {
  const std::uint64_t time = ++times_[step];
  if (Names(faults_.ignore, step, time)) return Verdict::kIgnore;
  if (Names(faults_.refuse, step, time)) return Verdict::kRefuse;
  if (Names(faults_.fail, step, time)) return Verdict::kFail;
  return Verdict::kNone;
}

void FaultCounter::StartTransfer() {
  for (const char* packet : {"start", "data", "end"}) times_.erase(packet);
}

}  // namespace gwq::terminal::device
