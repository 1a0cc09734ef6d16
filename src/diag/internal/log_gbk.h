// SPDX-License-Identifier: MIT
// Log lines with Chinese text: LogGbk(Gbk("..."), arguments).
#pragma once

#include <cstddef>

#include <gwq/diag/log.h>
#include "codec/internal/gbk_text.h"

namespace gwq {

template <std::size_t N, typename... Arguments>
void LogGbk(const GbkText<N>& text, Arguments... arguments) {
  if constexpr (sizeof...(arguments) == 0) {
    ICC_DPrintLogToFile("%s", text.c_str());
  } else {
    ICC_DPrintLogToFile(text.c_str(), arguments...);
  }
}

}  // namespace gwq
