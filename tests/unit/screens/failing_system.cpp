#include "unit/screens/failing_system.h"

#include <cstdint>
#include <cstdio>
#include <utility>

namespace gwq::test {
namespace {

std::size_t g_limit = SIZE_MAX;
const RootDirectory* g_root = nullptr;

}  // namespace

NoMemoryFor::NoMemoryFor(std::size_t count) {
  g_limit = count;
}

NoMemoryFor::~NoMemoryFor() {
  g_limit = SIZE_MAX;
}

RootDirectory::RootDirectory(std::filesystem::path directory, std::set<std::string> files)
    : directory_(std::move(directory)), files_(std::move(files)) {
  g_root = this;
}

RootDirectory::~RootDirectory() {
  g_root = nullptr;
}

std::string RootDirectory::Place(const char* path) const {
  return files_.contains(path) ? directory_.string() + path : path;
}

}  // namespace gwq::test

extern "C" {

void* __real_calloc(std::size_t count, std::size_t size);
std::FILE* __real_fopen(const char* path, const char* mode);

void* __wrap_calloc(std::size_t count, std::size_t size) {
  return count >= gwq::test::g_limit ? nullptr : __real_calloc(count, size);
}

std::FILE* __wrap_fopen(const char* path, const char* mode) {
  return gwq::test::g_root == nullptr ? __real_fopen(path, mode)
                                      : __real_fopen(gwq::test::g_root->Place(path).c_str(), mode);
}

}  // extern "C"
