// SPDX-License-Identifier: MIT
// However a run ends, nothing stays: no files, no processes.
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <memory>
#include <string_view>

#include "child.h"

namespace gwq::test {
namespace {

// The command tells its process id and then waits for its end.
constexpr const char* kWaitingCommand = "echo $$; exec sleep 1000";

class Cleanup : public testing::Test {
 protected:
  static std::vector<std::string> Exec(const std::string& script) {
    return {GWQ_TERMINAL, "exec", "--serial", "78", "--", "/bin/sh", "-c", script};
  }
  std::vector<std::string> Environment() { return {"TMPDIR=" + dir_.Path()}; }

  static pid_t ServerOf(pid_t supervisor) {
    for (const pid_t pid : ChildrenOf(supervisor)) {
      if (CommandLineOf(pid).find("--control-fd") != std::string::npos) return pid;
    }
    return -1;
  }
  // Waits too, for a process that was told to clean up alone takes a moment.
  void ExpectNothingLeft(pid_t command, pid_t server) {
    EXPECT_TRUE(Soon([&] { return !IsRunning(command); })) << "the command is left";
    EXPECT_TRUE(Soon([&] { return !IsRunning(server); })) << "the server is left";
    EXPECT_TRUE(Soon([&] { return dir_.IsEmpty(); })) << "files are left";
  }

