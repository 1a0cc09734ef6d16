// SPDX-License-Identifier: MIT
// A system where some files are elsewhere. For programs that are linked with --wrap for fopen, open
// and unlink.
#pragma once

#include <filesystem>
#include <set>
#include <string>

#include "support/failing_memory.h"

namespace gwq::test {

// For its lifetime these files, such as "/hw.data", are under `root` instead.
class FilesElsewhere {
 public:
  FilesElsewhere(std::filesystem::path root, std::set<std::string> files);
  ~FilesElsewhere();
  FilesElsewhere(const FilesElsewhere&) = delete;
  FilesElsewhere& operator=(const FilesElsewhere&) = delete;

  // Where a file is now.
  [[nodiscard]] static std::string Place(const char* path);

 private:
  std::filesystem::path root_;
  std::set<std::string> files_;
};

}  // namespace gwq::test
