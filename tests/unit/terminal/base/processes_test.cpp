// SPDX-License-Identifier: MIT
// Processes of the test's own, started and ended.
#include "base/processes.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "base/private_dir.h"

namespace gwq::terminal::test {
namespace {

constexpr Time kLong{20'000};

SpawnRequest Shell(const std::string& script) {
  SpawnRequest request;
  request.arguments = {"sh", "-c", script};
  request.dies_with_us = true;
  return request;
}

std::string ContentOf(const std::string& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

TEST(Spawn, TellsHowTheProgramEnded) {
  EXPECT_EQ(WaitFor(Spawn(Shell("exit 7")), kLong), 7);
  EXPECT_EQ(WaitFor(Spawn(Shell("kill -SEGV $$")), kLong), 128 + SIGSEGV);
}

TEST(Spawn, TellsWhyThereIsNoProgram) {
  SpawnRequest request;
  request.arguments = {"no-such-command"};
  try {
    Spawn(request);
    FAIL() << "it was started";
  } catch (const StartFailure& failure) {
    EXPECT_STREQ(failure.what(), "cannot start no-such-command: No such file or directory");
    EXPECT_TRUE(failure.WasNotFound());
  }
  request.arguments = {"/etc/passwd"};
  try {
    Spawn(request);
    FAIL() << "it was started";
  } catch (const StartFailure& failure) {
    EXPECT_STREQ(failure.what(), "cannot start /etc/passwd: Permission denied");
    EXPECT_FALSE(failure.WasNotFound());
  }
}

TEST(Spawn, GivesVariablesAndAddsOutputToFiles) {
  const PrivateDir dir;
  SpawnRequest request = Shell("echo $ONE $TWO; echo bad >&2");
  request.environment.Set("ONE", "old");
  request.environment.Set("ONE", "1");
  request.environment.Set("TWO", "2");
  request.environment.Unset("TWO");
  request.output_file = dir.Path() + "/output";
  request.errors_file = dir.Path() + "/errors";
  for (int round = 0; round < 2; ++round) EXPECT_EQ(WaitFor(Spawn(request), kLong), 0);
  EXPECT_EQ(ContentOf(request.output_file), "1\n1\n");
  EXPECT_EQ(ContentOf(request.errors_file), "bad\nbad\n");
}

TEST(WaitFor, GivesUpAndCanBeAskedAgain) {
  const pid_t child = Spawn(Shell("exec sleep 1000"));
  EXPECT_EQ(WaitFor(child, Time{10}), std::nullopt);
  kill(child, SIGKILL);
  EXPECT_EQ(WaitFor(child, kLong), 128 + SIGKILL);
}

TEST(ProcessesOfARun, AreEndedWhateverTheyRefuseAndWhoseTheyAre) {
  const PrivateDir dir;
  SpawnRequest request = Shell("trap '' TERM; setsid sleep 1000 & echo started; wait; exec sleep 1000");
  request.environment.Set(kRunDirVariable, dir.Path());
  request.output_file = dir.Path() + "/output";
  const pid_t child = Spawn(request);
  while (ContentOf(request.output_file).empty()) EXPECT_EQ(WaitFor(child, Time{5}), std::nullopt);
  EXPECT_FALSE(ProcessesOf(dir.Path()).empty());
  EXPECT_TRUE(ProcessesOf(dir.Path() + "/other").empty());
  EndProcessesOf(dir.Path());
  EXPECT_TRUE(ProcessesOf(dir.Path()).empty());
  EXPECT_EQ(WaitFor(child, kLong), 128 + SIGKILL);
}

}  // namespace
}  // namespace gwq::terminal::test
