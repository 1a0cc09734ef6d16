#include "files/internal/private_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <string_view>
#include <utility>

namespace gwq {
namespace {

constexpr mode_t kOwnerOnly = 0600;

int CreateOwn(const char* path) {
  unlink(path);
  return open(path, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kOwnerOnly);
}

bool IsAnothers(const char* path) {
  struct stat status {};
  return lstat(path, &status) == 0 && status.st_uid != geteuid();
}

}  // namespace

PrivatePlace::PrivatePlace(const char* wanted) : fd_(CreateOwn(wanted)) {
  std::string_view(wanted).copy(path_.data(), path_.size() - 1);
  if (fd_ < 0 && IsAnothers(wanted)) StandIn();
}

PrivatePlace::~PrivatePlace() {
  if (fd_ >= 0) close(fd_);
  if (stands_in_) unlink(path_.data());
}

void PrivatePlace::StandIn() {
  path_ = {"/tmp/gwq-XXXXXX"};
  fd_ = mkostemp(path_.data(), O_CLOEXEC);
  stands_in_ = fd_ >= 0;
}

File PrivatePlace::Open() {
  File file(fd_ < 0 ? nullptr : fdopen(fd_, "wb"));
  if (file) fd_ = -1;  // the file's now
  return file;
}

}  // namespace gwq
