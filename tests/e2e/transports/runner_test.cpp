// SPDX-License-Identifier: MIT
// The command line of gwq-terminal, and what it does for its command.
#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <iterator>

#include "child.h"

namespace gwq::test {
namespace {

struct Outcome {
  int status;
  std::string output;
  std::string errors;
};

Outcome OutcomeOf(const std::vector<std::string>& arguments, const std::vector<std::string>& environment) {
  Child child(arguments, environment);
  Outcome outcome;
  outcome.output = child.ReadRest();
  outcome.status = child.Wait();
  outcome.errors = child.Errors();
  return outcome;
}

Outcome RunTerminal(std::vector<std::string> arguments, const std::vector<std::string>& environment = {}) {
  arguments.insert(arguments.begin(), GWQ_TERMINAL);
  return OutcomeOf(arguments, environment);
}

Outcome RunShell(const std::string& script, const std::vector<std::string>& environment = {}) {
  return RunTerminal({"exec", "--", "/bin/sh", "-c", script}, environment);
}

TEST(Runner, PassesTheExitStatusOfTheCommand) {
  EXPECT_EQ(RunShell("exit 0").status, 0);
  EXPECT_EQ(RunShell("exit 7").status, 7);
}

TEST(Runner, TellsTheSignalThatEndedTheCommand) {
  EXPECT_EQ(RunShell("kill -KILL $$").status, 128 + SIGKILL);
  EXPECT_EQ(RunShell("kill -SEGV $$").status, 128 + SIGSEGV);
}

TEST(Runner, EndsWith127WhenTheCommandIsNotFound) {
  const Outcome outcome = RunTerminal({"exec", "--", "no-such-command"});
  EXPECT_EQ(outcome.status, 127);
  EXPECT_NE(outcome.errors.find("no-such-command"), std::string::npos);
}

TEST(Runner, EndsWith126WhenTheCommandCannotBeRun) {
  EXPECT_EQ(RunTerminal({"exec", "--", "/etc/passwd"}).status, 126);
}

TEST(Runner, EndsWith2AndAMessageForAWrongCommandLine) {
  const std::vector<std::vector<std::string>> wrong = {{},
                                                       {"dance"},
                                                       {"exec"},
                                                       {"exec", "--"},
                                                       {"exec", "true"},
                                                       {"exec", "--vid-pid", "1209", "--", "true"},
                                                       {"exec", "--vid-pid", "12091:1", "--", "true"},
                                                       {"exec", "--serial", "0", "--", "true"},
                                                       {"exec", "--customer", "/no/such/file", "--", "true"},
                                                       {"pty", "--", "true"},
                                                       {"pty", "--serial", "1"}};
  for (const auto& arguments : wrong) {
    const Outcome outcome = RunTerminal(arguments);
    EXPECT_EQ(outcome.status, 2) << testing::PrintToString(arguments);
    EXPECT_TRUE(outcome.errors.starts_with("gwq-terminal: ")) << outcome.errors;
    EXPECT_EQ(outcome.output, "") << testing::PrintToString(arguments);
  }
}

TEST(Runner, EndsWith1WhenTheCustomerFileIsNoGood) {
  const TempDir dir;
  const std::string file = dir.Path() + "/customer.json";
  std::ofstream(file) << "{";
  const Outcome outcome = RunTerminal({"exec", "--customer", file, "--", "true"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_NE(outcome.errors.find("customer.json"), std::string::npos);
}

TEST(Runner, PrintsHelpAndVersion) {
  EXPECT_EQ(RunTerminal({"--version"}).status, 0);
  EXPECT_EQ(RunTerminal({"--version"}).output, "gwq-terminal " GWQ_VERSION "\n");
  const Outcome help = RunTerminal({"exec", "--help"});
  EXPECT_EQ(help.status, 0);
  for (const char* option :
       {"--vid-pid", "--serial", "--no-usb", "--customer", "--storage", "--keys", "--faults", "--trace"})
    EXPECT_NE(help.output.find(option), std::string::npos) << option;
}

TEST(Runner, LeavesArgumentsBehindTheMarkToTheCommand) {
  const Outcome outcome = RunTerminal({"exec", "--", "echo", "--help", "--", "--trace"});
  EXPECT_EQ(outcome.output, "--help -- --trace\n");
}

TEST(Runner, KeepsWhatWasPreloadedInFront) {
  const Outcome outcome = RunShell("echo $LD_PRELOAD", {"LD_PRELOAD=libdl.so.2"});
  EXPECT_EQ(outcome.output, "libdl.so.2:libumockdev-preload.so.0\n");
}

TEST(Runner, GivesTheCommandItsOwnSignalMaskAndTemporaryDirectory) {
  const Outcome outcome = RunShell("grep SigBlk /proc/self/status; echo $TMPDIR", {"TMPDIR=/tmp"});
  EXPECT_EQ(outcome.output, "SigBlk:\t0000000000000000\n/tmp\n");
}

TEST(Runner, LeavesSignalsIgnoredThatWere) {
  const Outcome outcome = OutcomeOf(
      {"/bin/sh", "-c", "trap '' HUP INT TERM; exec " GWQ_TERMINAL " exec -- grep SigIgn /proc/self/status"},
      {});
  EXPECT_EQ(outcome.output, "SigIgn:\t0000000000004003\n");
}

TEST(Runner, TellsTheCommandThePathOfItsSerialPort) {
  const Outcome outcome =
      RunTerminal({"exec", "--serial", "78", "--", "/bin/sh", "-c", "echo $GWQ_TERMINAL_SERIAL"});
  EXPECT_EQ(outcome.output, "/dev/ttyS77\n");
}

TEST(Runner, CanLeaveTheUsbTerminalOut) {
  EXPECT_EQ(RunShell("test -e /dev/bus/usb/001/005").status, 0);
  EXPECT_EQ(RunTerminal({"exec", "--no-usb", "--", "test", "-e", "/dev/bus/usb/001/005"}).status, 1);
}

TEST(Runner, WorksInsideItself) {
  EXPECT_EQ(RunTerminal(
                {"exec", "--no-usb", "--", GWQ_TERMINAL, "exec", "--", "test", "-e", "/dev/bus/usb/001/005"})
                .status,
            0);
}

TEST(Runner, FallsBackToTmpWhenTheTemporaryDirectoryHasALongPath) {
  const TempDir dir;
  const std::string deep = dir.Path() + "/" + std::string(60, 'd');
  std::filesystem::create_directory(deep);
  EXPECT_EQ(RunShell("test -e /dev/bus/usb/001/005", {"TMPDIR=" + deep}).status, 0);
  EXPECT_TRUE(std::filesystem::is_empty(deep));
}

TEST(Runner, TracesWhatPassesToAFile) {
  const TempDir dir;
  const std::string trace = dir.Path() + "/trace";
  const Outcome outcome =
      RunTerminal({"exec", "--serial", "78", "--trace=" + trace, "--", "/bin/sh", "-c",
                   "printf '\\033[0GETVERSION' >/dev/ttyS77; head -c 4 /dev/ttyS77 >/dev/null"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.errors, "");
  std::ifstream file(trace);
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  EXPECT_NE(text.find("host     > GETVERSION"), std::string::npos) << text;
  EXPECT_NE(text.find("terminal > "), std::string::npos) << text;
}

TEST(Runner, KeepsTheFilesOfAStorageDirectory) {
  const TempDir dir;
  const std::string storage = dir.Path() + "/storage";
  EXPECT_EQ(RunTerminal({"exec", "--storage", storage, "--", "true"}).status, 0);
  for (const char* file : {"/tmp/hw.png", "/tmp/hw.txt", "/tmp/capture.png"})
    EXPECT_TRUE(std::filesystem::is_regular_file(storage + file)) << file;
}

TEST(Runner, MakesTheDirectoryOfTheKeyPairsAndRefusesABadOne) {
  const TempDir dir;
  const std::string keys = dir.Path() + "/keys";
  EXPECT_EQ(RunTerminal({"exec", "--serial", "78", "--keys", keys, "--", "true"}).status, 0);
  EXPECT_TRUE(std::filesystem::is_directory(keys));
  std::ofstream(keys + "/sm2.pem") << "no key";
  const Outcome outcome = RunTerminal({"exec", "--keys", keys, "--", "true"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_NE(outcome.errors.find(keys + "/sm2.pem does not hold the key pair of its name"), std::string::npos)
      << outcome.errors;
}

TEST(Runner, FailsWhenTheStorageDirectoryOrTheFaultsAreNoGood) {
  const TempDir dir;
  const std::string file = dir.Path() + "/file";
  std::ofstream(file) << R"({"refuse": ["nothing"]})";
  for (const char* option : {"--storage", "--faults"}) {
    const Outcome outcome = RunTerminal({"exec", option, file, "--", "true"});
    EXPECT_EQ(outcome.status, 1) << option;
    EXPECT_NE(outcome.errors.find(file), std::string::npos) << outcome.errors;
  }
}

// Starts after these commands of the shell.
Outcome RunAfter(const std::string& commands, std::vector<std::string> prefix = {}) {
  prefix.insert(prefix.end(), {"/bin/sh", "-c", commands + "; exec " GWQ_TERMINAL " exec -- true"});
  return OutcomeOf(prefix, {});
}

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

TEST(Runner, TellsThatItHasTooFewDescriptors) {
  if (std::string(GWQ_SANITIZERS).find("undefined") != std::string::npos)
    GTEST_SKIP() << "this sanitizer opens pipes itself, and takes their failure for an error of the program";
  bool works = false;
  for (int limit = 4; limit <= 48; ++limit) {
    const Outcome outcome = RunAfter("ulimit -n " + std::to_string(limit));
    works = outcome.status == 0;
    if (works) continue;
    if (Contains(outcome.errors, "loading shared libraries")) continue;  // not yet the program itself
    EXPECT_TRUE(outcome.errors.starts_with("gwq-terminal: ")) << limit << ": " << outcome.errors;
    EXPECT_TRUE(Contains(outcome.errors, "Too many open files")) << limit << ": " << outcome.errors;
    EXPECT_TRUE(Contains(outcome.errors, "ulimit -n")) << limit << ": " << outcome.errors;
  }
  EXPECT_TRUE(works);
}

// A full disk is made in a namespace of its own, where the system lets the user have one.
TEST(Runner, TellsThatTheDiskIsFull) {
  const std::vector<std::string> in_namespace = {"/usr/bin/unshare", "--user", "--map-root-user", "--mount"};
  std::vector<std::string> attempt = in_namespace;
  attempt.insert(attempt.end(), {"mount", "-t", "tmpfs", "none", "/mnt"});
  if (OutcomeOf(attempt, {}).status != 0) GTEST_SKIP() << "no file system of its own can be mounted here";
  for (const char* inodes : {"1", "2", "3", "4", "6", "9"}) {
    const Outcome outcome =
        RunAfter("mount -t tmpfs -o nr_inodes=" + std::string(inodes) + " none /mnt; export TMPDIR=/mnt",
                 in_namespace);
    EXPECT_EQ(outcome.status, 1) << inodes;
    EXPECT_TRUE(outcome.errors.starts_with("gwq-terminal: ")) << inodes << ": " << outcome.errors;
    EXPECT_TRUE(Contains(outcome.errors, "No space left on device")) << inodes << ": " << outcome.errors;
    EXPECT_TRUE(Contains(outcome.errors, "TMPDIR")) << inodes << ": " << outcome.errors;
  }
}

TEST(Runner, TellsThatThePreloadLibraryIsMissing) {
  const TempDir dir;
  std::ofstream(dir.Path() + "/libumockdev-preload.so.0") << "no library";
  const Outcome outcome = RunTerminal({"exec", "--", "true"}, {"LD_LIBRARY_PATH=" + dir.Path()});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_TRUE(outcome.errors.starts_with("gwq-terminal: ")) << outcome.errors;
  EXPECT_TRUE(Contains(outcome.errors, "libumockdev-preload.so.0")) << outcome.errors;
  EXPECT_TRUE(Contains(outcome.errors, "install umockdev")) << outcome.errors;
}

TEST(Runner, TellsALongReasonInPart) {
  const TempDir dir;
  const std::string file = dir.Path() + "/customer.json";
  std::ofstream(file) << "{\"" << std::string(300'000, 'x') << "\": 1}";
  const Outcome outcome = RunTerminal({"exec", "--customer", file, "--", "true"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_TRUE(outcome.errors.starts_with("gwq-terminal: ")) << outcome.errors.substr(0, 200);
  EXPECT_TRUE(Contains(outcome.errors, "xxxx")) << outcome.errors.substr(0, 200);
}

TEST(Runner, TellsThatThePortOfThePageIsTaken) {
  if (!Contains(RunTerminal({"pty", "--help"}).output, "--ui")) GTEST_SKIP() << "built without the page";
  Child first({GWQ_TERMINAL, "pty", "--ui", "0"});
  EXPECT_NE(first.ReadLine(), "");
  const std::string errors = first.Errors();
  const std::size_t begin = errors.find("127.0.0.1:") + 10;
  const std::string port = errors.substr(begin, errors.find('/', begin) - begin);
  const Outcome outcome = RunTerminal({"exec", "--ui", port, "--", "true"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_TRUE(Contains(outcome.errors, "port " + port)) << outcome.errors;
  EXPECT_TRUE(Contains(outcome.errors, "choose another port")) << outcome.errors;
}

TEST(Runner, TakesRandomFaultsByEitherName) {
  for (const char* option : {"--faults", "--hostile"}) {
    const Outcome outcome = RunTerminal({"exec", option, "seed=7,drop=1", "--", "true"});
    EXPECT_EQ(outcome.status, 0) << option;
    EXPECT_NE(outcome.errors.find("hostile seed=7,drop=1,delay=0,"), std::string::npos) << outcome.errors;
    EXPECT_EQ(RunTerminal({"exec", option, "seed=7,drip=1", "--", "true"}).status, 2) << option;
  }
  EXPECT_EQ(RunTerminal({"exec", "--faults", "seed=7", "--hostile", "seed=8", "--", "true"}).status, 2);
  EXPECT_EQ(RunTerminal({"exec", "--faults", "/nowhere/faults.json", "--", "true"}).status, 2);
}

}  // namespace
}  // namespace gwq::test
