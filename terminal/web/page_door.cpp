// SPDX-License-Identifier: MIT
#include "web/page_door.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <glib-unix.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <algorithm>
#include <string>
#include <tuple>
#include <utility>

#include "base/errors.h"

namespace gwq::terminal::web {
namespace {

constexpr std::chrono::milliseconds kPause{100};

UniqueFd OpenReserve() {
  return UniqueFd(open("/dev/null", O_RDONLY | O_CLOEXEC));
}

UniqueFd NewListener(int family) {
  UniqueFd fd(socket(family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  const int on = 1;
  if (fd) setsockopt(fd.Get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  return fd;
}

template <typename Address>
bool ListenAt(int fd, Address& address) {
  auto* generic = reinterpret_cast<sockaddr*>(&address);
  socklen_t size = sizeof address;
  return bind(fd, generic, size) == 0 && listen(fd, SOMAXCONN) == 0 && getsockname(fd, generic, &size) == 0;
}

std::string Name(std::uint16_t port, const char* address) {
  return "the customer's page: port " + std::to_string(port) + " of " + address;
}

// Chooses the port when it is 0.
UniqueFd ListenAtV4(std::uint16_t& port) {
  UniqueFd fd = NewListener(AF_INET);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  if (!fd || !ListenAt(fd.Get(), address)) ThrowErrno(Name(port, "127.0.0.1"));
  port = ntohs(address.sin_port);
  return fd;
}

// No descriptor and errno when it fails.
UniqueFd ListenAtV6(std::uint16_t port) {
  UniqueFd fd = NewListener(AF_INET6);
  if (!fd) return fd;
  const int on = 1;
  setsockopt(fd.Get(), IPPROTO_IPV6, IPV6_V6ONLY, &on, sizeof on);
  sockaddr_in6 address{};
  address.sin6_family = AF_INET6;
  address.sin6_port = htons(port);
  address.sin6_addr = in6addr_loopback;
  return ListenAt(fd.Get(), address) ? std::move(fd) : UniqueFd();
}

// A free port of one family may be taken in the other.
std::vector<UniqueFd> Listen(std::uint16_t wanted, std::uint16_t& port) {
  constexpr int kAttempts = 20;
  for (int attempt = 1;; ++attempt) {
    port = wanted;
    std::vector<UniqueFd> listeners;
    listeners.push_back(ListenAtV4(port));
    UniqueFd v6 = ListenAtV6(port);
    const bool has_no_v6 = !v6 && (errno == EADDRNOTAVAIL || errno == EAFNOSUPPORT);
    if (v6) listeners.push_back(std::move(v6));
    if (listeners.size() == 2 || has_no_v6) return listeners;
    if (wanted != 0 || errno != EADDRINUSE || attempt == kAttempts) ThrowErrno(Name(port, "::1"));
  }
}

template <typename Function>
gboolean CallOnce(gpointer function) {
  (*static_cast<Function*>(function))();
  return G_SOURCE_REMOVE;
}

// Calls `function` once, in this thread's default context.
template <typename Function>
GSource* After(std::chrono::milliseconds time, Function function) {
  GSource* source = g_timeout_source_new(static_cast<guint>(time.count()));
  g_source_set_callback(source, CallOnce<Function>, new Function(std::move(function)),
                        [](gpointer data) { delete static_cast<Function*>(data); });
  g_source_attach(source, g_main_context_get_thread_default());
  return source;
}

bool IsShortage(int error) {
  return error == EMFILE || error == ENFILE || error == ENOBUFS || error == ENOMEM;
}

}  // namespace

PageDoor::PageDoor(std::uint16_t port, DoorLimits limits, Welcome welcome)
    : limits_(limits),
      welcome_(std::move(welcome)),
      listeners_(Listen(port, port_)),  // chooses the port
      reserve_(OpenReserve()) {
  Watch();
}

PageDoor::~PageDoor() {
  for (const Visitor& visitor : visitors_) g_object_weak_unref(G_OBJECT(visitor.connection), Gone, this);
}

void PageDoor::Watch() {
  for (const UniqueFd& listener : listeners_) {
    GSource* source = g_unix_fd_source_new(listener.Get(), G_IO_IN);
    const GUnixFDSourceFunc accept = [](gint fd, GIOCondition, gpointer self) -> gboolean {
      static_cast<PageDoor*>(self)->Accept(fd);
      return G_SOURCE_CONTINUE;
    };
    g_source_set_callback(source, G_SOURCE_FUNC(accept), this, nullptr);
    g_source_attach(source, g_main_context_get_thread_default());
    watches_.emplace_back(source);
  }
}

// A connection that cannot be accepted stays readable, and the loop would spin.
void PageDoor::Pause() {
  watches_.clear();
  pause_.reset(After(kPause, [this] { Watch(); }));
}

void PageDoor::Accept(int listener) {
  UniqueFd socket(accept4(listener, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
  if (socket) return LetIn(std::move(socket));
  if (IsShortage(errno)) TurnAwayUnseen(listener);
}

// Gives up the descriptor in reserve to accept one connection and close it.
void PageDoor::TurnAwayUnseen(int listener) {
  reserve_.Reset();
  const bool accepted = static_cast<bool>(UniqueFd(accept4(listener, nullptr, nullptr, SOCK_CLOEXEC)));
  reserve_ = OpenReserve();
  if (!accepted || !reserve_) Pause();
}

void PageDoor::LetIn(UniqueFd socket) {
  if (visitors_.size() >= limits_.connections) return;
  LimitStrangers();
  const int on = 1;
  setsockopt(socket.Get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  const GObjectPtr<GSocket> owner(g_socket_new_from_fd(socket.Get(), nullptr));
  if (!owner) return;
  std::ignore = socket.Release();
  GObjectPtr<GSocketAddress> address(g_socket_get_remote_address(owner.get(), nullptr));
  if (!address) return;  // it has left already
  const GObjectPtr<GSocketConnection> connection(g_socket_connection_factory_create_connection(owner.get()));
  Visitor& visitor = visitors_.emplace_back();
  visitor.connection = connection.get();
  visitor.address = std::move(address);
  visitor.patience.reset(After(limits_.patience, [&visitor] { HangUp(visitor); }));
  g_object_weak_ref(G_OBJECT(connection.get()), Gone, this);
  welcome_(connection.get(), visitor.address.get());
}

void PageDoor::LimitStrangers() {
  const auto is_stranger = [](const Visitor& visitor) { return visitor.patience != nullptr; };
  const auto count = std::count_if(visitors_.begin(), visitors_.end(), is_stranger);
  if (static_cast<std::size_t>(count) < limits_.strangers) return;
  const auto oldest = std::find_if(visitors_.begin(), visitors_.end(), is_stranger);
  if (oldest != visitors_.end()) HangUp(*oldest);
}

// Whoever has the connection reads its end, and frees it.
void PageDoor::HangUp(Visitor& visitor) {
  g_socket_shutdown(g_socket_connection_get_socket(visitor.connection), TRUE, TRUE, nullptr);
  visitor.patience.reset();
}

const PageDoor::Visitor* PageDoor::Find(GSocketAddress* address) const {
  const auto found = std::find_if(visitors_.begin(), visitors_.end(), [address](const Visitor& visitor) {
    return visitor.address.get() == address;
  });
  return found == visitors_.end() ? nullptr : &*found;
}

PageDoor::Visitor* PageDoor::Find(GSocketAddress* address) {
  return const_cast<Visitor*>(std::as_const(*this).Find(address));
}

void PageDoor::Admit(GSocketAddress* visitor) {
  if (Visitor* found = Find(visitor)) found->patience.reset();
}

void PageDoor::TurnAway(GSocketAddress* visitor, std::string_view answer) {
  Visitor* found = Find(visitor);
  if (found == nullptr) return;
  const int fd = g_socket_get_fd(g_socket_connection_get_socket(found->connection));
  // A sender that does not stop would otherwise wait for room until it gives up by itself.
  const linger reset_on_close{1, 0};
  setsockopt(fd, SOL_SOCKET, SO_LINGER, &reset_on_close, sizeof reset_on_close);
  std::ignore = send(fd, answer.data(), answer.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
  HangUp(*found);
}

int PageDoor::FdOf(GSocketAddress* visitor) const {
  const Visitor* found = Find(visitor);
  return found == nullptr ? -1 : g_socket_get_fd(g_socket_connection_get_socket(found->connection));
}

void PageDoor::Gone(gpointer door, GObject* connection) {
  static_cast<PageDoor*>(door)->visitors_.remove_if(
      [connection](const Visitor& visitor) { return G_OBJECT(visitor.connection) == connection; });
}

}  // namespace gwq::terminal::web
