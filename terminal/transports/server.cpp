#include "transports/server.h"

#include <openssl/crypto.h>
#include <sys/eventfd.h>

#include <csignal>
#include <cstdlib>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "scenarios/stage.h"
#include "transports/control_channel.h"
#include "transports/device_factory.h"
#include "transports/errors.h"
#include "transports/event_loop.h"
#include "transports/loose_cable.h"
#include "transports/private_dir.h"
#include "transports/processes.h"
#include "transports/serial_terminal.h"
#include "transports/serving.h"
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

// Makes a scenario's events come.
class StageTimer final : public Timed {
 public:
  explicit StageTimer(Stage& stage) : stage_(stage) {}
  std::optional<Time> NextDeadline() override { return stage_.NextDeadline(); }
  void Advance(Time now) override { stage_.Advance(now); }

 private:
  Stage& stage_;
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
  [[nodiscard]] std::unique_ptr<Stage> MakeStage(const TerminalOptions& options);
  void BeginStage();
  void Note(Happening::Kind kind);
  [[nodiscard]] PageTerminal PageTerminalHere(const FaultRates& rates);
  void Obey(const std::string& message);
  void Plug();
  void Unplug();

  Clock clock_;
  EventLoop loop_;
  Wakeup wakeup_;
  std::unique_ptr<Stage> stage_;
  DeviceFactory devices_;
  PageTrace page_trace_{[this] { wakeup_.Raise(); }};
  std::optional<UsbId> usb_id_;
  std::unique_ptr<UsbTerminal> usb_;
  std::unique_ptr<UsbfsHandler> handler_;
  std::unique_ptr<SerialTerminal> serial_;
  std::unique_ptr<Testbed> testbed_;
  std::unique_ptr<Timed> hostility_;
  std::unique_ptr<Timed> stage_timer_;
  std::unique_ptr<CustomerPage> page_;
  bool plugged_ = false;
  bool done_ = false;
};

Server::Server(const TerminalOptions& asked)
    : stage_(MakeStage(asked)), devices_(asked, stage_.get()), testbed_(std::make_unique<Testbed>()) {
  const TerminalOptions options = devices_.FitReplay(asked);
  usb_id_ = options.usb;
  const TraceSink page = options.page_port ? page_trace_.Sink() : TraceSink{};
  if (options.usb) AddUsb(*options.usb, page);
  if (options.serial_port) AddSerial(*options.serial_port, options.usb ? TraceSink{} : page);
  if (options.usb && (options.hostile || options.page_port)) AddHostility();
  wakeup_.Join(loop_);
  if (options.page_port)
    page_ = OpenPage(*options.page_port, PageTerminalHere(options.hostile.value_or(FaultRates{})),
                     page_trace_, loop_);
  if (stage_) BeginStage();
}

std::unique_ptr<Stage> Server::MakeStage(const TerminalOptions& options) {
  if (options.scenario_file.empty()) return nullptr;
  return std::make_unique<Stage>(
      LoadScenario(options.scenario_file), options.history_file, [this] { return clock_.Now(); },
      [this] { wakeup_.Raise(); });
}

void Server::BeginStage() {
  const auto use = [this](const std::function<void(Device&, Time)>& action) {
    if (usb_) usb_->Use(action);
    if (serial_) serial_->Use(action);
  };
  stage_->Begin({[this] { Unplug(); }, [this] { Plug(); }, use});
  stage_timer_ = std::make_unique<StageTimer>(*stage_);
  loop_.Add(*stage_timer_);
}

void Server::Note(Happening::Kind kind) {
  if (stage_) stage_->Note({kind, {}, {}, 0, {}});
}

// The page belongs to one terminal.
PageTerminal Server::PageTerminalHere(const FaultRates& rates) {
  if (!usb_) return PageTerminalOf(*serial_, rates);
  return {[this](const auto& action) { usb_->Use(action); }, [this] { return plugged_; },
          [this](bool plugged) { plugged ? Plug() : Unplug(); },
          [this](const FaultRates& changed) { usb_->SetRates(changed); }, rates};
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
  Note(Happening::Kind::kPlugged);
}

void Server::Unplug() {
  if (!usb_ || !plugged_) return;
  plugged_ = false;
  usb_->Unplug();
  testbed_->Unplug();
  Note(Happening::Kind::kUnplugged);
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

// The testbed's thread may outlive the loop by a moment. OpenSSL, when it cleans up at exit, loses what that thread
// has of it; without, the thread itself gives it back.
void LeaveOpenSslToItsThreads() {
  OPENSSL_init_crypto(OPENSSL_INIT_NO_ATEXIT, nullptr);
}

// The supervisor can no longer do it.
void CleanUpAlone(const std::string& testbed_dir) {
  SignalProcessesOf(testbed_dir, SIGKILL);
  if (const char* dir = std::getenv("TMPDIR")) PrivateDir::Remove(dir);
}

}  // namespace

int RunServer(const TerminalOptions& options, int control_fd) {
  IgnoreOutputSignals();
  LeaveOpenSslToItsThreads();
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

}  // namespace gwq::terminal
