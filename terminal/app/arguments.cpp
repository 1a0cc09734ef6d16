// SPDX-License-Identifier: MIT
#include "app/arguments.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <regex>
#include <string_view>

#include "app/recording_arguments.h"
#include "usb_ids.h"
#include "web/customer_page.h"

namespace gwq::terminal::app {
namespace {

constexpr int kUsageError = 2;

constexpr const char* kExecFooter =
    R"(COMMAND and its children see the terminal as a USB device. With --serial there is a
second terminal, with keys and a customer of its own, at the serial port; --no-usb
leaves the USB one out. COMMAND finds this program's process id in GWQ_TERMINAL_PID:
SIGUSR1 to it unplugs the USB terminal, SIGUSR2 plugs it in again. The serial port's
path is in GWQ_TERMINAL_SERIAL. With --pty this is a pseudo-terminal, which every
program can open; umockdev, which shows COMMAND the other terminals, is not used.
With --usbip the terminal is a USB device of this machine's own kernel, which every
program can open too. That takes root, and the module vhci-hcd: modprobe vhci-hcd

The exit status is COMMAND's, or 128 and the signal's number if it died by a signal;
127 if it was not found, 126 if it could not be started, 2 for a wrong command line,
1 if the terminal failed.)";

constexpr std::uint16_t kUsbIpPort = 3240;

constexpr const char* kServeFooter =
    R"(Prints where, and serves until SIGINT, SIGTERM or SIGHUP: "usbip 127.0.0.1:PORT",
"pty PATH". With both there are two terminals, each with keys and a customer of its
own. SIGUSR1 unplugs the USB terminal, SIGUSR2 plugs it in again.

For the kernel to see the USB terminal, root runs

  modprobe vhci-hcd
  usbip attach -r 127.0.0.1 -b 1-1              usbip --tcp-port PORT attach ...

after each plugging in. The exit status is 0, 2 for a wrong command line, 1 if the
terminal failed, such as for a port that is taken.)";

constexpr const char* kCheckFooter =
    R"(Runs COMMAND once in each SCENARIO, as exec does, and tells whether all happened that