  TempDir dir_;
};

TEST_F(Cleanup, AfterANormalExit) {
  Child child(Exec("ls -A $TMPDIR | wc -l"), Environment());
  EXPECT_EQ(child.ReadLine(), "1");  // there was something to remove
  EXPECT_EQ(child.Wait(), 0);
  EXPECT_TRUE(dir_.IsEmpty());
}

TEST_F(Cleanup, AfterACommandThatCouldNotBeStarted) {
  Child child({GWQ_TERMINAL, "exec", "--", "no-such-command"}, Environment());
  EXPECT_EQ(child.Wait(), 127);
  EXPECT_TRUE(dir_.IsEmpty());
}

class CleanupAfterSignal : public Cleanup, public testing::WithParamInterface<int> {};

TEST_P(CleanupAfterSignal, ToGwqTerminal) {
  Child child(Exec(kWaitingCommand), Environment());
  const auto command = static_cast<pid_t>(std::stol(child.ReadLine()));
  const pid_t server = ServerOf(child.Pid());
  ASSERT_GT(server, 0);
  child.Signal(GetParam());
  EXPECT_EQ(child.Wait(), 128 + GetParam());
  ExpectNothingLeft(command, server);
}

TEST_F(Cleanup, OfAKilledTerminalSaysNothing) {
  Child child(Exec(kWaitingCommand), Environment());
  const auto command = static_cast<pid_t>(std::stol(child.ReadLine()));
  const pid_t server = ServerOf(child.Pid());
  ASSERT_GT(server, 0);
  child.Signal(SIGKILL);
  EXPECT_EQ(child.Wait(), 128 + SIGKILL);
  ExpectNothingLeft(command, server);
  EXPECT_EQ(child.Errors(), "");
}

// Nobody is left who could clean up, but the command ends and the next start removes the files.
TEST_F(Cleanup, AfterAllOfTheTerminalWasKilled) {
  Child child(Exec(kWaitingCommand), Environment());
  const auto command = static_cast<pid_t>(std::stol(child.ReadLine()));
  const pid_t server = ServerOf(child.Pid());
  ASSERT_GT(server, 0);
  kill(server, SIGSTOP);
  child.Signal(SIGKILL);
  EXPECT_EQ(child.Wait(), 128 + SIGKILL);
  kill(server, SIGKILL);
  EXPECT_TRUE(Soon([&] { return !IsRunning(command) && !IsRunning(server); })) << "a process is left";
  EXPECT_FALSE(dir_.IsEmpty());
  // The lock of a process whose threads are still ending is still held.
  EXPECT_TRUE(Soon([&] {
    EXPECT_EQ(Child({GWQ_TERMINAL, "exec", "--", "true"}, Environment()).Wait(), 0);
    return dir_.IsEmpty();
  })) << "files are left";
}

TEST_F(Cleanup, LeavesDirectoriesOfTerminalsThatRun) {
  Child running(Exec(kWaitingCommand), Environment());
  ASSERT_NE(running.ReadLine(), "");
  std::vector<std::unique_ptr<Child>> others;
  for (int i = 0; i < 8; ++i)
    others.push_back(std::make_unique<Child>(
        std::vector<std::string>{GWQ_TERMINAL, "exec", "--", "test", "-e", "/dev/bus/usb/001/005"},
        Environment()));
  for (const auto& other : others) EXPECT_EQ(other->Wait(), 0) << other->Errors();
  EXPECT_FALSE(dir_.IsEmpty());
  running.Signal(SIGTERM);
  EXPECT_EQ(running.Wait(), 128 + SIGTERM);
  EXPECT_TRUE(dir_.IsEmpty());
}

TEST_F(Cleanup, LeavesWhatIsNotItsOwnOrStillUsedByACommand) {
  const std::string used = dir_.Path() + "/gwq-terminal-ABCDEF";
  const std::string other = dir_.Path() + "/gwq-terminal-ABCDEFG";
  const std::string link = dir_.Path() + "/gwq-terminal-123456";
  for (const std::string& path : {used, other}) std::filesystem::create_directory(path);
  std::filesystem::create_directory_symlink(other, link);
  Child user({"/bin/sh", "-c", "echo ready; exec sleep 1000"}, {"GWQ_TERMINAL_DIR=" + used});
  ASSERT_EQ(user.ReadLine(), "ready");
  const auto run = [this] { return Child({GWQ_TERMINAL, "exec", "--", "true"}, Environment()).Wait(); };
  EXPECT_EQ(run(), 0);
  for (const std::string& path : {used, other, link}) EXPECT_TRUE(std::filesystem::exists(path)) << path;
  user.Signal(SIGKILL);
  user.Wait();
  EXPECT_EQ(run(), 0);
  EXPECT_FALSE(std::filesystem::exists(used));
  EXPECT_TRUE(std::filesystem::exists(other));
}

INSTANTIATE_TEST_SUITE_P(Signals, CleanupAfterSignal, testing::Values(SIGINT, SIGTERM, SIGHUP, SIGKILL));

TEST_F(Cleanup, AfterTheCommandWasKilled) {
  Child child(Exec(kWaitingCommand), Environment());
  const auto command = static_cast<pid_t>(std::stol(child.ReadLine()));
  const pid_t server = ServerOf(child.Pid());
  kill(command, SIGKILL);
  EXPECT_EQ(child.Wait(), 128 + SIGKILL);
  ExpectNothingLeft(command, server);
}

TEST_F(Cleanup, AfterTheServerWasKilled) {
  Child child(Exec(kWaitingCommand), Environment());
  const auto command = static_cast<pid_t>(std::stol(child.ReadLine()));
  const pid_t server = ServerOf(child.Pid());
  ASSERT_GT(server, 0);
  kill(server, SIGKILL);
  EXPECT_EQ(child.Wait(), 1);
  EXPECT_NE(child.Errors().find("the terminal stopped unexpectedly"), std::string::npos);
  ExpectNothingLeft(command, server);
}

TEST_F(Cleanup, OfWhatTheCommandLeftRunningInASessionOfItsOwn) {
  Child child(Exec("setsid sh -c 'echo $$; exec sleep 1000' & sleep 0.1; exit 3"), Environment());
  const auto left = static_cast<pid_t>(std::stol(child.ReadLine()));
  const pid_t server = ServerOf(child.Pid());
  EXPECT_EQ(child.Wait(), 3);
  ExpectNothingLeft(left, server);
}

TEST_F(Cleanup, OfALeftoverThatIgnoresBeingAsked) {
  Child child(Exec("(trap '' TERM; echo ready; exec sleep 1000) & echo $!; sleep 0.1"), Environment());
  std::string line = child.ReadLine();
  if (line == "ready") line = child.ReadLine();
  const auto left = static_cast<pid_t>(std::stol(line));
  const pid_t server = ServerOf(child.Pid());
  EXPECT_EQ(child.Wait(), 0);
  ExpectNothingLeft(left, server);
}

}  // namespace
}  // namespace gwq::test
