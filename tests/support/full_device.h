// SPDX-License-Identifier: MIT
// /dev/full, on which every write fails. Where there is none, root would make a regular file of that name.
#pragma once

#include <sys/stat.h>

namespace gwq::test {

inline bool HasFullDevice() {
  struct stat status {};
  return stat("/dev/full", &status) == 0 && S_ISCHR(status.st_mode);
}

}  // namespace gwq::test
