// SPDX-License-Identifier: MIT
// The terminals on USB, as the system's files tell.
#pragma once

#include <span>

#include <gwq/extra.h>

namespace gwq {

// As GWQ_FindTerminals, for the system below `root`, which is empty but in tests.
int ListTerminals(const char* root, std::span<GwqTerminalPlace> places);

}  // namespace gwq
