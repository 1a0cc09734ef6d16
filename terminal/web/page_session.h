// SPDX-License-Identifier: MIT
// An open page: its socket, and how much of what it was sent has not arrived.
#pragma once

#include <libsoup/soup.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "base/gobject_ptr.h"

namespace gwq::terminal::web {

class PageDoor;
class PageSession;

class SessionListener {
 public:
  SessionListener() = default;
  SessionListener(const SessionListener&) = delete;
  SessionListener& operator=(const SessionListener&) = delete;
  virtual void OnMessage(std::string_view message) = 0;
  // May delete the session.
  virtual void OnClosed(const PageSession& session) = 0;

 protected:
  ~SessionListener() = default;
};

class PageSession {
 public:
  // `door` and `listener` must outlive this object.
  PageSession(SoupWebsocketConnection* socket, GSocketAddress* visitor, const PageDoor& door,
              SessionListener& listener);
  PageSession(const PageSession&) = delete;
  PageSession& operator=(const PageSession&) = delete;
  // Nothing more is heard of the socket.
  ~PageSession();

  void Send(const std::string& message);
  // A page that does not read makes libsoup keep all that it is sent.
  [[nodiscard]] bool IsStalled() const;
  [[nodiscard]] GSocketAddress* Visitor() const { return visitor_; }

 private:
  static void Hear(SoupWebsocketConnection*, gint type, GBytes* message, gpointer self);
  static void Closed(SoupWebsocketConnection*, gpointer self);
  [[nodiscard]] std::int64_t ReceivedOverThere() const;

  GObjectPtr<SoupWebsocketConnection> socket_;
  GSocketAddress* visitor_;  // owned by the door
  const PageDoor& door_;
  SessionListener& listener_;
  const std::int64_t received_before_;
  std::int64_t sent_ = 0;
};

}  // namespace gwq::terminal::web
