// However a run ends, nothing stays: no files, no processes.
#include <gtest/gtest.h>

#include <csignal>
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

TEST_F(Cleanup, after_a_normal_exit) {
  Child child(Exec("ls -A $TMPDIR | wc -l"), Environment());
  EXPECT_EQ(child.ReadLine(), "1");  // there was something to remove
  EXPECT_EQ(child.Wait(), 0);
  EXPECT_TRUE(dir_.IsEmpty());
}

TEST_F(Cleanup, after_a_command_that_could_not_be_started) {
  Child child({GWQ_TERMINAL, "exec", "--", "no-such-command"}, Environment());
  EXPECT_EQ(child.Wait(), 127);
  EXPECT_TRUE(dir_.IsEmpty());
}

class CleanupAfterSignal : public Cleanup, public testing::WithParamInterface<int> {};

TEST_P(CleanupAfterSignal, to_gwq_terminal) {
  Child child(Exec(kWaitingCommand), Environment());
  const auto command = static_cast<pid_t>(std::stol(child.ReadLine()));
  const pid_t server = ServerOf(child.Pid());
  ASSERT_GT(server, 0);
  child.Signal(GetParam());
  EXPECT_EQ(child.Wait(), 128 + GetParam());
  ExpectNothingLeft(command, server);
}

INSTANTIATE_TEST_SUITE_P(Signals, CleanupAfterSignal, testing::Values(SIGINT, SIGTERM, SIGHUP, SIGKILL));

TEST_F(Cleanup, after_the_command_was_killed) {
  Child child(Exec(kWaitingCommand), Environment());
  const auto command = static_cast<pid_t>(std::stol(child.ReadLine()));
  const pid_t server = ServerOf(child.Pid());
  kill(command, SIGKILL);
  EXPECT_EQ(child.Wait(), 128 + SIGKILL);
  ExpectNothingLeft(command, server);
}

TEST_F(Cleanup, after_the_server_was_killed) {
  Child child(Exec(kWaitingCommand), Environment());
  const auto command = static_cast<pid_t>(std::stol(child.ReadLine()));
  const pid_t server = ServerOf(child.Pid());
  ASSERT_GT(server, 0);
  kill(server, SIGKILL);
  EXPECT_EQ(child.Wait(), 1);
  EXPECT_NE(child.Errors().find("the terminal stopped unexpectedly"), std::string::npos);
  ExpectNothingLeft(command, server);
}

TEST_F(Cleanup, of_what_the_command_left_running_in_a_session_of_its_own) {
  Child child(Exec("setsid sh -c 'echo $$; exec sleep 1000' & sleep 0.1; exit 3"), Environment());
  const auto left = static_cast<pid_t>(std::stol(child.ReadLine()));
  const pid_t server = ServerOf(child.Pid());
  EXPECT_EQ(child.Wait(), 3);
  ExpectNothingLeft(left, server);
}

TEST_F(Cleanup, of_a_leftover_that_ignores_being_asked) {
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
