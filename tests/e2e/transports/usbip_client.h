// SPDX-License-Identifier: MIT
// A USB/IP client of its own, without a kernel.
#pragma once

#include <arpa/inet.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <string>

namespace gwq::test {

class UsbIpClient {
 public:
  explicit UsbIpClient(std::uint16_t port) : fd_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    const timeval patience{20, 0};
    setsockopt(fd_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    setsockopt(fd_, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    connected_ = connect(fd_, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
  }
  UsbIpClient(const UsbIpClient&) = delete;
  UsbIpClient& operator=(const UsbIpClient&) = delete;
  ~UsbIpClient() { close(fd_); }

  [[nodiscard]] bool IsConnected() const { return connected_; }

  bool Send(const std::string& bytes) const {
    for (std::size_t sent = 0; sent < bytes.size();) {
      const ssize_t count = send(fd_, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
      if (count <= 0) return false;
      sent += static_cast<std::size_t>(count);
    }
    return true;
  }

  // Sends it again and again, until the other side takes no more for a moment. Tells how often that was.
  [[nodiscard]] std::size_t SendUntilFull(const std::string& bytes) const {
    const timeval moment{0, 300'000};
    setsockopt(fd_, SOL_SOCKET, SO_SNDTIMEO, &moment, sizeof moment);
    std::size_t sent = 0;
    for (ssize_t count = 0; count >= 0; sent += count > 0 ? static_cast<std::size_t>(count) : 0) {
      const std::size_t at = sent % bytes.size();
      count = send(fd_, bytes.data() + at, bytes.size() - at, MSG_NOSIGNAL);
    }
    return sent / bytes.size();
  }

  // Fewer than `size` when the connection ends before.
  [[nodiscard]] std::string Read(std::size_t size) const {
    std::string bytes(size, '\0');
    std::size_t read = 0;
    while (read < size) {
      const ssize_t count = recv(fd_, bytes.data() + read, size - read, 0);
      if (count <= 0) break;
      read += static_cast<std::size_t>(count);
    }
    bytes.resize(read);
    return bytes;
  }

  // Whether the other side ends the connection, and has nothing more to say.
  [[nodiscard]] bool IsEnded() const {
    char byte = 0;
    const ssize_t count = recv(fd_, &byte, 1, 0);
    return count == 0 || (count < 0 && errno == ECONNRESET);
  }

  [[nodiscard]] std::string Ask(const std::string& bytes, std::size_t reply_size) const {
    return Send(bytes) ? Read(reply_size) : "(not sent)";
  }

 private:
  int fd_;
  bool connected_ = false;
};

}  // namespace gwq::test
