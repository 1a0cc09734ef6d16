// SPDX-License-Identifier: MIT
// A fresh directory that goes away with its object.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <string_view>

namespace gwq::test {

class TempDir {
 public:
  TempDir();
  // Removes the directory with everything in it; a forked child leaves it to its parent.
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  [[nodiscard]] const std::filesystem::path& Path() const { return path_; }
  [[nodiscard]] std::filesystem::path operator/(std::string_view name) const { return path_ / name; }

 private:
  std::filesystem::path path_;
  pid_t owner_;
};

void WriteFile(const std::filesystem::path& path, std::string_view content);

// The whole content; empty if there is no such file.
std::string ReadFile(const std::filesystem::path& path);

}  // namespace gwq::test
