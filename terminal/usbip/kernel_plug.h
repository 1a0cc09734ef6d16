// SPDX-License-Identifier: MIT
// The terminal's plug in this machine's own kernel, by its virtual USB host controller.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "base/clock.h"
#include "base/event_loop.h"
#include "base/unique_fd.h"
#include "usb/usb_id.h"
#include "usb/usb_plug.h"
#include "usb/usb_terminal.h"
#include "usbip/usbip_connection.h"
#include "usbip/usbip_session.h"
#include "usbip/vhci.h"

namespace gwq::terminal::usbip {

// How long the kernel may take before programs see what is plugged in.
inline constexpr std::chrono::seconds kKernelLimit{10};

class KernelPlug final : public usb::UsbPlug, public Timed {
 public:
  // Not plugged in at first. What is given must outlive the plug, and the plug all runs of the loop.
  KernelPlug(Vhci kernel, usb::UsbId id, usb::UsbTerminal& terminal, EventLoop& loop, const Clock& clock);
  // Returns once the kernel has no device any more, or does not let go of it.
  ~KernelPlug() override;

  [[nodiscard]] bool IsIn() const override { return in_; }
  // The loop does both before its next wait.
  void PlugIn() override { in_ = true; }
  void PullOut() override;

  // Runs the loop until programs can use what is plugged in. Throws after `limit`.
  void AwaitReady(Time limit = kKernelLimit);

  // Looks whether the kernel has come as far as is waited for.
  std::optional<Time> NextDeadline() override;
  void Advance(Time now) override;

 private:
  struct Place {
    unsigned port = 0;
    std::string device;  // as the kernel calls it; empty as long as it knows none
  };

  void Settle();
  void Attach();
  void Leave();
  [[nodiscard]] bool IsLeaving() const { return place_ && !connection_; }

  const Vhci kernel_;
  UsbIpPlug device_;
  EventLoop& loop_;
  const Clock& clock_;
  bool in_ = false;
  bool pulled_ = false;  // since it was attached
  bool awaited_ = false;
  std::optional<Place> place_;  // until the kernel has let go of the device
  UniqueFd kernel_end_;         // open as long as the kernel's status names its number
  std::unique_ptr<UsbIpConnection> connection_;
  Time looks_at_{};
};

}  // namespace gwq::terminal::usbip
