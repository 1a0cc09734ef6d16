#include "transports/server.h"

#include <sys/eventfd.h>
#include <sys/signalfd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "transports/control_channel.h"
#include "transports/device_factory.h"
#include "transports/errors.h"
#include "transports/event_loop.h"
#include "transports/private_dir.h"
#include "transports/processes.h"
#include "transports/serial_terminal.h"
#include "transports/testbed.h"
#include "transports/usb_terminal.h"
#include "transports/usbfs_handler.h"
#include "web/customer_page.h"

namespace gwq::terminal {
namespace {

// An event that any thread can raise to wake the loop.
class Wakeup {
 public:
  Wakeup() : fd_(Checked(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK), "eventfd")) {}
  void Raise() const { eventfd_write(fd_.Get(), 1); }
  void Join(EventLoop& loop) {
    // Waking is all: the loop asks for the deadlines anew before it waits again.
    loop.OnReadable(fd_.Get(), [this] {
      eventfd_t count = 0;
      eventfd_read(fd_.Get(), &count);
    });
  }

 private:
  UniqueFd fd_;
};

void OpenPage(std::unique_ptr<CustomerPage>& page, std::uint16_t port, PageTerminal terminal,
              PageTrace& trace, EventLoop& loop) {
  page = OpenCustomerPage(port, std::move(terminal), trace, loop);
  std::fprintf(stderr, "gwq-terminal: you are the customer at %s\n", page->Address().c_str());
}

PageTerminal PageTerminalOf(SerialTerminal& serial) {
  return {[&serial](const auto& action) { serial.Use(action); }, [] { return true; }, {}};
}
// Unplugs a hostile terminal when it wants to go, and plugs it in again.
class LooseCable final : public Timed {
 public:
  LooseCable(UsbTerminal& usb, const Clock& clock, std::function<void()> unplug, std::function<void()> plug)
      : usb_(usb), clock_(clock), unplug_(std::move(unplug)), plug_(std::move(plug)) {}

  std::optional<Time> NextDeadline() override {
    if (back_at_ || !usb_.WantsUnplug()) return back_at_;
    return clock_.Now();
  }

  void Advance(Time now) override {
    if (!back_at_ && usb_.WantsUnplug()) {
      unplug_();
      back_at_ = now + kAbsence;
    } else if (back_at_ && now >= *back_at_) {
      back_at_.reset();
      plug_();
    }
  }

 private:
  static constexpr Time kAbsence{700};

  UsbTerminal& usb_;
  const Clock& clock_;
  const std::function<void()> unplug_;
  const std::function<void()> plug_;
  std::optional<Time> back_at_;
};

// The USB terminal in its testbed. Members are destroyed from the last to the
// first, the testbed and its thread before what that thread uses.
class Server {
 public:
  explicit Server(const TerminalOptions& asked);

  [[nodiscard]] const std::string& TestbedDir() const { return testbed_->RootDir(); }

  // True when the supervisor ended it in good order.
  bool Run(ControlChannel& control);

  // The server's exit status after a run in good order.
  [[nodiscard]] int Status() { return devices_.FinishReplay() ? 0 : kReplayDiffered; }

 private:
  void AddUsb(UsbId id, const TraceSink& page);
  void AddSerial(int port, const TraceSink& page);
  void AddHostility();
  [[nodiscard]] PageTerminal PageTerminalHere();
  void Obey(const std::string& message);
  void Plug();
  void Unplug();

