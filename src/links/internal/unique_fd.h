// SPDX-License-Identifier: MIT
// Owns a file descriptor.
#pragma once

#include <unistd.h>

#include <utility>

namespace gwq {

class UniqueFd {
 public:
  static constexpr int kNone = -1;

  explicit UniqueFd(int fd = kNone) : fd_(fd) {}
  ~UniqueFd() {
    if (*this) close(fd_);
  }
  UniqueFd(const UniqueFd&) = delete;
  UniqueFd& operator=(const UniqueFd&) = delete;

  explicit operator bool() const { return fd_ >= 0; }
  [[nodiscard]] int get() const { return fd_; }
  [[nodiscard]] int release() { return std::exchange(fd_, kNone); }

 private:
  int fd_;
};

}  // namespace gwq
