// Files under names that everyone knows, in a directory that everyone may write to.
#pragma once

#include <array>

#include "files/internal/file.h"

namespace gwq {

// An empty file that only this user can read and write, for a call that opens it by its name afterwards. What stands at
// the wanted path is removed and no symbolic link followed; where only the owner of a file may remove it, as in /tmp,
// nobody can put another in its place.
//
// Where the name belongs to another user, a file of a name of its own takes its place for as long as this lives.
class PrivatePlace {
 public:
  explicit PrivatePlace(const char* wanted);
  ~PrivatePlace();
  PrivatePlace(const PrivatePlace&) = delete;
  PrivatePlace& operator=(const PrivatePlace&) = delete;

  // False when no file could be made at all.
  explicit operator bool() const { return fd_ >= 0; }
  char* path() { return path_.data(); }

  // The file, open for writing; once only. Null when there is none.
  File Open();

 private:
  void StandIn();

  std::array<char, 64> path_{};
  int fd_;
  bool stands_in_ = false;
};

}  // namespace gwq
