// Where the log files stand.
#pragma once

namespace gwq {

// Makes the library's own path absolute where the loader tells a relative one, so that a later chdir moves nothing.
void RememberOwnPath();

// Opens today's log file for appending and makes the directories on the way if they are missing. No symbolic link is
// followed, and what another user has made is left alone.
// Returns its descriptor, or -1 and errno.
int OpenTodaysLog();

}  // namespace gwq
