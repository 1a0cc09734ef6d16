// SPDX-License-Identifier: MIT
// The USB/IP server: the terminal for the kernel of this machine, on the loopback interface.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/clock.h"
#include "base/event_loop.h"
#include "base/unique_fd.h"
#include "usbip/usbip_connection.h"
#include "usbip/usbip_session.h"

namespace gwq::terminal::usbip {

class UsbIpServer final : public Timed {
 public:
  // At a port of 127.0.0.1, 0 for a free one. Throws when it is taken. What is given must
  // outlive the server.
  UsbIpServer(std::uint16_t port, UsbIpPlug& plug, const Clock& clock);
  ~UsbIpServer() override;

  [[nodiscard]] std::uint16_t Port() const;
  // Serves from `loop`, which must outlive this object.
  void Join(EventLoop& loop);

  // A connection that has imported nothing by then is closed.
  std::optional<Time> NextDeadline() override;
  void Advance(Time now) override;

 private:
  void Accept();
  // Sends what the sessions have to say, and closes those that are over.
  void Settle();

  UsbIpPlug& plug_;
  const Clock& clock_;
  UniqueFd listener_;
  EventLoop* loop_ = nullptr;
  EventLoop::Watch watch_;
  std::vector<std::unique_ptr<UsbIpConnection>> connections_;
};

}  // namespace gwq::terminal::usbip
