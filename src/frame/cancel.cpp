// SPDX-License-Identifier: MIT
#include "frame/internal/cancel.h"

#include <atomic>

#include <gwq/frame/port.h>
#include <gwq/frame/transaction.h>
#include "diag/internal/shared_word.h"
#include "frame/internal/dispatcher.h"

namespace gwq {
namespace {

int g_bCancelRead = 0;

}  // namespace

void ClearReadCancel() {
  StoreShared(g_bCancelRead, 0);
}

bool ReadCancelRequested() {
  return LoadShared(g_bCancelRead) == 1;
}

void RepeatReadCancel() {
  StoreShared(g_bCancelRead, 1);
  ICC_CancelReadTransPort();
}

// Contract: while an earlier request is set, nothing is done; the next exchange clears it.
int CancelRead() {
  if (std::atomic_ref<int>(g_bCancelRead).exchange(1) != 0) return 0;
  ICC_CancelReadTransPort();
  return 0;
}

}  // namespace gwq

using namespace gwq;

int g_CancelWrite = 0;

void CancelWrite() {
  StoreShared(g_CancelWrite, 1);
}
