// SPDX-License-Identifier: MIT
// The parts of DEV_CommCall that need no terminal.
#pragma once

#include <string_view>

namespace gwq {

// Contract: "RequestTimeOut" is accepted and ignored; every exchange waits 2 seconds.
struct CommRequest {
  int baud;
};

// Text that is no JSON object, or NULL, is a request without members.
CommRequest ParseCommRequest(const char* json);

// Contract: a serial number of ten characters is kept even if reading it failed.
bool IsSerialNumberKept(int status, std::string_view number);

}  // namespace gwq
