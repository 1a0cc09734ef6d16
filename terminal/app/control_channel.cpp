// SPDX-License-Identifier: MIT
#include "app/control_channel.h"

#include <sys/socket.h>

#include <algorithm>
#include <array>

#include "base/errors.h"

namespace gwq::terminal {
namespace {

constexpr std::size_t kMaxMessage = 65536;

}  // namespace

std::pair<ControlChannel, ControlChannel> ControlChannel::Pair() {
  std::array<int, 2> fds{};
  Checked(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, fds.data()), "socketpair");
  return {ControlChannel(UniqueFd(fds[0])), ControlChannel(UniqueFd(fds[1]))};
}

bool ControlChannel::Send(const std::string& message) const {
  const std::size_t size = std::min(message.size(), kMaxMessage);
  return send(socket_.Get(), message.data(), size, MSG_NOSIGNAL) >= 0;
}

std::optional<std::string> ControlChannel::Receive() const {
  std::string message(kMaxMessage, '\0');
  ssize_t count = -1;
  do {
    count = recv(socket_.Get(), message.data(), message.size(), 0);
  } while (count < 0 && errno == EINTR);
  if (count <= 0) return std::nullopt;
  message.resize(static_cast<std::size_t>(count));
  return message;
}

}  // namespace gwq::terminal
