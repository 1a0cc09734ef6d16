// How the links that hosts drive themselves end a cancelled read.
#pragma once

#include <gwq/status_codes.h>
#include "diag/internal/pause.h"

namespace gwq {

// Contract: the pause, and exactly this one.
inline int AfterLongPause() {
  constexpr unsigned kPauseS = 100'000;
  PauseS(kPauseS);
  return GWQ_LINK_CANCELLED;
}

}  // namespace gwq
