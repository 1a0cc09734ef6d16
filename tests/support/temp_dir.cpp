// SPDX-License-Identifier: MIT
#include "support/temp_dir.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <system_error>

namespace gwq::test {
namespace {

std::filesystem::path MakeFreshDirectory() {
  std::string pattern = (std::filesystem::temp_directory_path() / "gwq-test-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) throw std::system_error(errno, std::generic_category(), pattern);
  return pattern;
}

}  // namespace

TempDir::TempDir() : path_(MakeFreshDirectory()), owner_(getpid()) {}

TempDir::~TempDir() {
  if (getpid() != owner_) return;
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

void WriteFile(const std::filesystem::path& path, std::string_view content) {
  std::ofstream file(path, std::ios::binary);
  file << content << std::flush;
  if (!file) throw std::system_error(errno, std::generic_category(), path.string());
}

std::string ReadFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace gwq::test
