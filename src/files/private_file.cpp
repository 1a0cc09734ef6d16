#include "files/private_file.h"

#include <fcntl.h>
#include <unistd.h>

namespace gwq {
namespace {

constexpr mode_t kOwnerOnly = 0600;

int CreateAnew(const char* path) {
  if (path == nullptr) return -1;
  unlink(path);
  return open(path, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kOwnerOnly);
}

}  // namespace

File CreatePrivateFile(const char* path) {
  const int fd = CreateAnew(path);
  if (fd < 0) return nullptr;
  File file(fdopen(fd, "wb"));
  if (!file) close(fd);
  return file;
}

bool PreparePrivateFile(const char* path) {
  return CreatePrivateFile(path) != nullptr;
}

}  // namespace gwq
