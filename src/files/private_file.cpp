// SPDX-License-Identifier: MIT
#include "files/internal/private_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <string_view>

namespace gwq {
namespace {

constexpr mode_t kOwnerOnly = 0600;

int CreateExclusive(const char* path) {
  unlink(path);
  return open(path, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kOwnerOnly);
}

bool BelongsToAnotherUser(const char* path) {
  struct stat status {};
  return lstat(path, &status) == 0 && status.st_uid != geteuid();
}

}  // namespace

PrivateTempFile::PrivateTempFile(const char* wanted) : fd_(CreateExclusive(wanted)) {
  std::string_view(wanted).copy(path_.data(), path_.size() - 1);
  if (fd_ < 0 && BelongsToAnotherUser(wanted)) CreateUnique();
  if (fd_ < 0) NoteFileFailure();
}

PrivateTempFile::~PrivateTempFile() {
  if (fd_ >= 0) close(fd_);
  if (is_unique_) unlink(path_.data());
}

void PrivateTempFile::CreateUnique() {
  path_ = {"/tmp/gwq-XXXXXX"};
  fd_ = mkostemp(path_.data(), O_CLOEXEC);
  is_unique_ = fd_ >= 0;
}

File PrivateTempFile::Open() {
  File file(fd_ < 0 ? nullptr : fdopen(fd_, "wb"));
  if (file) fd_ = -1;  // owned by the stream from here on
  return file;
}

}  // namespace gwq
