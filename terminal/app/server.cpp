// SPDX-License-Identifier: MIT
#include "app/server.h"

#include <openssl/crypto.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "app/control_channel.h"
#include "app/device_factory.h"
#include "app/failures.h"
#include "app/serving.h"
#include "base/errors.h"
#include "base/event_loop.h"
#include "base/private_dir.h"
#include "base/processes.h"
#include "scenarios/stage.h"
#include "serial/serial_terminal.h"
#include "umockdev/testbed.h"
#include "umockdev/usbfs_handler.h"
#include "usb/loose_cable.h"
#include "usb/usb_terminal.h"
#include "web/customer_page.h"

namespace gwq::terminal {
namespace {

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
  void Note(Event::Kind kind);
  [[nodiscard]] PageTerminal PageTerminalHere(const FaultRates& rates);
  void Obey(const std::string& message);
  void Plug();
  void Unplug();

  Clock clock_;
  EventLoop loop_;
  std::unique_ptr<Stage> stage_;
  DeviceFactory devices_;
  PageTrace page_trace_{[this] { loop_.Wake(); }};
  std::optional<UsbId> usb_id_;
  std::optional<Unit> usb_unit_;
  std::unique_ptr<UsbTerminal> usb_;
  std::unique_ptr<UsbfsHandler> handler_;
  std::optional<Unit> serial_unit_;
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
  const TerminalOptions options = devices_.AdaptToRecording(asked);
  usb_id_ = options.usb;
  const TraceSink page = options.page_port ? page_trace_.Sink() : TraceSink{};
  if (options.usb) AddUsb(*options.usb, page);
  if (options.serial_port) AddSerial(*options.serial_port, options.usb ? TraceSink{} : page);
  if (options.usb && (options.hostile || options.page_port)) AddHostility();
  if (options.page_port)
    page_ = OpenPage(*options.page_port, PageTerminalHere(options.hostile.value_or(FaultRates{})),
                     page_trace_, loop_);
  if (stage_) BeginStage();
}

std::unique_ptr<Stage> Server::MakeStage(const TerminalOptions& options) {
  if (options.scenario_file.empty()) return nullptr;
  return std::make_unique<Stage>(
      LoadScenario(options.scenario_file), options.history_file, [this] { return clock_.Now(); },
      [this] { loop_.Wake(); });
}

void Server::BeginStage() {
  const auto use = [this](const DeviceAction& action) {
    if (usb_) UseOf(*usb_, *usb_unit_)(action);
    if (serial_) UseOf(*serial_, *serial_unit_)(action);
  };
  stage_->Begin({[this] { Unplug(); }, [this] { Plug(); }, use});
  stage_timer_ = std::make_unique<StageTimer>(*stage_);
  loop_.Add(*stage_timer_);
}

void Server::Note(Event::Kind kind) {
  if (stage_) stage_->Note({kind, {}, {}, 0, {}});
}

// The page belongs to one terminal.
PageTerminal Server::PageTerminalHere(const FaultRates& rates) {
  if (!usb_) return PageTerminalOf(*serial_, *serial_unit_, rates);
  return {UseOf(*usb_, *usb_unit_), [this] { return plugged_; },
          [this](bool plugged) { plugged ? Plug() : Unplug(); }, SetRatesOf(*usb_, *usb_unit_), rates};
}

void Server::AddHostility() {
  hostility_ = std::make_unique<LooseCable>(
      *usb_, clock_, [this] { Unplug(); }, [this] { Plug(); });
  loop_.Add(*hostility_);
}

void Server::AddUsb(UsbId id, const TraceSink& page) {
  usb_unit_.emplace(devices_.Make(Line::kUsb, "usb", page));
  usb_ = std::make_unique<UsbTerminal>(id, WiringOf(*usb_unit_), clock_, [this] { loop_.Wake(); });
  handler_ = std::make_unique<UsbfsHandler>(*usb_);
  testbed_->AttachUsbNode(handler_->Base());
  loop_.Add(*usb_);
  Plug();
}

void Server::AddSerial(int port, const TraceSink& page) {
  serial_unit_.emplace(devices_.Make(Line::kSerial, "serial", page));
  serial_ = std::make_unique<SerialTerminal>(serial_unit_->line, clock_, serial_unit_->recorder);
  serial_->Join(loop_);
  testbed_->LinkSerial(port, serial_->Path());
}

void Server::Plug() {
  if (!usb_ || plugged_) return;
  const auto gate = std::make_shared<ReapGate>(testbed_->Plug(*usb_id_));
  usb_->Plug([gate](bool reapable) { gate->SetReapable(reapable); });
  plugged_ = true;
  Note(Event::Kind::kPlugged);
}

void Server::Unplug() {
  if (!usb_ || !plugged_) return;
  plugged_ = false;
  usb_->Unplug();
  testbed_->Unplug();
  Note(Event::Kind::kUnplugged);
}

void Server::Obey(const std::string& message) {
  if (message == "unplug") Unplug();
  if (message == "replug") Plug();
  if (message != "done") return;
  done_ = true;
  loop_.Stop();
}

bool Server::Run(ControlChannel& control) {
  const EventLoop::Watch watch = loop_.OnReady(control.Fd(), [&](unsigned) {
    const std::optional<std::string> message = control.Receive();
    if (!message) return loop_.Stop();
    Obey(*message);
  });
  loop_.Run(clock_);
  return done_;
}

// The testbed's thread may outlive the loop by a moment. OpenSSL, when it cleans up at exit, loses
// what that thread has of it; without, the thread itself gives it back.
void LeaveOpenSslToItsThreads() {
  OPENSSL_init_crypto(OPENSSL_INIT_NO_ATEXIT, nullptr);
}

// The supervisor tells it; once it does not listen any more, this process does.
void ReportFailure(const ControlChannel& control, const std::string& reason) {
  if (!control.Send("failed " + reason))
    std::fprintf(stderr, "gwq-terminal: %s\n", WithAdvice(reason).c_str());
}

// Takes what GLib and umockdev print, and how they abort.
class GlibMessages {
 public:
  explicit GlibMessages(const ControlChannel& control) {
    g_log_set_default_handler(Report, const_cast<ControlChannel*>(&control));
  }
  GlibMessages(const GlibMessages&) = delete;
  GlibMessages& operator=(const GlibMessages&) = delete;
  ~GlibMessages() { g_log_set_default_handler(g_log_default_handler, nullptr); }

