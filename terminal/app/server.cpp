// SPDX-License-Identifier: MIT
#include "app/server.h"

#include <glib.h>
#include <openssl/crypto.h>
#include <unistd.h>

#include <cstdio>
#include <exception>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "app/command_view.h"
#include "app/control_channel.h"
#include "app/failures.h"
#include "app/options_message.h"
#include "app/terminal_host.h"
#include "base/private_dir.h"
#include "base/processes.h"
#include "usbip/kernel_plug.h"

namespace gwq::terminal::app {
namespace {

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

// Returns after the supervisor's last message: true if that ends the server in good order.
bool RunUntilDone(TerminalHost& host, const ControlChannel& control) {
  bool done = false;
  const EventLoop::Watch watch = host.Loop().OnReady(control.Fd(), [&](unsigned) {
    const std::optional<std::string> message = control.Receive();
    if (message == "unplug") host.SetPlugged(false);
    if (message == "replug") host.SetPlugged(true);
    done = message == "done";
    if (!message || done) host.Loop().Stop();
  });
  host.Run();
  return done;
}

// A pseudo-terminal, which every program can open.
class PtyView final : public CommandView {
 public:
  explicit PtyView(const TerminalHost& host) : host_(host) {}
  [[nodiscard]] usb::UsbPlug* Plug() override { return nullptr; }
  [[nodiscard]] Variables Environment() const override {
    return {{kSerialPathVariable, host_.Serial()->Path()}};
  }

 private:
  const TerminalHost& host_;
};

// A USB device of this machine's kernel, which every program can open.
class KernelView final : public CommandView {
 public:
  explicit KernelView(TerminalHost& host)
      : plug_(usbip::Vhci(), host.Identity(), *host.Usb(), host.Loop(), host.SharedClock()) {
    plug_.PlugIn();
    plug_.AwaitReady();
  }
  [[nodiscard]] usb::UsbPlug* Plug() override { return &plug_; }
  [[nodiscard]] Variables Environment() const override { return {}; }

 private:
  usbip::KernelPlug plug_;
};

std::unique_ptr<CommandView> MakeView(const TerminalOptions& options, TerminalHost& host) {
  if (options.usbip) return std::make_unique<KernelView>(host);
  if (NeedsTestbed(options)) return MakeTestbedView(host, options.serial_port);
  return std::make_unique<PtyView>(host);
}

// False when the supervisor is gone and can no longer clean up.
bool Serve(const TerminalOptions& options, const ControlChannel& control, const std::string& dir,
           int& status) {
  TerminalHost host(options);
  const std::unique_ptr<CommandView> view = MakeView(options, host);
  host.Open(view->Plug());
  control.Send(ReadyMessage(view->Environment()));
  const bool in_good_order = RunUntilDone(host, control);
  if (!in_good_order) KillProcessesOf(dir);
  status = host.FinishReplay() ? 0 : recording::kReplayDiffered;
  return in_good_order;
}

}  // namespace

int RunServer(int control_fd) {
  IgnoreOutputSignals();
  LeaveOpenSslToItsThreads();
  const ControlChannel control{UniqueFd(control_fd)};
  const GlibMessages messages(control);
  const std::filesystem::path dir = std::filesystem::temp_directory_path();
  const DirLock lock(dir.string());  // the supervisor's may end with it
  int status = 0;
  try {
    const std::optional<std::string> message = control.Receive();
    if (!message) return 1;  // the supervisor is gone
    const TerminalOptions options = ReadOptionsMessage(*message);
    AnnounceHostility(options);
    // After the testbed is gone, which complains when its directory is.
    if (!Serve(options, control, dir.string(), status)) PrivateDir::Remove(dir.string());
    return status;
  } catch (const std::exception& error) {
    ReportFailure(control, ReasonOf(error));
    return 1;
  }
}

}  // namespace gwq::terminal::app
