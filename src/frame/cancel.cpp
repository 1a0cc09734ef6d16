#include "frame/internal/cancel.h"

#include <atomic>

#include <gwq/frame/port.h>
#include <gwq/frame/transaction.h>
#include "diag/internal/shared_word.h"

namespace gwq {
namespace {

int g_bCancelRead = 0;

}  // namespace

void ForgetReadCancel() {
  StoreShared(g_bCancelRead, 0);
}

bool ReadCancelRequested() {
  return LoadShared(g_bCancelRead) == 1;
}

void RepeatReadCancel() {
  StoreShared(g_bCancelRead, 1);
  ICC_CancelReadTransPort();
}

}  // namespace gwq

int g_CancelWrite = 0;

int CancelRead() {
  // A request that is still standing is not made twice; the next exchange drops it.
  if (std::atomic_ref<int>(gwq::g_bCancelRead).exchange(1) != 0) return 0;
  ICC_CancelReadTransPort();
  return 0;
}

void CancelWrite() {
  gwq::StoreShared(g_CancelWrite, 1);
}
