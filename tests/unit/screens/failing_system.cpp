// SPDX-License-Identifier: MIT
#include "unit/screens/failing_system.h"

#include <fcntl.h>

#include <cstdarg>
#include <cstdio>
#include <utility>

namespace gwq::test {
namespace {

const FilesElsewhere* g_elsewhere = nullptr;

}  // namespace

FilesElsewhere::FilesElsewhere(std::filesystem::path root, std::set<std::string> files)
    : root_(std::move(root)), files_(std::move(files)) {
  g_elsewhere = this;
}

FilesElsewhere::~FilesElsewhere() {
  g_elsewhere = nullptr;
}

std::string FilesElsewhere::Place(const char* path) {
  if (g_elsewhere == nullptr || !g_elsewhere->files_.contains(path)) return path;
  return g_elsewhere->root_.string() + path;
}

}  // namespace gwq::test

using gwq::test::FilesElsewhere;

extern "C" {

std::FILE* __real_fopen(const char* path, const char* mode);
int __real_open(const char* path, int flags, ...);
int __real_unlink(const char* path);

std::FILE* __wrap_fopen(const char* path, const char* mode) {
  return __real_fopen(FilesElsewhere::Place(path).c_str(), mode);
}

int __wrap_open(const char* path, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  const unsigned mode = (flags & O_CREAT) != 0 ? va_arg(rest, unsigned) : 0;
  va_end(rest);
  return __real_open(FilesElsewhere::Place(path).c_str(), flags, mode);
}

int __wrap_unlink(const char* path) {
  return __real_unlink(FilesElsewhere::Place(path).c_str());
}

}  // extern "C"
