// SPDX-License-Identifier: MIT
// A turn with a file of the host whose name the library fixes. Every process that uses such files
// has its turn; the lock is on the directory, so that nothing is left.
#pragma once

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <filesystem>
#include <system_error>
#include <utility>

namespace gwq::test {

class HostFileTurn {
 public:
  explicit HostFileTurn(std::filesystem::path file)
      : file_(std::move(file)),
        directory_(open(file_.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    flock(directory_, LOCK_EX);
    std::filesystem::remove_all(file_);
  }
  ~HostFileTurn() {
    std::error_code ignored;
    std::filesystem::remove_all(file_, ignored);
    close(directory_);
  }
  HostFileTurn(const HostFileTurn&) = delete;
  HostFileTurn& operator=(const HostFileTurn&) = delete;

 private:
  std::filesystem::path file_;
  int directory_;
};

}  // namespace gwq::test
