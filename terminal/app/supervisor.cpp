// SPDX-License-Identifier: MIT
#include "app/supervisor.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "app/command_view.h"
#include "app/control_channel.h"
#include "app/failures.h"
#include "app/options_message.h"
#include "base/clock.h"
#include "base/errors.h"
#include "base/event_loop.h"
#include "base/private_dir.h"
#include "base/processes.h"
#include "usbip/kernel_plug.h"
#include "usbip/vhci.h"

namespace gwq::terminal::app {
namespace {

// How long a command that was asked to end may take.
constexpr Time kGrace{2000};
// The server itself tells of a kernel that takes too long.
constexpr std::chrono::seconds kServerStartLimit = usbip::kKernelLimit + std::chrono::seconds{5};
constexpr Time kServerExitLimit{10'000};  // long enough for what sanitizers do at the end
constexpr std::string_view kFailed = "failed ";

std::string EndText(int status) {
  constexpr int kFirstSignal = 128;
  if (status <= kFirstSignal) return "with status " + std::to_string(status);
  const char* signal = sigdescr_np(status - kFirstSignal);
  return std::string("by a signal: ") + (signal == nullptr ? std::to_string(status - kFirstSignal) : signal);
}

// What is there stays in front: a sanitizer's runtime insists on being first.
void AddPreload(Environment& environment) {
  const std::string present = environment.Get("LD_PRELOAD");
  if (present.find(kTestbedPreload) != std::string::npos) return;
  environment.Set("LD_PRELOAD", present.empty() ? kTestbedPreload : present + ":" + kTestbedPreload);
}

// The process that is the terminal. Ended, and reaped, on every way out.
class ServerProcess {
 public:
  ServerProcess(const ExecOptions& options, const PrivateDir& dir, const SignalWatch& signals)
      : ServerProcess(options, dir, signals, ControlChannel::Pair()) {}
  ServerProcess(const ServerProcess&) = delete;
  ServerProcess& operator=(const ServerProcess&) = delete;
  ~ServerProcess() { End(); }

  [[nodiscard]] const ControlChannel& Control() const { return control_; }

  // Ends it in good order and tells its exit status.
  int End();

  // Waits for the terminal and returns what the command's environment is to have.
  [[nodiscard]] Variables AwaitReady();

 private:
  ServerProcess(const ExecOptions& options, const PrivateDir& dir, const SignalWatch& signals,
                std::pair<ControlChannel, ControlChannel> ends);

  ControlChannel control_;
  pid_t pid_ = -1;
  std::optional<int> status_;
};

ServerProcess::ServerProcess(const ExecOptions& options, const PrivateDir& dir, const SignalWatch& signals,
                             std::pair<ControlChannel, ControlChannel> ends)
    : control_(std::move(ends.first)) {
  SpawnRequest request;
  control_.Send(OptionsMessage(options.terminal));
  request.arguments = {std::filesystem::read_symlink("/proc/self/exe").string(), "server",
                       "--control-fd=" + std::to_string(ends.second.Fd())};
  // Nothing else: what was preloaded is meant for the command, and a sanitizer's
  // runtime in a program that was not built for it can lock up the testbed.
  request.environment.Unset("LD_PRELOAD");
  if (NeedsTestbed(options.terminal)) request.environment.Set("LD_PRELOAD", kTestbedPreload);
  request.environment.Unset("UMOCKDEV_DIR");
  request.environment.Unset(kRunDirVariable);  // of another terminal's run, whose end is not ours
  request.environment.Set("TMPDIR", dir.Path());
  request.signal_mask = signals.OriginalMask();
  request.passed_fd = ends.second.Fd();
  pid_ = Spawn(request);
}

Variables ServerProcess::AwaitReady() {
  EventLoop loop;
  const EventLoop::Watch news = loop.OnReady(control_.Fd(), [&loop](unsigned) { loop.Stop(); });
  if (!loop.RunFor(Clock{}, kServerStartLimit))
    throw std::runtime_error("the terminal does not start within " +
                             std::to_string(kServerStartLimit.count()) + " s (is this machine overloaded?)");
  const std::optional<std::string> message = control_.Receive();
  if (!message) throw std::runtime_error("the terminal's process ended while it started, " + EndText(End()));
  if (message->starts_with(kFailed)) throw std::runtime_error(message->substr(kFailed.size()));
  return ReadReadyMessage(*message);
}

int ServerProcess::End() {
  if (status_) return *status_;
  control_.Send("done");
  control_.Close();
  status_ = WaitFor(pid_, kServerExitLimit);
  if (!status_) {
    kill(pid_, SIGKILL);
    status_ = WaitFor(pid_, kServerExitLimit);
  }
  return status_.value_or(128 + SIGKILL);
}

// The command, from its start to its end.
class CommandRun final : public Timed {
 public:
  CommandRun(const SignalWatch& signals, const ServerProcess& server, std::string dir)
      : signals_(signals), server_(server), dir_(std::move(dir)) {}
  ~CommandRun() override { EndProcessesOf(dir_); }

  [[nodiscard]] CommandOutcome Run(const ExecOptions& options, const Variables& variables);

 private:
  // Of the time limit, or of the grace after it.
  std::optional<Time> NextDeadline() override;
  void Advance(Time now) override;

  void Start(const ExecOptions& options, const Variables& variables);
  void AwaitExit();
  void OnSignal(const signalfd_siginfo& info);
  void AskToEnd(int signal);
  void OnServerMessage();

  const SignalWatch& signals_;
  const ServerProcess& server_;
  const std::string dir_;
  const Clock clock_;
  EventLoop loop_;
  EventLoop::Watch server_watch_;
  pid_t pid_ = -1;
  std::optional<int> status_;
  bool server_lost_ = false;
  std::string server_failure_;
  CommandOutcome outcome_;
  std::optional<Time> ends_at_;
  std::optional<Time> kill_at_;
  bool asked_to_end_ = false;
};

CommandOutcome FailedStart(const StartFailure& error) {
  CommandOutcome outcome;
  outcome.status = error.WasNotFound() ? 127 : 126;
  outcome.start_problem = error.what();
  return outcome;
}

CommandOutcome CommandRun::Run(const ExecOptions& options, const Variables& variables) {
  const Time begin = clock_.Now();
  if (options.time_limit) ends_at_ = begin + *options.time_limit;
  try {
    Start(options, variables);
  } catch (const StartFailure& error) {
    return FailedStart(error);
  }
  AwaitExit();
  if (server_lost_) throw std::runtime_error("the terminal stopped unexpectedly" + server_failure_);
  outcome_.status = *status_;
  outcome_.took = clock_.Now() - begin;
  return outcome_;
}

void CommandRun::Start(const ExecOptions& options, const Variables& variables) {
  SpawnRequest request;
  request.arguments = options.command;
  request.output_file = options.output_file;
  request.errors_file = options.errors_file;
  if (NeedsTestbed(options.terminal)) AddPreload(request.environment);
  for (const auto& [name, value] : variables) request.environment.Set(name, value);
  request.environment.Set(kRunDirVariable, dir_);
  request.environment.Set("GWQ_TERMINAL_PID", std::to_string(getpid()));
  request.signal_mask = signals_.OriginalMask();
  request.dies_with_us = true;
  pid_ = Spawn(request);
}

void CommandRun::AwaitExit() {
  const EventLoop::Watch signals = loop_.OnReady(signals_.Fd(), [this](unsigned) {
    while (const std::optional<signalfd_siginfo> info = signals_.Next()) OnSignal(*info);
  });
  server_watch_ = loop_.OnReady(server_.Control().Fd(), [this](unsigned) { OnServerMessage(); });
  const EventLoop::ExitWatch exit = loop_.OnExit(pid_, [this](int status) {
    status_ = status;
    loop_.Stop();
  });
  loop_.Add(*this);
  loop_.Run(clock_);
}

void CommandRun::OnSignal(const signalfd_siginfo& info) {
  const int signal = static_cast<int>(info.ssi_signo);
  // A key at the keyboard has reached the command too, which decides what it means.
  const bool from_keyboard = info.ssi_code == SI_KERNEL && (signal == SIGINT || signal == SIGQUIT);
  if (signal == SIGUSR1) {
    server_.Control().Send("unplug");
  } else if (signal == SIGUSR2) {
    server_.Control().Send("replug");
  } else if (!from_keyboard) {
    outcome_.interrupted = true;
    AskToEnd(signal);
  }
  if (from_keyboard) outcome_.interrupted = true;
}

void CommandRun::AskToEnd(int signal) {
  SignalProcessesOf(dir_, signal);
  if (!std::exchange(asked_to_end_, true)) kill_at_ = clock_.Now() + kGrace;
}

// The server's end, or before it the reason.
void CommandRun::OnServerMessage() {
  if (const std::optional<std::string> message = server_.Control().Receive()) {
    if (message->starts_with(kFailed)) server_failure_ = ": " + message->substr(kFailed.size());
    return;
  }
  server_lost_ = true;
  server_watch_ = {};
  AskToEnd(SIGTERM);
}

std::optional<Time> CommandRun::NextDeadline() {
  return ends_at_ && kill_at_ ? std::min(ends_at_, kill_at_) : ends_at_ ? ends_at_ : kill_at_;
}

void CommandRun::Advance(Time now) {
  if (ends_at_ && now >= *ends_at_) {
    ends_at_.reset();
    outcome_.timed_out = true;
    AskToEnd(SIGTERM);
  }
  if (kill_at_ && now >= *kill_at_) {
    kill_at_.reset();
    SignalProcessesOf(dir_, SIGKILL);
    kill(pid_, SIGKILL);
  }
}

}  // namespace

SignalWatch WatchSignals() {
  // An ignored SIGCHLD, which a parent may hand down, would hide how children end.
  std::signal(SIGCHLD, SIG_DFL);
  return SignalWatch({SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGUSR1, SIGUSR2});
}

CommandOutcome RunWatched(const ExecOptions& options, const SignalWatch& signals, const PrivateDir& dir) {
  CheckDescriptors();
  if (NeedsTestbed(options.terminal)) CheckTestbed();
  if (options.terminal.usbip) usbip::Vhci().Check();
  dir.CheckRoom();
  ServerProcess server(options, dir, signals);
  const Variables variables = server.AwaitReady();
  CommandOutcome outcome = CommandRun(signals, server, dir.Path()).Run(options, variables);
  const int server_status = server.End();
  if (server_status == recording::kReplayDiffered) outcome.status = 1;
  if (server_status != 0 && server_status != recording::kReplayDiffered)
    throw std::runtime_error("the terminal ended badly, with status " + std::to_string(server_status));
  return outcome;
}

int RunCommand(const ExecOptions& options) {
  const SignalWatch signals = WatchSignals();
  const PrivateDir dir;
  const CommandOutcome outcome = RunWatched(options, signals, dir);
  if (!outcome.start_problem.empty())
    std::fprintf(stderr, "gwq-terminal: %s\n", WithAdvice(outcome.start_problem).c_str());
  return outcome.status;
}

}  // namespace gwq::terminal::app
