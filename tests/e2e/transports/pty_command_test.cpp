// SPDX-License-Identifier: MIT
// gwq-terminal exec --pty: a command with a terminal that needs no umockdev.
#include <gtest/gtest.h>

#include <csignal>
#include <string>
#include <vector>

#include "child.h"

namespace gwq::test {
namespace {

#ifndef GWQ_EMULATOR  // which runs no program that an emulated one starts

std::vector<std::string> OnPty(const std::string& script) {
  return {GWQ_TERMINAL, "exec", "--pty", "--", "/bin/sh", "-c", script};
}

TEST(PtyCommand, IsAnsweredAtThePathThatItIsTold) {
  Child child(
      OnPty("printf '\\033[0GETVERSION' >$GWQ_TERMINAL_SERIAL; head -c 17 $GWQ_TERMINAL_SERIAL; exit 7"));
  EXPECT_EQ(child.ReadRest(), "\002V1.0.0|20240615\003");
  EXPECT_EQ(child.Wait(), 7);
  EXPECT_EQ(child.Errors(), "");
}

TEST(PtyCommand, RunsWithoutUmockdev) {
  Child child(OnPty(
      "echo \"$UMOCKDEV_DIR$LD_PRELOAD\"; case $GWQ_TERMINAL_SERIAL in /dev/pts/*) exit 0; esac; exit 1"));
  EXPECT_EQ(child.ReadLine(), "");
  EXPECT_EQ(child.Wait(), 0);
}

TEST(PtyCommand, EndsWithAllThatItHasStarted) {
  const TempDir dir;
  Child child(OnPty("setsid sleep 1000 & echo $!; exec sleep 1000"), {"TMPDIR=" + dir.Path()});
  const auto left = static_cast<pid_t>(std::stol(child.ReadLine()));
  child.Signal(SIGTERM);
  EXPECT_EQ(child.Wait(), 128 + SIGTERM);
  EXPECT_TRUE(Soon([&] { return !IsRunning(left); }));
  EXPECT_TRUE(dir.IsEmpty());
}

TEST(PtyCommand, DiesWithAKilledTerminal) {
  const TempDir dir;
  Child child(OnPty("setsid sleep 1000 & echo $!; exec sleep 1000"), {"TMPDIR=" + dir.Path()});
  const auto left = static_cast<pid_t>(std::stol(child.ReadLine()));
  child.Signal(SIGKILL);
  EXPECT_EQ(child.Wait(), 128 + SIGKILL);
  EXPECT_TRUE(Soon([&] { return !IsRunning(left); }));
  EXPECT_TRUE(Soon([&] { return dir.IsEmpty(); }));
}

TEST(PtyCommand, IsNoCommandOfASerialPortToo) {
  Child child({GWQ_TERMINAL, "exec", "--pty", "--serial", "78", "--", "true"});
  EXPECT_EQ(child.Wait(), 2);
}

#endif

TEST(WithoutUmockdev, SaysWhatServesInstead) {
  if (GWQ_HAS_UMOCKDEV) GTEST_SKIP() << "built with umockdev";
  for (const char* command : {"exec", "check"}) {
    std::vector<std::string> arguments{GWQ_TERMINAL, command};
    if (command == std::string("check")) arguments.emplace_back("signs-at-once");
    arguments.insert(arguments.end(), {"--", "true"});
    Child child(arguments);
    const std::string output = child.ReadRest();
    EXPECT_EQ(child.Wait(), 1);
    EXPECT_NE((output + child.Errors()).find("use --pty, or --usbip as root"), std::string::npos)
        << output << child.Errors();
  }
}

}  // namespace
}  // namespace gwq::test
