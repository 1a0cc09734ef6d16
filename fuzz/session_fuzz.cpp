// SPDX-License-Identifier: MIT
// Sessions of any calls with any terminal.
#include "session.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  gwq::fuzz::RunSession(gwq::fuzz::ParseRecords(gwq::fuzz::Input(data, size)));
  return 0;
}
