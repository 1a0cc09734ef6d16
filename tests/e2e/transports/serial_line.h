// SPDX-License-Identifier: MIT
// A host on the serial side: System V terminal settings and plain reads.
#pragma once

#include <fcntl.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <string_view>

namespace gwq::test {

class SerialLine {
 public:
  explicit SerialLine(const std::string& path) : fd_(open(path.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC)) {}
  SerialLine(const SerialLine&) = delete;
  SerialLine& operator=(const SerialLine&) = delete;
  ~SerialLine() {
    if (fd_ >= 0) close(fd_);
  }

  [[nodiscard]] int Fd() const { return fd_; }

  // Raw, and a read returns after at most 0.1 s. False when the line refuses.
  [[nodiscard]] bool Configure() const {
    struct termio settings {};
    if (ioctl(fd_, TCGETA, &settings) != 0) return false;
    settings.c_iflag = 0;
    settings.c_oflag = 0;
    settings.c_cflag = B9600 | CS8 | CREAD | CLOCAL;
    settings.c_lflag = 0;
    settings.c_cc[VMIN] = 0;
    settings.c_cc[VTIME] = 1;
    return ioctl(fd_, TCSETAF, &settings) == 0;
  }

  [[nodiscard]] bool Send(std::string_view text) const {
    return write(fd_, text.data(), text.size()) == static_cast<ssize_t>(text.size());
  }

  // Up to and with the end mark; what has come when `limit` is over.
  [[nodiscard]] std::string ReadAnswer(std::chrono::milliseconds limit = std::chrono::seconds(3)) const {
    const auto start = std::chrono::steady_clock::now();
    std::string answer;
    while (!answer.ends_with('\003') && std::chrono::steady_clock::now() - start < limit) {
      char buffer[256];
      const ssize_t count = read(fd_, buffer, sizeof buffer);
      if (count < 0) break;
      answer.append(buffer, static_cast<std::size_t>(count));
    }
    return answer;
  }

 private:
  int fd_;
};

}  // namespace gwq::test
