// SPDX-License-Identifier: MIT
#include "web/page_session.h"

#include <linux/tcp.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include "web/messages.h"
#include "web/page_door.h"

namespace gwq::terminal::web {
namespace {

constexpr std::int64_t kMaxBacklog = 16 << 20;  // several times the longest message to a page

}  // namespace

PageSession::PageSession(SoupWebsocketConnection* socket, GSocketAddress* visitor, const PageDoor& door,
                         SessionListener& listener)
    : socket_(SOUP_WEBSOCKET_CONNECTION(g_object_ref(socket))),
      visitor_(visitor),
      door_(door),
      listener_(listener),
      received_before_(ReceivedOverThere()) {
  soup_websocket_connection_set_max_incoming_payload_size(socket, kMaxRequestSize);
  g_signal_connect(socket, "message", G_CALLBACK(Hear), this);
  g_signal_connect(socket, "closed", G_CALLBACK(Closed), this);
}

PageSession::~PageSession() {
  g_signal_handlers_disconnect_by_data(socket_.get(), this);
}

void PageSession::Hear(SoupWebsocketConnection*, gint type, GBytes* message, gpointer self) {
  if (type != SOUP_WEBSOCKET_DATA_TEXT) return;
  gsize size = 0;
  const auto* data = static_cast<const char*>(g_bytes_get_data(message, &size));
  static_cast<PageSession*>(self)->listener_.OnMessage({data, size});
}

void PageSession::Closed(SoupWebsocketConnection*, gpointer self) {
  const auto& session = *static_cast<PageSession*>(self);
  session.listener_.OnClosed(session);
}

// What the other side of the TCP connection has received, as far as this side knows.
std::int64_t PageSession::ReceivedOverThere() const {
  tcp_info info{};
  socklen_t size = sizeof info;
  if (getsockopt(door_.FdOf(visitor_), IPPROTO_TCP, TCP_INFO, &info, &size) != 0) return 0;
  return static_cast<std::int64_t>(info.tcpi_bytes_acked);
}

void PageSession::Send(const std::string& message) {
  if (soup_websocket_connection_get_state(socket_.get()) != SOUP_WEBSOCKET_STATE_OPEN) return;
  soup_websocket_connection_send_text(socket_.get(), message.c_str());
  sent_ += static_cast<std::int64_t>(message.size());
}

bool PageSession::IsStalled() const {
  return sent_ - (ReceivedOverThere() - received_before_) > kMaxBacklog;
}

}  // namespace gwq::terminal::web