  Clock clock_;
  DeviceFactory devices_;
  EventLoop loop_;
  Wakeup wakeup_;
  PageTrace page_trace_{[this] { wakeup_.Raise(); }};
  std::optional<UsbId> usb_id_;
  std::unique_ptr<UsbTerminal> usb_;
  std::unique_ptr<UsbfsHandler> handler_;
  std::unique_ptr<SerialTerminal> serial_;
  std::unique_ptr<Testbed> testbed_;
  std::unique_ptr<Timed> hostility_;
  std::unique_ptr<CustomerPage> page_;
  bool plugged_ = false;
  bool done_ = false;
};

Server::Server(const TerminalOptions& asked) : devices_(asked), testbed_(std::make_unique<Testbed>()) {
  const TerminalOptions options = devices_.FitReplay(asked);
  usb_id_ = options.usb;
  const TraceSink page = options.page_port ? page_trace_.Sink() : TraceSink{};
  if (options.usb) AddUsb(*options.usb, page);
  if (options.serial_port) AddSerial(*options.serial_port, options.usb ? TraceSink{} : page);
  if (options.usb && options.hostile) AddHostility();
  wakeup_.Join(loop_);
  if (options.page_port) OpenPage(page_, *options.page_port, PageTerminalHere(), page_trace_, loop_);
}

// The page belongs to one terminal.
PageTerminal Server::PageTerminalHere() {
  if (!usb_) return PageTerminalOf(*serial_);
  return {[this](const auto& action) { usb_->Use(action); }, [this] { return plugged_; },
          [this](bool plugged) { plugged ? Plug() : Unplug(); }};
}

void Server::AddHostility() {
  hostility_ = std::make_unique<LooseCable>(
      *usb_, clock_, [this] { Unplug(); }, [this] { Plug(); });
  loop_.Add(*hostility_);
}

void Server::AddUsb(UsbId id, const TraceSink& page) {
  usb_ = std::make_unique<UsbTerminal>(id, devices_.Make(Line::kUsb, "usb", page), clock_,
                                       [this] { wakeup_.Raise(); });
  handler_ = std::make_unique<UsbfsHandler>(*usb_);
  testbed_->AttachUsbNode(handler_->Base());
  loop_.Add(*usb_);
  Plug();
}

void Server::AddSerial(int port, const TraceSink& page) {
  serial_ = std::make_unique<SerialTerminal>(devices_.Make(Line::kSerial, "serial", page), clock_);
  serial_->Join(loop_);
  testbed_->LinkSerial(port, serial_->Path());
}

void Server::Plug() {
  if (!usb_ || plugged_) return;
  usb_->Plug(testbed_->Plug(*usb_id_));
  plugged_ = true;
}

void Server::Unplug() {
  if (!usb_ || !plugged_) return;
  plugged_ = false;
  usb_->Unplug();
  testbed_->Unplug();
}

void Server::Obey(const std::string& message) {
  if (message == "unplug") Unplug();
  if (message == "replug") Plug();
  if (message != "done") return;
  done_ = true;
  loop_.Stop();
}

bool Server::Run(ControlChannel& control) {
  loop_.OnReadable(control.Fd(), [&] {
    const std::optional<std::string> message = control.Receive();
    if (!message) return loop_.Stop();
    Obey(*message);
  });
  loop_.Run(clock_);
  return done_;
}

// Losing the reader of the trace, or the right to write to the keyboard's
// terminal, is no reason to stop.
void IgnoreOutputSignals() {
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGTTOU, SIG_IGN);
}

// With what is printed here the faults can be had again.
void AnnounceHostility(const TerminalOptions& options) {
  if (options.hostile)
    std::fprintf(stderr, "gwq-terminal: hostile %s\n", RatesText(*options.hostile).c_str());
}

// The supervisor can no longer do it.
void CleanUpAlone(const std::string& testbed_dir) {
  SignalProcessesOf(testbed_dir, SIGKILL);
  if (const char* dir = std::getenv("TMPDIR")) PrivateDir::Remove(dir);
}

}  // namespace

int RunServer(const TerminalOptions& options, int control_fd) {
  IgnoreOutputSignals();
  AnnounceHostility(options);
  ControlChannel control{UniqueFd(control_fd)};
  try {
    Server server(options);
    const std::string dir = server.TestbedDir();
    control.Send("ready " + dir);
    if (!server.Run(control)) CleanUpAlone(dir);
    return server.Status();
  } catch (const std::exception& error) {
    control.Send(std::string("failed ") + error.what());
    return 1;
  }
}

int RunPty(const TerminalOptions& options) {
  IgnoreOutputSignals();
  AnnounceHostility(options);
  const SignalWatch signals({SIGINT, SIGTERM, SIGHUP});
  const Clock clock;
  PageTrace trace([] {});  // everything happens in the loop
  DeviceFactory devices(options);
  const TraceSink page_sink = options.page_port ? trace.Sink() : TraceSink{};
  SerialTerminal terminal(devices.Make(Line::kSerial, "serial", page_sink), clock);
  EventLoop loop;
  terminal.Join(loop);
  std::unique_ptr<CustomerPage> page;
  if (options.page_port) OpenPage(page, *options.page_port, PageTerminalOf(terminal), trace, loop);
  loop.OnReadable(signals.Fd(), [&loop] { loop.Stop(); });
  if (std::printf("%s\n", terminal.Path().c_str()) < 0 || std::fflush(stdout) != 0)
    ThrowErrno("standard output");
  loop.Run(clock);
  return 0;
}

}  // namespace gwq::terminal
