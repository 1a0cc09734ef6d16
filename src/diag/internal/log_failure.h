// Why the log lacks lines.
#pragma once

namespace gwq {

// The errno of the first line that could not be written since the last call; 0 when there was none. Any thread.
int TakeLogFailure();

}  // namespace gwq
