// SPDX-License-Identifier: MIT
#include "recording/recording_file.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <system_error>
#include <tuple>

#include "base/errors.h"

namespace gwq::terminal::recording {

RecordingFile::RecordingFile(const std::string& path)
    : path_(path), fd_(Checked(open(path.c_str(), O_WRONLY | O_CREAT | O_NONBLOCK | O_CLOEXEC, 0600), path)) {
  struct stat status {};
  Checked(fstat(fd_.Get(), &status), path);
  if (!S_ISREG(status.st_mode)) return;
  Checked(fchmod(fd_.Get(), 0600), path);
  Checked(ftruncate(fd_.Get(), 0), path);
}

void RecordingFile::Append(std::span<const std::uint8_t> block) {
  while (fd_ && !block.empty()) {
    const ssize_t count = write(fd_.Get(), block.data(), block.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return GiveUp(std::generic_category().message(count < 0 ? errno : EIO));
    block = block.subspan(static_cast<std::size_t>(count));
    if (block.empty()) size_ = lseek(fd_.Get(), 0, SEEK_CUR);
  }
}

void RecordingFile::GiveUp(const std::string& reason) {
  std::fprintf(stderr, "gwq-terminal: the recording %s ends here: %s\n", path_.c_str(), reason.c_str());
  // A piece of a block would spoil what is good.
  std::ignore = ftruncate(fd_.Get(), size_);  // fails where it is no regular file
  fd_.Reset();
}

}  // namespace gwq::terminal::recording
