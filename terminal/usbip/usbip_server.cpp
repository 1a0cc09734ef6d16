// SPDX-License-Identifier: MIT
#include "usbip/usbip_server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <algorithm>
#include <utility>

#include "base/errors.h"

namespace gwq::terminal::usbip {
namespace {

constexpr std::size_t kMaxConnections = 32;

sockaddr* Generic(sockaddr_in& address) {
  return reinterpret_cast<sockaddr*>(&address);
}

UniqueFd Listen(std::uint16_t port) {
  UniqueFd socket(Checked(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0), "socket"));
  const int on = 1;
  Checked(setsockopt(socket.Get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on), "SO_REUSEADDR");
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  const std::string name = "port " + std::to_string(port) + " of 127.0.0.1";
  Checked(bind(socket.Get(), Generic(address), sizeof address), name);
  Checked(listen(socket.Get(), SOMAXCONN), name);
  return socket;
}

}  // namespace

UsbIpServer::UsbIpServer(std::uint16_t port, UsbIpPlug& plug, const Clock& clock)
    : plug_(plug), clock_(clock), listener_(Listen(port)) {}

UsbIpServer::~UsbIpServer() = default;

std::uint16_t UsbIpServer::Port() const {
  sockaddr_in address{};
  socklen_t size = sizeof address;
  Checked(getsockname(listener_.Get(), Generic(address), &size), "getsockname");
  return ntohs(address.sin_port);
}

void UsbIpServer::Join(EventLoop& loop) {
  loop_ = &loop;
  watch_ = loop.OnReady(listener_.Get(), [this](unsigned) { Accept(); });
  loop.BeforeEachWait([this] { Settle(); });
  loop.Add(*this);
}

std::optional<Time> UsbIpServer::NextDeadline() {
  std::optional<Time> nearest;
  for (const auto& connection : connections_) {
    const std::optional<Time> deadline = connection->Deadline();
    if (deadline) nearest = std::min(nearest.value_or(Time::max()), *deadline);
  }
  return nearest;
}

void UsbIpServer::Advance(Time now) {
  std::erase_if(connections_, [now](const auto& connection) {
    const std::optional<Time> deadline = connection->Deadline();
    return deadline && *deadline <= now;
  });
}

void UsbIpServer::Accept() {
  UniqueFd socket(accept4(listener_.Get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
  if (!socket || connections_.size() >= kMaxConnections) return;
  const int on = 1;
  setsockopt(socket.Get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  connections_.push_back(std::make_unique<UsbIpConnection>(std::move(socket), plug_, *loop_, clock_));
}

void UsbIpServer::Settle() {
  std::erase_if(connections_, [](const auto& connection) { return !connection->Settle(); });
}

}  // namespace gwq::terminal::usbip
