// SPDX-License-Identifier: MIT
// The terminals of one process, put together: units, USB device, serial line, cable, the customer's
// page and the scenario, on one loop. How hosts reach the USB device, and what ends it all, is the
// affair of who owns this.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

#include "app/device_factory.h"
#include "app/options.h"
#include "base/clock.h"
#include "base/event_loop.h"
#include "scenarios/stage.h"
#include "serial/serial_terminal.h"
#include "usb/loose_cable.h"
#include "usb/usb_id.h"
#include "usb/usb_plug.h"
#include "usb/usb_terminal.h"
#include "web/customer_page.h"

namespace gwq::terminal::app {

// Losing the reader of the trace, or the right to write to the keyboard's
// terminal, is no reason to stop.
void IgnoreOutputSignals();

// Prints seed and rates, so that a run can be reproduced.
void AnnounceHostility(const TerminalOptions& options);

class TerminalHost {
 public:
  // On USB if the options have an identity.
  explicit TerminalHost(const TerminalOptions& asked);
  TerminalHost(const TerminalHost&) = delete;
  TerminalHost& operator=(const TerminalHost&) = delete;
  ~TerminalHost();

  [[nodiscard]] EventLoop& Loop() { return loop_; }
  [[nodiscard]] const Clock& SharedClock() const { return clock_; }
  [[nodiscard]] usb::UsbTerminal* Usb() const { return usb_.get(); }  // null: not on USB
  [[nodiscard]] usb::UsbId Identity() const { return options_.usb.value_or(usb::UsbId{}); }
  [[nodiscard]] const serial::SerialTerminal* Serial() const { return serial_.get(); }  // null: there is none

  // Plugs the USB terminal in, opens the page and begins the scenario. A terminal on USB needs a
  // plug, which must be there as long as Run.
  void Open(usb::UsbPlug* plug);
  // Without effect where nothing can be plugged.
  void SetPlugged(bool plugged);

  // Returns after Loop().Stop().
  void Run() { loop_.Run(clock_); }

  // Tells how a replay went; true if the hosts did all that is recorded, or nothing is replayed.
  [[nodiscard]] bool FinishReplay() { return devices_.FinishReplay(); }

 private:
  class StageTimer;
  using DeviceAction = std::function<void(device::Device&, Time)>;

  [[nodiscard]] std::unique_ptr<scenarios::Stage> MakeStage(const TerminalOptions& options);
  void AddUsb(const device::TraceSink& page);
  void AddSerial(const device::TraceSink& page);
  void OpenPage(std::uint16_t port);
  [[nodiscard]] web::PageTerminal PageTerminalHere();
  void BeginStage();
  void UseUsb(const DeviceAction& action);
  void UseSerial(const DeviceAction& action);
  template <typename Transport>
  static void SetRates(Transport& transport, const Unit& unit, const faults::FaultRates& rates);

  const Clock clock_;
  EventLoop loop_;
  web::PageTrace page_trace_{[this] { loop_.Wake(); }};
  std::unique_ptr<scenarios::Stage> stage_;
  DeviceFactory devices_;
  const TerminalOptions options_;
  std::optional<Unit> usb_unit_;
  std::unique_ptr<usb::UsbTerminal> usb_;
  std::optional<Unit> serial_unit_;
  std::unique_ptr<serial::SerialTerminal> serial_;
  usb::UsbPlug* plug_ = nullptr;
  std::unique_ptr<usb::LooseCable> cable_;
  std::unique_ptr<StageTimer> stage_timer_;
  std::unique_ptr<web::CustomerPage> page_;
};

}  // namespace gwq::terminal::app
