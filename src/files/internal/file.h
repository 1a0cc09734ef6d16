// SPDX-License-Identifier: MIT
// Host files; an open one is closed by its owner.
#pragma once

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <memory>

#include "diag/internal/failure.h"

namespace gwq {

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

inline void NoteFileFailure() {
  NoteSystemFailure(GWQ_STEP_LOCAL_FILE, errno);
}

inline File OpenFile(const char* path, const char* mode) {
  File file(path == nullptr || mode == nullptr ? nullptr : std::fopen(path, mode));
  if (!file) NoteFileFailure();
  return file;
}

inline bool FileExists(const char* path) {
  const bool exists = access(path, F_OK) == 0;
  if (!exists) NoteFileFailure();
  return exists;
}

// INT_MAX for a larger file; -1 when there is none.
inline int FileSize(const char* path) {
  struct stat status {};
  if (path == nullptr || stat(path, &status) != 0) return -1;
  return status.st_size > INT_MAX ? INT_MAX : static_cast<int>(status.st_size);
}

// As it is told to the host; 0 when it is unknown.
inline long long SizeToTell(const char* path) {
  struct stat status {};
  return path != nullptr && stat(path, &status) == 0 && S_ISREG(status.st_mode) ? status.st_size : 0;
}

// Runs code of the host, which may never return, while the file is closed; then opens it again, at
// the same place. Returns false if that fails or another file is there. Does nothing if the file is
// not a regular one.
template <typename Code>
bool RunWhileClosed(File& file, const char* path, const char* mode, Code code) {
  struct stat before {};
  const long place = std::ftell(file.get());
  if (place < 0 || fstat(fileno(file.get()), &before) != 0 || !S_ISREG(before.st_mode)) return true;
  if (std::fclose(file.release()) != 0) return false;
  code();
  file = OpenFile(path, mode);
  struct stat after {};
  return file && fstat(fileno(file.get()), &after) == 0 && after.st_dev == before.st_dev &&
         after.st_ino == before.st_ino && std::fseek(file.get(), place, SEEK_SET) == 0;
}

}  // namespace gwq
