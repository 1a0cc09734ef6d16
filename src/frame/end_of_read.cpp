// SPDX-License-Identifier: MIT
#include <cstddef>

#include <gwq/diag/log.h>
#include <gwq/frame/transaction.h>
#include "codec/internal/secret_text.h"

namespace gwq {
namespace {

constexpr int kComplete = 0;
constexpr int kReadOn = 1;
constexpr int kFrameOverhead = 7;

// The last byte before the first zero byte; 0 if there is none.
// Contract: a zero byte ends the answer, and bytes after it do not count.
unsigned char LastOfText(const unsigned char* data) {
  const std::size_t length = data == nullptr ? 0 : SecretLength(reinterpret_cast<const char*>(data));
  return length == 0 ? static_cast<unsigned char>(0) : data[length - 1];
}

}  // namespace
}  // namespace gwq

using namespace gwq;

int EndOfRead(unsigned char* data, int count) {
  if (data == nullptr || count < kFrameOverhead) return kReadOn;
  const int body = data[5] * 256 + data[6];
  return body <= count - kFrameOverhead ? kComplete : kReadOn;
}

int EndOfRead2(unsigned char* data, int /*count*/) {
  if (LastOfText(data) != 0x03) return kReadOn;
  ICC_DPrintLogToFile("[EndOfRead2] return 0");
  return kComplete;
}

int EndOfRead3(unsigned char* data, int /*count*/) {
  if (LastOfText(data) != 'F') return kReadOn;
  ICC_DPrintLogToFile("[EndOfRead3] return 0");
  return kComplete;
}

int EndOfCondition4(unsigned char* /*data*/, int count) {
  return count >= 1 ? kComplete : kReadOn;
}

int EndOfConditionD(unsigned char* data, int count) {
  return data != nullptr && count >= 1 && data[count - 1] == '\r' ? kComplete : kReadOn;
}
