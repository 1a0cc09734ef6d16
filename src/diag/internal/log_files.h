// SPDX-License-Identifier: MIT
// The log files' directory and today's file.
#pragma once

namespace gwq {

// Makes the library's own path absolute if the loader reports a relative one, so that a later chdir
// moves no log.
void RememberOwnPath();

// Opens today's log file for appending and creates missing directories. Follows no symbolic link
// and opens no file of another user. Returns its descriptor, or -1 with errno set.
int OpenTodaysLog();

}  // namespace gwq
