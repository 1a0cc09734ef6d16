// SPDX-License-Identifier: MIT
#include "app/control_channel.h"

#include <sys/socket.h>

#include <algorithm>
#include <array>

#include "base/errors.h"

namespace gwq::terminal::app {
namespace {

constexpr std::size_t kMaxMessage = 65536;

}  // namespace

// As in /proc/PID/environ.
std::string ReadyMessage(const Variables& variables) {
  std::string message = "ready";
  for (const auto& [name, value] : variables) message.append(1, '\0').append(name).append("=").append(value);
  return message;
}

Variables ReadReadyMessage(const std::string& message) {
  Variables variables;
  for (std::size_t begin = message.find('\0'); begin != std::string::npos;) {
    const std::size_t end = message.find('\0', ++begin);
    const std::string entry = message.substr(begin, end - begin);
    const std::size_t mark = entry.find('=');
    variables.emplace_back(entry.substr(0, mark), entry.substr(mark + 1));
    begin = end;
  }
  return variables;
}

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

}  // namespace gwq::terminal::app
