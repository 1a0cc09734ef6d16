#include "cli/arguments.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <regex>
#include <string_view>

#include "cli/recording_arguments.h"
#include "frame/usb_ids.h"
#include "web/customer_page.h"

namespace gwq::terminal {
namespace {

constexpr int kUsageError = 2;

constexpr const char* kExecFooter =
    R"(COMMAND and its children see the terminal as a USB device. With --serial there is a
second terminal, with keys and a customer of its own, at the serial port; --no-usb
leaves the USB one out. COMMAND finds this program's process id in GWQ_TERMINAL_PID:
SIGUSR1 to it unplugs the USB terminal, SIGUSR2 plugs it in again.

The exit status is COMMAND's, or 128 and the signal's number if it died by a signal;
127 if it was not found, 126 if it could not be started, 2 for a wrong command line,
1 if the terminal failed.)";

constexpr const char* kReplayFooter =
    R"(FILE is what --record wrote, or a capture of a real unit: pcap or pcapng of the bus
that it is on (an interface usbmonN), with whole packets. The unit in it is told by
its identity or its transfers of 1024 bytes, or by --device. COMMAND sees a terminal
that answers as the recorded one did; the first thing that COMMAND sends otherwise
than recorded is reported on standard error, and then there are no more answers.

The exit status is 1 when COMMAND sent something else, or did not send all of it;
otherwise as that of exec.)";

UsbId DefaultUsbId() {
  return {static_cast<std::uint16_t>(kUsbIdentities[0].vid),
          static_cast<std::uint16_t>(kUsbIdentities[0].pid)};
}

std::string UsbIdText(UsbId id) {
  char text[16];
  std::snprintf(text, sizeof text, "%04x:%04x", unsigned{id.vendor}, unsigned{id.product});
  return text;
}

// The text has been checked by UsbIdProblem.
UsbId ParseUsbId(const std::string& text) {
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
    return text.empty() ? "is empty" : (static_cast<void>(ParseRates(text)), "");
  } catch (const std::exception& error) {
    return error.what();
  }
}

// The options as they stand on a command line.
struct RawOptions {
  std::string vid_pid = UsbIdText(DefaultUsbId());
  bool no_usb = false;
  int serial = 0;
  std::string customer;
  std::string storage;
  std::string keys;
  std::string faults;
  std::string hostile;
  bool no_tzg = false;
  std::uint16_t page_port = 0;
  std::string trace;
  RawRecording recording;
  int control_fd = -1;
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
  TerminalOptions options;
  if (!raw.no_usb) options.usb = ParseUsbId(raw.vid_pid);
  if (raw.serial > 0) options.serial_port = raw.serial;
  options.customer_file = Absolute(raw.customer);
  options.storage_dir = Absolute(raw.storage);
  options.keys_dir = Absolute(raw.keys);
  options.faults_file = Absolute(raw.faults);
  if (!raw.hostile.empty()) options.hostile = ParseRates(raw.hostile);
  options.tzg = !raw.no_tzg;
  if (HasCustomerPage() && Given(chosen, "--ui")) options.page_port = raw.page_port;
  if (Given(chosen, "--trace"))
    options.trace = raw.trace.empty() || raw.trace == "-" ? "-" : Absolute(raw.trace);
  options.record = InterpretRecord(raw.recording);
  options.replay = InterpretReplay(raw.recording);
  return options;
}

void AddPageOption(CLI::App& app, RawOptions& raw, CLI::Option* customer) {
  app.add_option("--ui", raw.page_port,
                 "You are the customer, on a web page whose address is printed; at PORT, or a free one")
      ->type_name("[PORT]")
      ->expected(0, 1)
      ->excludes(customer);
}

