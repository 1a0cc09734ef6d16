// SPDX-License-Identifier: MIT
// gwq-terminal exec --usbip and its like on a machine without a virtual USB host controller.
// scripts/test-kernel tests them on one that has it.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "child.h"

namespace gwq::test {
namespace {

using Arguments = std::vector<std::string>;

Child RunIn(Arguments options, const Arguments& command) {
  options.insert(options.begin(), GWQ_TERMINAL);
  options.emplace_back("--");
  options.insert(options.end(), command.begin(), command.end());
  return Child(options);
}

TEST(KernelCommand, HasOnePlaceForTheTerminal) {
  const std::vector<Arguments> wrong = {{"exec", "--usbip", "--pty"},
                                        {"exec", "--usbip", "--serial", "78"},
                                        {"exec", "--usbip", "--no-usb"},
                                        {"exec", "--usbip", "3240"},
                                        {"replay", "--usbip", "--pty", "/dev/null"},
                                        {"replay", "--usbip", "--serial", "78", "/dev/null"},
                                        {"check", "--usbip", "--pty", "signs-at-once"},
                                        {"pty", "--usbip"}};
  for (const Arguments& options : wrong) {
    Child child = RunIn(options, {"true"});
    EXPECT_EQ(child.ReadRest(), "");
    EXPECT_EQ(child.Wait(), 2) << testing::PrintToString(options);
    EXPECT_NE(child.Errors(), "") << testing::PrintToString(options);
  }
}

TEST(KernelCommand, SaysBeforeAnythingStartsWhatTheKernelLacks) {
  if (std::filesystem::exists("/sys/devices/platform/vhci_hcd.0")) GTEST_SKIP() << "the module is loaded";
  const TempDir dir;
  const Arguments command = {"/bin/sh", "-c", "touch " + dir.Path() + "/started"};
  for (const Arguments& options :
       std::vector<Arguments>{{"exec", "--usbip"},
                              {"replay", "--usbip", "/dev/null"},
                              {"check", "--usbip", "signs-at-once", "walks-away"}}) {
    Child child = RunIn(options, command);
    EXPECT_EQ(child.ReadRest(), "");
    EXPECT_EQ(child.Wait(), 1) << options.front();
    EXPECT_EQ(child.Errors(),
              "gwq-terminal: the kernel has no virtual USB host controller: load its module with "
              "\"sudo modprobe vhci-hcd\"\n")
        << options.front();
  }
  EXPECT_TRUE(dir.IsEmpty());
}

}  // namespace
}  // namespace gwq::test
