// SPDX-License-Identifier: MIT
// A client's connection: its socket and its session, served from a loop.
#pragma once

#include <optional>

#include "base/clock.h"
#include "base/event_loop.h"
#include "base/types.h"
#include "base/unique_fd.h"
#include "usbip/usbip_session.h"

namespace gwq::terminal::usbip {

class UsbIpConnection {
 public:
  // The socket must not block. What else is given must outlive the connection.
  UsbIpConnection(UniqueFd socket, UsbIpPlug& plug, EventLoop& loop, const Clock& clock);

  // For a client that needs no handshake. False when it cannot have the terminal.
  [[nodiscard]] bool Import() { return session_.Import(); }
  // When an import must have come; nothing while there is one.
  [[nodiscard]] std::optional<Time> Deadline() const;
  // Sends what the session has to say, before each wait of the loop. False when the connection is over.
  [[nodiscard]] bool Settle();

 private:
  void Read();
  [[nodiscard]] bool Send();

  const Clock& clock_;
  UniqueFd socket_;
  UsbIpSession session_;
  Time deadline_;
  Bytes unsent_;
  EventLoop::Watch watch_;
};

}  // namespace gwq::terminal::usbip
