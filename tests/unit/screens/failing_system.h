// A system that has no memory for large blocks, and whose root directory is the test's own. For programs that are
// linked with --wrap=calloc and --wrap=fopen.
#pragma once

#include <cstddef>
#include <filesystem>
#include <set>
#include <string>

namespace gwq::test {

// For its lifetime the library gets no block of so many elements or more.
class NoMemoryFor {
 public:
  explicit NoMemoryFor(std::size_t count);
  ~NoMemoryFor();
  NoMemoryFor(const NoMemoryFor&) = delete;
  NoMemoryFor& operator=(const NoMemoryFor&) = delete;
};

// For its lifetime these files of the root directory, such as "/hw.data", are in `directory` instead.
class RootDirectory {
 public:
  RootDirectory(std::filesystem::path directory, std::set<std::string> files);
  ~RootDirectory();
  RootDirectory(const RootDirectory&) = delete;
  RootDirectory& operator=(const RootDirectory&) = delete;

  [[nodiscard]] std::string Place(const char* path) const;

 private:
  std::filesystem::path directory_;
  std::set<std::string> files_;
};

}  // namespace gwq::test
