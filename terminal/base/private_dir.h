// SPDX-License-Identifier: MIT
// A directory of our own for everything that a run leaves on disk.
#pragma once

#include <string>

#include "base/unique_fd.h"

namespace gwq::terminal {

// Says that a directory is in use, as long as it lives and its process does.
class DirLock {
 public:
  explicit DirLock(const std::string& dir);
  // False when the directory has been removed meanwhile, or could not be opened.
  [[nodiscard]] bool IsHeld() const;

 private:
  UniqueFd dir_;
};

class PrivateDir {
 public:
  // Below $TMPDIR, or below /tmp when that path is too long for the testbed's sockets.
  // Those there that a killed process left behind are removed first.
  PrivateDir();
  PrivateDir(const PrivateDir&) = delete;
  PrivateDir& operator=(const PrivateDir&) = delete;
  ~PrivateDir() { Remove(path_); }

  [[nodiscard]] const std::string& Path() const { return path_; }

  // Throws std::system_error when not even the few files of a testbed fit.
  void CheckRoom() const;

  // Removes such a directory, and no other, with all that is in it; symbolic links are not followed.
  static void Remove(const std::string& path);

 private:
  std::string path_;
  DirLock lock_;
};

}  // namespace gwq::terminal
