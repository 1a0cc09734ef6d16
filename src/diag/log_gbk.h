// Log lines with Chinese text: LogGbk(Gbk("..."), arguments).
#pragma once

#include "codec/gbk_text.h"
#include "diag/log.h"

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
