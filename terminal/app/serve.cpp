// SPDX-License-Identifier: MIT
#include "app/serve.h"

#include <csignal>
#include <cstdio>
#include <memory>
#include <string>

#include "app/device_factory.h"
#include "app/failures.h"
#include "app/serving.h"
#include "base/errors.h"
#include "base/event_loop.h"
#include "base/processes.h"
#include "serial/serial_terminal.h"
#include "usb/loose_cable.h"
#include "usb/usb_terminal.h"
#include "usbip/usbip_server.h"
#include "web/customer_page.h"

namespace gwq::terminal {
namespace {

// The terminal on USB, with all that belongs to it.
class UsbIpTerminal {
 public:
  UsbIpTerminal(const ServeOptions& options, const Unit& unit, const Clock& clock)
      : unit_(unit),
        usb_(*options.terminal.usb, WiringOf(unit), clock, [] {}),  // everything happens in the loop
        plug_(*options.terminal.usb, usb_),
        server_(*options.usbip_port, plug_, clock) {
    if (options.terminal.hostile || options.terminal.page_port)
      cable_ = std::make_unique<LooseCable>(
          usb_, clock, [this] { SetPlugged(false); }, [this] { SetPlugged(true); });
  }

  [[nodiscard]] std::uint16_t Port() const { return server_.Port(); }
  void Join(EventLoop& loop) {
    loop.Add(usb_);
    if (cable_) loop.Add(*cable_);
    server_.Join(loop);
  }
  void SetPlugged(bool plugged) { plugged ? plug_.PlugIn() : plug_.PullOut(); }
  [[nodiscard]] PageTerminal ForPage(const FaultRates& rates) {
    return {UseOf(usb_, unit_), [this] { return plug_.IsIn(); },
            [this](bool plugged) { SetPlugged(plugged); }, SetRatesOf(usb_, unit_), rates};
  }

 private:
  Unit unit_;
  UsbTerminal usb_;
  UsbIpPlug plug_;
  UsbIpServer server_;
  std::unique_ptr<LooseCable> cable_;
};

class Serving {
 public:
  explicit Serving(const ServeOptions& options);

  [[nodiscard]] const SerialTerminal* Serial() const { return serial_.get(); }
  [[nodiscard]] const UsbIpTerminal* Usb() const { return usb_.get(); }
  void Run() { loop_.Run(clock_); }

 private:
  void Obey(int signal);

  // Before all else, so that no signal is missed.
  SignalWatch signals_{SIGINT, SIGTERM, SIGHUP, SIGUSR1, SIGUSR2};
  Clock clock_;
  DeviceFactory devices_;
  EventLoop loop_;
  PageTrace trace_{[] {}};  // everything happens in the loop
  std::unique_ptr<UsbIpTerminal> usb_;
  std::optional<Unit> serial_unit_;
  std::unique_ptr<SerialTerminal> serial_;
  std::unique_ptr<CustomerPage> page_;
  EventLoop::Watch signal_watch_;
};

Serving::Serving(const ServeOptions& options) : devices_(options.terminal) {
  CheckDescriptors();
  const TraceSink page = options.terminal.page_port ? trace_.Sink() : TraceSink{};
  if (options.usbip_port) {
    usb_ = std::make_unique<UsbIpTerminal>(options, devices_.Make(Line::kUsb, "usb", page), clock_);
    usb_->Join(loop_);
  }
  if (options.pty) {
    serial_unit_.emplace(devices_.Make(Line::kSerial, "serial", usb_ ? TraceSink{} : page));
    serial_ = std::make_unique<SerialTerminal>(serial_unit_->line, clock_, serial_unit_->recorder);
    serial_->Join(loop_);
  }
  if (options.terminal.page_port) {
    const FaultRates rates = options.terminal.hostile.value_or(FaultRates{});
    page_ =
        OpenPage(*options.terminal.page_port,
                 usb_ ? usb_->ForPage(rates) : PageTerminalOf(*serial_, *serial_unit_, rates), trace_, loop_);
  }
  signal_watch_ = loop_.OnReady(signals_.Fd(), [this](unsigned) {
    while (const auto signal = signals_.Next()) Obey(static_cast<int>(signal->ssi_signo));
  });
}

void Serving::Obey(int signal) {
  if (signal != SIGUSR1 && signal != SIGUSR2) return loop_.Stop();
  if (usb_) usb_->SetPlugged(signal == SIGUSR2);
}

void Print(const std::string& text) {
  if (std::fputs(text.c_str(), stdout) < 0 || std::fflush(stdout) != 0) ThrowErrno("standard output");
}

}  // namespace

int RunServe(const ServeOptions& options) {
  IgnoreOutputSignals();
  AnnounceHostility(options.terminal);
  Serving serving(options);
  std::string places;
  if (serving.Usb() != nullptr)
    places.append("usbip 127.0.0.1:").append(std::to_string(serving.Usb()->Port())).append("\n");
  if (serving.Serial() != nullptr) places.append("pty ").append(serving.Serial()->Path()).append("\n");
  Print(places);
  serving.Run();
  return 0;
}

int RunPty(const TerminalOptions& options) {
  IgnoreOutputSignals();
  AnnounceHostility(options);
  Serving serving({options, {}, true});
  Print(std::string(serving.Serial()->Path()).append("\n"));
  serving.Run();
  return 0;
}

}  // namespace gwq::terminal
