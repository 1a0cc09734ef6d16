// SPDX-License-Identifier: MIT
// The end of a cancelled read on the links that hosts drive themselves.
#pragma once

#include <gwq/status_codes.h>
#include "diag/internal/pause.h"

namespace gwq {

// Contract: a cancelled read sleeps for 100000 s before it returns.
inline int AfterLongPause() {
  constexpr unsigned kPauseS = 100'000;
  PauseS(kPauseS);
  return GWQ_LINK_CANCELLED;
}

}  // namespace gwq
