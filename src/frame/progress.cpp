// SPDX-License-Identifier: MIT
#include "frame/internal/progress.h"

#include <gwq/frame/transaction.h>
#include <gwq/status_codes.h>
#include "diag/internal/monotonic.h"
#include "diag/internal/shared_word.h"
#include "frame/internal/turn.h"

namespace gwq {
namespace {

constexpr int kIntervalMs = 100;

struct Listener {
  GwqProgress callback;
  void* user;
};
thread_local Listener t_listener{};

}  // namespace

bool Progress::IsWanted() {
  return t_listener.callback != nullptr;
}

bool Progress::Cancelled() {
  return IsWanted() && LoadShared(g_CancelWrite) != 0;
}

Progress::Progress(GwqTransfer transfer, const char* file, long long total)
    : transfer_(transfer), file_(file == nullptr ? "" : file), total_(total) {
  if (IsWanted()) Tell();
}

bool Progress::IsDue() const {
  return IsWanted() && MonotonicMs() - told_ms_ >= kIntervalMs;
}

bool Progress::Tell() {
  told_ms_ = MonotonicMs();
  const auto tell = [](void* context) {
    const auto& progress = *static_cast<const Progress*>(context);
    const Listener listener = t_listener;
    if (listener.callback == nullptr) return;
    listener.callback(progress.transfer_, progress.file_, progress.done_, progress.total_, listener.user);
  };
  return CallHost(tell, this);
}

int Progress::End(int status) {
  if (!IsWanted()) return status;
  if (status == GWQ_OK) total_ = done_;
  Tell();
  return status;
}

}  // namespace gwq

using namespace gwq;

int GWQ_SetProgress(GwqProgress callback, void* user) {
  t_listener = {callback, user};
  return GWQ_OK;
}
