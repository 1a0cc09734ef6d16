// SPDX-License-Identifier: MIT
// The error that cost the log its first line.
#pragma once

namespace gwq {

// Returns the errno of the first line that could not be written since the last call, 0 if there is
// none, and clears it. May be called from any thread.
int ReadLogFailure();

}  // namespace gwq
