// SPDX-License-Identifier: MIT
// Host files; an open one is closed by its owner.
#pragma once

#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <memory>

namespace gwq {

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

inline File OpenFile(const char* path, const char* mode) {
  return File(path == nullptr || mode == nullptr ? nullptr : std::fopen(path, mode));
}

inline bool FileExists(const char* path) {
  return access(path, F_OK) == 0;
}

// INT_MAX for a larger file; -1 when there is none.
inline int FileSize(const char* path) {
  struct stat status {};
  if (path == nullptr || stat(path, &status) != 0) return -1;
  return status.st_size > INT_MAX ? INT_MAX : static_cast<int>(status.st_size);
}

}  // namespace gwq
