// SPDX-License-Identifier: MIT
// Files with fixed names in a directory that every user may write to.
#pragma once

#include <array>

#include "files/internal/file.h"

namespace gwq {

// Creates an empty file that only this user can read and write, for code that opens it by name
// later. Removes what is at the wanted path first and follows no symbolic link. In a directory with
// the sticky bit, such as /tmp, no other user can replace it.
//
// If the wanted path belongs to another user, creates a file with a unique name in /tmp instead and
// removes it on destruction.
class PrivateTempFile {
 public:
  explicit PrivateTempFile(const char* wanted);
  ~PrivateTempFile();
  PrivateTempFile(const PrivateTempFile&) = delete;
  PrivateTempFile& operator=(const PrivateTempFile&) = delete;

  // False when no file could be created.
  explicit operator bool() const { return fd_ >= 0; }
  char* path() { return path_.data(); }

  // Opens the file for writing; may be called once. Null when there is no file.
  File Open();

 private:
  void CreateUnique();

  std::array<char, 64> path_{};
  int fd_;
  bool is_unique_ = false;
};

}  // namespace gwq
