// SPDX-License-Identifier: MIT
#include "frame/internal/operation.h"

#include <atomic>
#include <cstdint>

#include <gwq/frame/transaction.h>
#include "diag/internal/shared_word.h"
#include "frame/internal/progress.h"

namespace gwq {
namespace {

constexpr std::uint64_t kNone = 0;

constinit std::atomic<std::uint64_t> g_last_begun{kNone};
constinit std::atomic<std::uint64_t> g_last_cancelled{kNone};

struct Running {
  std::uint64_t number = kNone;
  const void* frame = nullptr;
};
thread_local Running t_running;

}  // namespace

// A call that a predicate of the host has jumped out of stays recorded, but this one's frame is
// then not below its frame.
Operation::Operation() {
  const void* const frame = __builtin_frame_address(0);
  outermost_ = t_running.number == kNone || frame >= t_running.frame;
  if (!outermost_) return;
  t_running = {g_last_begun.fetch_add(1) + 1, frame};
  if (Progress::IsWanted()) StoreShared(g_CancelWrite, 0);
}

Operation::~Operation() {
  if (outermost_) t_running = {};
}

void CancelOperations() {
  g_last_cancelled = g_last_begun.load();
}

bool OperationCancelled() {
  return t_running.number != kNone && t_running.number <= g_last_cancelled;
}

}  // namespace gwq