 private:
  static void Report(const gchar* domain, GLogLevelFlags level, const gchar* message, gpointer control) {
    if ((level & (G_LOG_LEVEL_ERROR | G_LOG_FLAG_FATAL)) != 0) {
      ReportFailure(*static_cast<const ControlChannel*>(control), message);
      _exit(1);
    }
    if ((level & (G_LOG_LEVEL_CRITICAL | G_LOG_LEVEL_WARNING)) == 0)
      return g_log_default_handler(domain, level, message, nullptr);
    std::fprintf(stderr, "gwq-terminal: %s\n", message);
  }
};

// False when the supervisor is gone and can no longer clean up.
bool Serve(const TerminalOptions& options, ControlChannel& control, int& status) {
  Server server(options);
  const std::string dir = server.TestbedDir();
  control.Send("ready " + dir);
  const bool in_good_order = server.Run(control);
  if (!in_good_order) KillProcessesOf(dir);
  status = server.Status();
  return in_good_order;
}

}  // namespace

void CheckHasServer() {}

int RunServer(const TerminalOptions& options, int control_fd) {
  IgnoreOutputSignals();
  LeaveOpenSslToItsThreads();
  AnnounceHostility(options);
  ControlChannel control{UniqueFd(control_fd)};
  const GlibMessages messages(control);
  const std::filesystem::path dir = std::filesystem::temp_directory_path();
  const DirLock lock(dir.string());  // the supervisor's may end with it
  int status = 0;
  try {
    // After the testbed is gone, which complains when its directory is.
    if (!Serve(options, control, status)) PrivateDir::Remove(dir.string());
    return status;
  } catch (const std::exception& error) {
    ReportFailure(control, ReasonOf(error));
    return 1;
  }
}

}  // namespace gwq::terminal
