// SPDX-License-Identifier: MIT
// The kernel's virtual USB host controller by its files.
#include "usbip/vhci.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <system_error>

#include "support/as_user.h"
#include "unit/terminal/usbip/fake_vhci.h"

namespace gwq::terminal::test {
namespace {

using usbip::Vhci;

constexpr std::uint32_t kDevice = 0x10005;

std::string ProblemOf(const std::function<void()>& action) {
  try {
    action();
  } catch (const std::exception& error) {
    return error.what();
  }
  return "none";
}

class VhciTest : public testing::Test {
 protected:
  FakeVhci kernel_;
  Vhci vhci_{kernel_.Root()};
};

TEST_F(VhciTest, IsThereOnceTheModuleIs) {
  EXPECT_NO_THROW(vhci_.Check());
  EXPECT_EQ(kernel_.TakeRequest(), "");
}

TEST_F(VhciTest, SaysHowToLoadTheModule) {
  std::filesystem::remove_all(kernel_.Controller());
  const std::string problem =
      "the kernel has no virtual USB host controller: load its module with \"sudo modprobe vhci-hcd\"";
  EXPECT_EQ(ProblemOf([&] { vhci_.Check(); }), problem);
  EXPECT_EQ(ProblemOf([&] { static_cast<void>(vhci_.Attach(9, kDevice)); }), problem);
}

TEST_F(VhciTest, SaysThatItTakesRoot) {
  ASSERT_EQ(chmod(kernel_.Root().c_str(), 0755), 0);
  ASSERT_EQ(chmod((kernel_.Controller() / "attach").c_str(), 0), 0);
  const gwq::test::AsOrdinaryUser user;
  ASSERT_TRUE(user.Holds());
  EXPECT_EQ(ProblemOf([&] { vhci_.Check(); }),
            (kernel_.Controller() / "attach").string() + " may not be written: run this as root");
}

TEST_F(VhciTest, AttachesAtAFreePort) {
  EXPECT_EQ(vhci_.Attach(9, kDevice), 0U);
  EXPECT_EQ(kernel_.TakeRequest(), "0 9 65541 3");
}

TEST_F(VhciTest, LeavesOutPortsThatAreTaken) {
  kernel_.SetPorts({"hs  0000 006 003 00010002 000003 3-1", "hs  0001 005 000 00000000 000000 0-0",
                    "hs  0002 007 000 00000000 000000 0-0", "hs  0010 004 000 00000000 000000 0-0",
                    "hs  0011 004 000 00000000 000000 0-0"});
  EXPECT_EQ(vhci_.Attach(12, kDevice), 10U);
  EXPECT_EQ(kernel_.TakeRequest(), "10 12 65541 3");
}

TEST_F(VhciTest, HasNoPortForSuperSpeedOnes) {
  kernel_.SetPorts({"hs  0000 006 003 00010002 000003 3-1", "ss  0008 004 000 00000000 000000 0-0"});
  EXPECT_EQ(ProblemOf([&] { static_cast<void>(vhci_.Attach(9, kDevice)); }),
            "no port of the kernel's virtual USB host controller is free: see \"usbip port\", and free one "
            "with \"sudo usbip detach -p PORT\"");
  EXPECT_EQ(kernel_.TakeRequest(), "");
}

TEST_F(VhciTest, HasNoPortInAStatusThatItDoesNotKnow) {
  for (const char* line : {"", "hs", "hs  none 004 000 00000000 000000 0-0", "hs  0000 004 000 00000000"}) {
    kernel_.SetPorts({line});
    EXPECT_THROW(static_cast<void>(vhci_.Attach(9, kDevice)), std::runtime_error) << line;
  }
}

TEST_F(VhciTest, SaysWhyTheKernelRefuses) {
  std::filesystem::remove(kernel_.Controller() / "attach");
  std::filesystem::create_symlink("/dev/full", kernel_.Controller() / "attach");
  EXPECT_EQ(ProblemOf([&] { static_cast<void>(vhci_.Attach(9, kDevice)); }),
            "the kernel does not take the terminal at port 0: " + std::generic_category().message(ENOSPC));
}

TEST_F(VhciTest, KnowsTheDeviceOnceItHasAnAddress) {
  EXPECT_EQ(vhci_.DeviceAt(0), "");
  kernel_.SetPorts({"hs  0000 005 000 00000000 000000 0-0", "hs  0001 006 003 00010005 000009 3-2"});
  EXPECT_EQ(vhci_.DeviceAt(0), "");
  EXPECT_EQ(vhci_.DeviceAt(1), "3-2");
  EXPECT_EQ(vhci_.DeviceAt(2), "");
}

TEST_F(VhciTest, IsReadyWithInterfaceAndNode) {
  EXPECT_FALSE(vhci_.IsReady(""));
  EXPECT_FALSE(vhci_.IsReady("3-1"));
  kernel_.AddDevice();
  EXPECT_FALSE(vhci_.IsReady("3-1"));
  kernel_.AddNode();
  EXPECT_FALSE(vhci_.IsReady("3-1"));
  kernel_.AddInterface();
  EXPECT_TRUE(vhci_.IsReady("3-1"));
  kernel_.RemoveDevice();
  EXPECT_FALSE(vhci_.IsReady("3-1"));
  kernel_.AddInterface();
  kernel_.AddDevice();
  EXPECT_FALSE(vhci_.IsReady("3-1")) << "without its node";
}

TEST_F(VhciTest, IsGoneWithPortAndDevice) {
  kernel_.SetPorts({"hs  0000 006 003 00010005 000009 3-1"});
  kernel_.AddDevice();
  EXPECT_FALSE(vhci_.IsGone(0, "3-1"));
  kernel_.SetPorts({"hs  0000 004 000 00000000 000000 0-0"});
  EXPECT_FALSE(vhci_.IsGone(0, "3-1"));
  EXPECT_TRUE(vhci_.IsGone(0, "")) << "it never had a name";
  kernel_.RemoveDevice();
  EXPECT_TRUE(vhci_.IsGone(0, "3-1"));
  std::filesystem::remove_all(kernel_.Controller());
  EXPECT_TRUE(vhci_.IsGone(0, "3-1")) << "the module was removed";
}

}  // namespace
}  // namespace gwq::terminal::test
