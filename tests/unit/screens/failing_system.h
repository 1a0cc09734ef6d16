// A system that has no memory for large blocks, and where some files are elsewhere. For programs that are linked with
// --wrap for calloc, fopen, open and unlink.
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
