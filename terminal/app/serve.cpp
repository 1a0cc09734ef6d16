// SPDX-License-Identifier: MIT
#include "app/serve.h"

#include <csignal>
#include <cstdio>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "app/failures.h"
#include "app/terminal_host.h"
#include "base/errors.h"
#include "base/processes.h"
#include "usbip/usbip_server.h"

namespace gwq::terminal::app {
namespace {

// The USB terminal's way to the kernel of this machine; none where there is no USB terminal.
class UsbIp {
 public:
  UsbIp(TerminalHost& host, std::optional<std::uint16_t> port) {
    if (host.Usb() == nullptr) return;
    plug_.emplace(host.Identity(), *host.Usb());
    server_.emplace(*port, *plug_, host.SharedClock());
    server_->Join(host.Loop());
  }

  [[nodiscard]] usb::UsbPlug* Plug() { return plug_ ? &*plug_ : nullptr; }
  // What is printed of it.
  [[nodiscard]] std::string Place() const {
    return server_ ? "usbip 127.0.0.1:" + std::to_string(server_->Port()) + "\n" : "";
  }

 private:
  std::optional<usbip::UsbIpPlug> plug_;
  std::optional<usbip::UsbIpServer> server_;
};

// Obeys signals, each after what hosts have sent by then.
class SignalServer {
 public:
  SignalServer(TerminalHost& host, const SignalWatch& signals)
      : host_(host), watch_(host.Loop().OnReady(signals.Fd(), [this, &signals](unsigned) {
          while (const auto signal = signals.Next()) heard_.push_back(static_cast<int>(signal->ssi_signo));
        })) {
    host.Loop().BeforeEachWait([this] { ObeyAll(); });
  }
  SignalServer(const SignalServer&) = delete;
  SignalServer& operator=(const SignalServer&) = delete;

 private:
  void ObeyAll() {
    if (heard_.empty()) return;
    for (const int signal : std::exchange(heard_, {})) Obey(signal);
    host_.Loop().Wake();  // for who has looked before this what there is to do
  }
  void Obey(int signal) {
    if (signal != SIGUSR1 && signal != SIGUSR2) return host_.Loop().Stop();
    host_.SetPlugged(signal == SIGUSR2);
  }

  TerminalHost& host_;
  EventLoop::Watch watch_;
  std::vector<int> heard_;
};

void Print(const std::string& text) {
  if (std::fputs(text.c_str(), stdout) < 0 || std::fflush(stdout) != 0) ThrowErrno("standard output");
}

// `pty_name` stands before the path of a pseudo-terminal.
int Serve(const TerminalOptions& options, std::optional<std::uint16_t> usbip_port,
          const std::string& pty_name) {
  IgnoreOutputSignals();
  AnnounceHostility(options);
  // Before all else, so that no signal is missed.
  const SignalWatch signals{SIGINT, SIGTERM, SIGHUP, SIGUSR1, SIGUSR2};
  CheckDescriptors();
  TerminalHost host(options);
  UsbIp usbip(host, usbip_port);
  host.Open(usbip.Plug());
  const SignalServer obeys(host, signals);
  Print(usbip.Place() + (options.pty ? pty_name + host.Serial()->Path() + "\n" : ""));
  host.Run();
  return 0;
}

}  // namespace

int RunServe(const ServeOptions& options) {
  TerminalOptions terminal = options.terminal;
  if (!options.usbip_port) terminal.usb.reset();
  return Serve(terminal, options.usbip_port, "pty ");
}

int RunPty(const TerminalOptions& options) {
  return Serve(OnPseudoTerminal(options), {}, "");
}

}  // namespace gwq::terminal::app