the scenario expects. A SCENARIO is the path of a file, or the name of one that comes
with the program (--list). What the command prints is shown only when it fails.

  gwq-terminal check --list
  gwq-terminal check cancels-twice full-storage -- ./teller
  gwq-terminal check --junit results.xml ours/*.json -- ./teller --branch 7

docs/scenarios.md tells the format. The exit status is 0 if all passed, 1 if one failed,
2 for a wrong command line or a scenario that is no good.
)";

constexpr const char* kReplayFooter =
    R"(FILE is what --record wrote, or a capture of a real unit: pcap or pcapng of the bus
that it is on (an interface usbmonN), with whole packets. The unit in it is told by
its identity or its transfers of 1024 bytes, or by --device. COMMAND sees a terminal
that answers as the recorded one did; the first thing that COMMAND sends otherwise
than recorded is reported on standard error, and then there are no more answers.

The exit status is 1 when COMMAND sent something else, or did not send all of it;
otherwise as that of exec.)";

usb::UsbId DefaultUsbId() {
  return {static_cast<std::uint16_t>(kUsbIdentities[0].vid),
          static_cast<std::uint16_t>(kUsbIdentities[0].pid)};
}

std::string UsbIdText(usb::UsbId id) {
  char text[16];
  std::snprintf(text, sizeof text, "%04x:%04x", unsigned{id.vendor}, unsigned{id.product});
  return text;
}

// The text has been checked by UsbIdProblem.
usb::UsbId ParseUsbId(const std::string& text) {
  const auto hex = [](const std::string& part) {
    return static_cast<std::uint16_t>(std::stoul(part, nullptr, 16));
  };
  const std::size_t colon = text.find(':');
  return {hex(text.substr(0, colon)), hex(text.substr(colon + 1))};
}

std::string UsbIdProblem(const std::string& text) {
  static const std::regex form("[0-9a-fA-F]{1,4}:[0-9a-fA-F]{1,4}");
  return std::regex_match(text, form) ? "" : "'" + text + "' is not VENDOR:PRODUCT in hexadecimal";
}

std::string HostileProblem(const std::string& text) {
  try {
    return text.empty() ? "is empty" : (static_cast<void>(faults::ParseRates(text)), "");
  } catch (const std::exception& error) {
    return error.what();
  }
}

// Faults are a file's, or random ones at given rates.
bool AreRates(const std::string& faults) {
  return faults.find('=') != std::string::npos && !std::filesystem::exists(faults);
}

std::string FaultsProblem(const std::string& faults) {
  return AreRates(faults) ? HostileProblem(faults) : CLI::ExistingFile(faults);
}

std::string UsbIpProblem(const std::string& text) {
  static const std::regex form("[0-9]{0,5}");
  const bool good = std::regex_match(text, form) && (text.empty() || std::stoi(text) <= 65535);
  return good ? "" : "'" + text + "' is not a port";
}

// The options as they stand on a command line.
struct RawOptions {
  TerminalOptions terminal;  // those that need no more than their text
  std::string vid_pid = UsbIdText(DefaultUsbId());
  bool no_usb = false;
  int serial = 0;
  std::string faults;
  std::string hostile;
  std::uint16_t page_port = 0;
  std::string trace;
  std::string usbip_port;
  RawRecording recording;
  int control_fd = -1;
  CheckCommand check;
};

std::string Absolute(const std::string& path) {
  return path.empty() ? path : std::filesystem::absolute(path).string();
}

// Not every command has every option.
bool Given(const CLI::App& chosen, const char* name) {
  const CLI::Option* option = chosen.get_option_no_throw(name);
  return option != nullptr && option->count() > 0;
}

TerminalOptions Interpret(const RawOptions& raw, const CLI::App& chosen) {
  TerminalOptions options = raw.terminal;
  if (!raw.no_usb) options.usb = ParseUsbId(raw.vid_pid);
  if (raw.serial > 0) options.serial_port = raw.serial;
  if (!AreRates(raw.faults)) options.faults_file = Absolute(raw.faults);
  const std::string& rates = AreRates(raw.faults) ? raw.faults : raw.hostile;
  if (!rates.empty()) options.hostile = faults::ParseRates(rates);
  if (web::HasCustomerPage() && Given(chosen, "--ui")) options.page_port = raw.page_port;
  if (Given(chosen, "--trace"))
    options.trace = raw.trace.empty() || raw.trace == "-" ? "-" : Absolute(raw.trace);
  options.record = InterpretRecord(raw.recording);
  options.replay = InterpretReplay(raw.recording);
  return options;
}

ServeOptions InterpretServe(const RawOptions& raw, const CLI::App& serve, TerminalOptions terminal) {
  std::optional<std::uint16_t> port;
  if (serve.count("--usbip") > 0)
    port = raw.usbip_port.empty() ? kUsbIpPort : static_cast<std::uint16_t>(std::stoi(raw.usbip_port));
  return {std::move(terminal), port};
}

// The command may run in another directory.
CLI::Option* AddPath(CLI::App& app, const char* name, std::string& target, const char* text) {
  return app.add_option_function<std::string>(
      name, [&target](const std::string& path) { target = Absolute(path); }, text);
}

void AddPageOption(CLI::App& app, RawOptions& raw, CLI::Option* customer) {
  app.add_option("--ui", raw.page_port,
                 "You are the customer, on a web page whose address is printed; at PORT, or a free one")
      ->type_name("[PORT]")
      ->expected(0, 1)
      ->excludes(customer);
}

void AddCommonOptions(CLI::App& app, RawOptions& raw) {
  TerminalOptions& terminal = raw.terminal;
  CLI::Option* customer =
      AddPath(app, "--customer", terminal.customer_file, "JSON script of the person at the terminal")
          ->type_name("FILE")
          ->check(CLI::ExistingFile);
  if (web::HasCustomerPage()) AddPageOption(app, raw, customer);
  AddPath(app, "--storage", terminal.storage_dir,
          "Keep the terminal's files in DIR (default: a temporary directory)")
      ->type_name("DIR");
  AddPath(app, "--keys", terminal.keys_dir,
          "Keep the PIN pad's key pairs in DIR (default: new ones each time)")
      ->type_name("DIR");
  app.add_option("--faults", raw.faults,
                 "What goes wrong: with files, by a JSON script, or as with --hostile")
      ->type_name("FILE|RATES")
      ->check(CLI::Validator(FaultsProblem, ""));
  app.add_option("--hostile", raw.hostile, "Inject random faults, e.g. seed=7,drop=1")
      ->type_name("RATES")
      ->check(CLI::Validator(HostileProblem, ""));
  app.add_flag_callback(
      "--no-tzg", [&terminal] { terminal.tzg = false; }, "A terminal that does not know TZG signing");
  app.add_option("--trace", raw.trace, "Print each command and answer, on standard error or to =FILE")
      ->type_name("[FILE]")
      ->expected(0, 1);
  AddRecordOptions(app, raw.recording);
}

void AddSerialOption(CLI::App& app, RawOptions& raw) {
  app.add_option("--serial", raw.serial, "A terminal at serial port N too, which is /dev/ttyS(N-1)")
      ->type_name("N")
      ->check(CLI::Range(1, 256));
}

void AddUsbIdOption(CLI::App& app, RawOptions& raw) {
  app.add_option("--vid-pid", raw.vid_pid, "USB identity in hexadecimal")
      ->type_name("V:P")
      ->check(CLI::Validator(UsbIdProblem, ""))
      ->capture_default_str();
}

CLI::Option* AddPtyOption(CLI::App& app, bool& pty) {
  return app.add_flag("--pty", pty,
                      "The terminal at a pseudo-terminal instead, at the path in GWQ_TERMINAL_SERIAL");
}

// After that of the pseudo-terminal.
CLI::Option* AddKernelOption(CLI::App& app, bool& usbip) {
  return app
      .add_flag("--usbip", usbip,
                "The terminal on USB of this machine's kernel, for any program; as root, with vhci-hcd")
      ->excludes("--pty");
}

void AddLinkOptions(CLI::App& app, RawOptions& raw) {
  AddUsbIdOption(app, raw);
  AddSerialOption(app, raw);
  app.add_flag("--no-usb", raw.no_usb, "No terminal on USB");
  AddPtyOption(app, raw.terminal.pty)->excludes("--serial");
  AddKernelOption(app, raw.terminal.usbip)->excludes("--serial")->excludes("--no-usb");
}

void AddServeOptions(CLI::App& app, RawOptions& raw) {
  app.add_option(
         "--usbip", raw.usbip_port,
         "A USB device of the whole machine, by USB/IP on 127.0.0.1; at PORT, or 3240; 0 is a free one")
      ->type_name("[PORT]")
      ->expected(0, 1)
      ->check(CLI::Validator(UsbIpProblem, ""));
  app.add_flag("--pty", raw.terminal.pty, "A terminal at a pseudo-terminal");
  AddUsbIdOption(app, raw);
}

void AddCheckOptions(CLI::App& app, CheckCommand& command) {
  CheckRequest& check = command.check;
  app.add_option("SCENARIO", check.scenarios, "Files, or names of those that come with the program")
      ->type_name("");
  app.add_flag("--list", command.list, "List those that come with the program");
  AddPtyOption(app, check.pty);
  AddKernelOption(app, check.usbip);
  app.add_option("--junit", check.junit_file, "Write the results to FILE too, as JUnit does")
      ->type_name("FILE");
  app.add_option("--timeout", check.time_limit_s, "End the command after this time, whatever a scenario says")
      ->type_name("SECONDS")
      ->check(CLI::Range(1, 3600));
  app.footer(kCheckFooter);
}

struct Parser {
  RawOptions raw;
  CLI::App app{"A virtual customer terminal."};
  CLI::App* exec = nullptr;
  CLI::App* pty = nullptr;
  CLI::App* replay = nullptr;
  CLI::App* serve = nullptr;
  CLI::App* server = nullptr;
  CLI::App* check = nullptr;

  Parser();
  // Throws CLI::ValidationError when there is a command without need, or none.
  void CheckCommandGiven(bool given) const;
  [[nodiscard]] Request Result(std::vector<std::string> command) const;
};

Parser::Parser() {
  app.name("gwq-terminal");
  app.set_version_flag("--version", std::string("gwq-terminal ") + GWQ_TERMINAL_VERSION);
  app.require_subcommand(1);
  app.failure_message([](const CLI::App* failed, const CLI::Error& error) {
    return "gwq-terminal: " + CLI::FailureMessage::simple(failed, error);
  });

  exec =
      app.add_subcommand("exec", "Run a command that sees the terminal: exec [OPTIONS] -- COMMAND [ARGS...]");
  exec->footer(kExecFooter);
  AddLinkOptions(*exec, raw);
  AddCommonOptions(*exec, raw);

  pty = app.add_subcommand("pty", "Serve a pseudo-terminal, whose path is printed, until interrupted");
  AddCommonOptions(*pty, raw);

  replay = app.add_subcommand(
      "replay", "Run a command that sees a recorded terminal: replay [OPTIONS] FILE -- COMMAND [ARGS...]");
  replay->footer(kReplayFooter);
  AddReplayFile(*replay, raw.recording)->required();
  AddReplayOptions(*replay, raw.recording);
  AddSerialOption(*replay, raw);
  AddPtyOption(*replay, raw.terminal.pty)->excludes("--serial");
  AddKernelOption(*replay, raw.terminal.usbip)->excludes("--serial");
  AddRecordOptions(*replay, raw.recording);

  check = app.add_subcommand("check",
                             "Test a command in scenarios: check [OPTIONS] SCENARIO... -- COMMAND [ARGS...]");
  AddCheckOptions(*check, raw.check);

  serve = app.add_subcommand("serve", "Serve USB/IP, a pseudo-terminal or both until interrupted");
  serve->footer(kServeFooter);
  AddServeOptions(*serve, raw);
  AddCommonOptions(*serve, raw);

  server = app.add_subcommand("server", "")->group("");
  server->add_option("--control-fd", raw.control_fd)->required();
}

void Parser::CheckCommandGiven(bool given) const {
  if (AreRates(raw.faults) && !raw.hostile.empty())
    throw CLI::ValidationError("--faults and --hostile both name random faults: leave one out");
  const bool checks = check->parsed() && !raw.check.list;
  if (checks && raw.check.check.scenarios.empty())
    throw CLI::ValidationError("no scenario: name one or more before -- (--list lists those that are there)");
  if (check->parsed() && raw.check.list && !raw.check.check.scenarios.empty())
    throw CLI::ValidationError("--list stands alone");
  if ((exec->parsed() || replay->parsed() || checks) == given) return;
  throw CLI::ValidationError(given ? "a command needs exec, check or replay"
                                   : "no command: write it after --");
}

Request Parser::Result(std::vector<std::string> command) const {
  const CLI::App* chosen = app.get_subcommands().front();
  if (chosen == check) {
    CheckCommand request = raw.check;
    request.check.usb = ParseUsbId(raw.vid_pid);
    request.check.command = std::move(command);
    return request;
  }
  if (chosen == server) return ServerRequest{raw.control_fd};
  const TerminalOptions options = Interpret(raw, *chosen);
  if (chosen == pty) return PtyRequest{options};
  if (chosen == serve) return InterpretServe(raw, *serve, options);
  return ExecOptions{options.pty ? OnPseudoTerminal(options) : options, std::move(command)};
}

// What stands after the first "--" is the command's affair, not the parser's.
std::vector<std::string> CutCommand(std::vector<std::string>& arguments) {
  const auto mark = std::find(arguments.begin(), arguments.end(), "--");
  if (mark == arguments.end()) return {};
  std::vector<std::string> command(mark + 1, arguments.end());
  arguments.erase(mark, arguments.end());
  return command;
}

}  // namespace

Request ParseArguments(int argc, const char* const* argv) {
  std::vector<std::string> arguments(argv + std::min(argc, 1), argv + argc);
  const std::vector<std::string> command = CutCommand(arguments);
  std::reverse(arguments.begin(), arguments.end());  // as CLI11 wants a vector
  Parser parser;
  try {
    parser.app.parse(arguments);
    parser.CheckCommandGiven(!command.empty());
    if (parser.serve->parsed() && parser.serve->count("--usbip") == 0 && !parser.raw.terminal.pty)
      throw CLI::ValidationError("nothing to serve: give --usbip, --pty or both");
  } catch (const CLI::ParseError& error) {
    return ExitRequest{parser.app.exit(error) == 0 ? 0 : kUsageError};
  }
  return parser.Result(command);
}

}  // namespace gwq::terminal::app
