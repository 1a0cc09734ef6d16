// Where the log files stand.
#pragma once

namespace gwq {

// Opens today's log file for appending and makes the directories on the way if they are missing.
// Returns its descriptor, or -1.
int OpenTodaysLog();

}  // namespace gwq
