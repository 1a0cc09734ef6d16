// A directory of our own for everything that a run leaves on disk.
#pragma once

#include <string>

namespace gwq::terminal {

class PrivateDir {
 public:
  // Below $TMPDIR, or below /tmp when that path is too long for the testbed's sockets.
  PrivateDir();
  PrivateDir(const PrivateDir&) = delete;
  PrivateDir& operator=(const PrivateDir&) = delete;
  ~PrivateDir() { Remove(path_); }

  [[nodiscard]] const std::string& Path() const { return path_; }

  // Removes a directory with all that is in it; symbolic links are not followed.
  static void Remove(const std::string& path);

 private:
  std::string path_;
};

}  // namespace gwq::terminal