void AddCommonOptions(CLI::App& app, RawOptions& raw) {
  CLI::Option* customer =
      app.add_option("--customer", raw.customer, "JSON script of the person at the terminal")
          ->type_name("FILE")
          ->check(CLI::ExistingFile);
  if (HasCustomerPage()) AddPageOption(app, raw, customer);
  app.add_option("--storage", raw.storage, "Directory of the terminal's files; else they are gone at the end")
      ->type_name("DIR");
  app.add_option("--keys", raw.keys, "Directory of the PIN pad's key pairs; else they are new each time")
      ->type_name("DIR");
  app.add_option("--faults", raw.faults, "JSON script of what goes wrong with files")
      ->type_name("FILE")
      ->check(CLI::ExistingFile);
  app.add_option("--hostile", raw.hostile, "A terminal that mangles answers and transfers, such as seed=7")
      ->type_name("RATES")
      ->check(CLI::Validator(HostileProblem, ""));
  app.add_flag("--no-tzg", raw.no_tzg, "A terminal that does not know TZG signing");
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

void AddLinkOptions(CLI::App& app, RawOptions& raw) {
  app.add_option("--vid-pid", raw.vid_pid, "USB identity in hexadecimal")
      ->type_name("V:P")
      ->check(CLI::Validator(UsbIdProblem, ""))
      ->capture_default_str();
  AddSerialOption(app, raw);
  app.add_flag("--no-usb", raw.no_usb, "No terminal on USB");
}

struct Parser {
  RawOptions raw;
  CLI::App app{"A virtual customer terminal."};
  CLI::App* exec = nullptr;
  CLI::App* pty = nullptr;
  CLI::App* replay = nullptr;
  CLI::App* serve = nullptr;

  Parser();
  [[nodiscard]] Request Result(std::vector<std::string> command) const;
};

Parser::Parser() {
  app.name("gwq-terminal");
  app.set_version_flag("--version", std::string("gwq-terminal ") + GWQ_TERMINAL_VERSION);
  app.require_subcommand(1);

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
  AddReplayFile(*replay, "FILE", raw.recording)->required();
  AddReplayOptions(*replay, raw.recording);
  AddSerialOption(*replay, raw);
  AddRecordOptions(*replay, raw.recording);

  serve = app.add_subcommand("serve", "")->group("");
  serve->add_option("--control-fd", raw.control_fd)->required();
  AddLinkOptions(*serve, raw);
  AddCommonOptions(*serve, raw);
  AddReplayFile(*serve, "--replay", raw.recording);
  AddReplayOptions(*serve, raw.recording);
}

Request Parser::Result(std::vector<std::string> command) const {
  const CLI::App* chosen = app.get_subcommands().front();
  const TerminalOptions options = Interpret(raw, *chosen);
  if (chosen == pty) return PtyRequest{options};
  if (chosen == serve) return ServeRequest{options, raw.control_fd};
  return ExecOptions{options, std::move(command), ServerArguments};
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
    if ((parser.exec->parsed() || parser.replay->parsed()) == command.empty())
      throw CLI::ValidationError(command.empty() ? "no command: write it after --"
                                                 : "a command needs exec or replay");
  } catch (const CLI::ParseError& error) {
    return ExitRequest{parser.app.exit(error) == 0 ? 0 : kUsageError};
  }
  return parser.Result(command);
}

std::vector<std::string> ServerArguments(const TerminalOptions& options, int control_fd) {
  std::vector<std::string> arguments = {std::filesystem::read_symlink("/proc/self/exe").string(), "serve",
                                        "--control-fd=" + std::to_string(control_fd)};
  arguments.push_back(options.usb ? "--vid-pid=" + UsbIdText(*options.usb) : "--no-usb");
  if (options.serial_port) arguments.push_back("--serial=" + std::to_string(*options.serial_port));
  if (!options.customer_file.empty()) arguments.push_back("--customer=" + options.customer_file);
  if (!options.storage_dir.empty()) arguments.push_back("--storage=" + options.storage_dir);
  if (!options.keys_dir.empty()) arguments.push_back("--keys=" + options.keys_dir);
  if (!options.faults_file.empty()) arguments.push_back("--faults=" + options.faults_file);
  if (options.hostile) arguments.push_back("--hostile=" + RatesText(*options.hostile));
  if (!options.tzg) arguments.emplace_back("--no-tzg");
  if (options.page_port) arguments.push_back("--ui=" + std::to_string(*options.page_port));
  if (options.trace) arguments.push_back("--trace=" + *options.trace);
  AppendRecording(arguments, options.record, options.replay);
  return arguments;
}

}  // namespace gwq::terminal
