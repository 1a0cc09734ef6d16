// SPDX-License-Identifier: MIT
#include "usbip/usbip_server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <utility>

#include "base/errors.h"

namespace gwq::terminal::usbip {
namespace {

constexpr std::size_t kMaxConnections = 32;
constexpr Time kPatience{10'000};                            // with who imports nothing
constexpr std::size_t kMaxUnsent = std::size_t{256} << 10U;  // no more is read until there is less

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

struct UsbIpServer::Connection {
  Connection(UniqueFd fd, UsbIpPlug& plug, Time impatient_at)
      : socket(std::move(fd)), session(plug), deadline(impatient_at) {}

  [[nodiscard]] bool MayBeLate() const { return session.IsImported(); }

  UniqueFd socket;
  UsbIpSession session;
  Time deadline;
  Bytes unsent;
  EventLoop::Watch watch;
};

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
    if (!connection->MayBeLate()) nearest = std::min(nearest.value_or(Time::max()), connection->deadline);
  }
  return nearest;
}

void UsbIpServer::Advance(Time now) {
  std::erase_if(connections_, [now](const auto& connection) {
    return !connection->MayBeLate() && connection->deadline <= now;
  });
}

void UsbIpServer::Accept() {
  UniqueFd socket(accept4(listener_.Get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
  if (!socket || connections_.size() >= kMaxConnections) return;
  const int on = 1;
  setsockopt(socket.Get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  auto connection = std::make_unique<Connection>(std::move(socket), plug_, clock_.Now() + kPatience);
  connection->watch = loop_->OnReady(connection->socket.Get(), [this, at = connection.get()](unsigned ready) {
    if ((ready & ~EventLoop::kOut) != 0) Read(*at);
  });
  connections_.push_back(std::move(connection));
}

void UsbIpServer::Read(Connection& connection) const {
  std::array<std::uint8_t, 65536> buffer;  // NOLINT(cppcoreguidelines-pro-type-member-init)
  const ssize_t count = recv(connection.socket.Get(), buffer.data(), buffer.size(), 0);
  if (count < 0 && (errno == EAGAIN || errno == EINTR)) return;
  if (count <= 0) return connection.session.End();
  const bool was_imported = connection.session.IsImported();
  connection.session.Receive(std::span(buffer).first(static_cast<std::size_t>(count)));
  if (was_imported && !connection.session.IsImported()) connection.deadline = clock_.Now() + kPatience;
  if (!connection.session.Complaint().empty())
    std::fprintf(stderr, "gwq-terminal: USB/IP connection closed: %s\n",
                 connection.session.Complaint().c_str());
}

void UsbIpServer::Settle() {
  std::erase_if(connections_, [](const auto& owned) {
    Connection& connection = *owned;
    const Bytes replies = connection.session.TakeReplies();
    connection.unsent.insert(connection.unsent.end(), replies.begin(), replies.end());
    if (!Send(connection) || (connection.session.IsOver() && connection.unsent.empty())) return true;
    WatchAsNeeded(connection);
    return false;
  });
}

// False when the client is gone.
bool UsbIpServer::Send(Connection& connection) {
  while (!connection.unsent.empty()) {
    const ssize_t count =
        send(connection.socket.Get(), connection.unsent.data(), connection.unsent.size(), MSG_NOSIGNAL);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return errno == EAGAIN;
    connection.unsent.erase(connection.unsent.begin(), connection.unsent.begin() + count);
  }
  return true;
}

void UsbIpServer::WatchAsNeeded(Connection& connection) {
  const bool reads = !connection.session.IsOver() && connection.unsent.size() < kMaxUnsent;
  connection.watch.Want((reads ? EventLoop::kIn : 0U) | (connection.unsent.empty() ? 0U : EventLoop::kOut));
}

}  // namespace gwq::terminal::usbip
