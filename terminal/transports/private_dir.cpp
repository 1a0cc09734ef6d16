#include "transports/private_dir.h"

#include <stdlib.h>

#include <filesystem>
#include <system_error>

#include "transports/errors.h"

namespace gwq::terminal {
namespace {

// The testbed adds its own directory and a socket's name, some 45 characters,
// to this; a socket address holds 107.
constexpr std::size_t kLongestParent = 44;

std::string Parent() {
  std::error_code error;
  const std::filesystem::path parent = std::filesystem::temp_directory_path(error);
  if (error || parent.string().size() > kLongestParent) return "/tmp";
  return std::filesystem::absolute(parent).string();
}

}  // namespace

PrivateDir::PrivateDir() : path_(Parent() + "/gwq-terminal.XXXXXX") {
  if (mkdtemp(path_.data()) == nullptr) ThrowErrno(path_);
}

void PrivateDir::Remove(const std::string& path) {
  std::error_code ignored;
  std::filesystem::remove_all(path, ignored);
}

}  // namespace gwq::terminal
