// What a cancelled read of the links that hosts drive themselves does before it gives its result.
#pragma once

#include "diag/internal/pause.h"

namespace gwq {

// Wanted, and of exactly this length.
inline void PauseAfterCancel() {
  constexpr unsigned kPauseS = 100'000;
  PauseS(kPauseS);
}

}  // namespace gwq
