// An open host file, closed by its owner.
#pragma once

#include <cstdio>
#include <memory>

namespace gwq {

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

inline File OpenFile(const char* path, const char* mode) {
  return File(path == nullptr || mode == nullptr ? nullptr : std::fopen(path, mode));
}

}  // namespace gwq
