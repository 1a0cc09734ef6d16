// SPDX-License-Identifier: MIT
// The terminal plugged into a kernel that the test plays.
#include "usbip/kernel_plug.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>

#include <cstdio>
#include <stdexcept>
#include <string>

#include "customer/agreeable.h"
#include "support/usbip_messages.h"
#include "unit/terminal/device/rig.h"
#include "unit/terminal/usbip/fake_vhci.h"

namespace gwq::terminal::test {

using namespace device;
using namespace customer;
using namespace usb;
namespace {

using namespace gwq::test::usbip;

constexpr UsbId kId{0x1209, 0x0001};
const std::string kVersionReport = Padded("\x02V1.0.0|20240615\x03", kReport);
constexpr const char* kFreePort = "hs  0000 004 000 00000000 000000 0-0";
constexpr const char* kUsedPort = "hs  0000 006 003 00010005 000009 3-1";

class KernelPlugTest : public testing::Test {
 protected:
  // Returns when the plug has done what it can do without the kernel.
  void Settle() { loop_.RunFor(clock_, Time{0}); }
  void SettleFor(Time time) { loop_.RunFor(clock_, time); }

  // The kernel's end of the connection that it was told of; none if it was told of none.
  UniqueFd TakeConnection() {
    unsigned port = 99;
    int socket = -1;
    unsigned device = 0;
    unsigned speed = 0;
    const std::string request = kernel_.TakeRequest();
    if (std::sscanf(request.c_str(), "%u %d %u %u", &port, &socket, &device, &speed) != 4) return {};
    EXPECT_EQ(port, 0U);
    EXPECT_EQ(device, 0x10005U);
    EXPECT_EQ(speed, 3U);
    return UniqueFd(fcntl(socket, F_DUPFD_CLOEXEC, 0));
  }

  // What the terminal says to `bytes`.
  std::string Tell(const UniqueFd& kernel, const std::string& bytes, std::size_t size) {
    EXPECT_EQ(send(kernel.Get(), bytes.data(), bytes.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(bytes.size()));
    std::string replies;
    for (int i = 0; i < 100 && replies.size() < size; ++i) {
      SettleFor(Time{20});
      std::string some(8192, '\0');
      const ssize_t count = recv(kernel.Get(), some.data(), some.size(), MSG_DONTWAIT);
      if (count > 0) replies += some.substr(0, static_cast<std::size_t>(count));
    }
    return replies;
  }
  void ExpectAnswers(const UniqueFd& kernel) {
    const std::string expected = Submitted(1, 0, kReport) + Submitted(2, 0, kReport, kVersionReport);
    EXPECT_EQ(Tell(kernel, Report(1, kGetVersion) + In(2), expected.size()), expected);
  }
  static bool IsClosed(const UniqueFd& kernel) {
    char byte = 0;
    return recv(kernel.Get(), &byte, 1, MSG_DONTWAIT | MSG_PEEK) == 0;
  }

  FakeVhci kernel_;
  Clock clock_;
  AgreeableCustomer customer_;
  Device unit_{Line::kUsb, customer_};
  EventLoop loop_;
  UsbTerminal terminal_{kId, {unit_}, clock_, [this] { loop_.Wake(); }};
  usbip::KernelPlug plug_{usbip::Vhci(kernel_.Root()), kId, terminal_, loop_, clock_};
};

TEST_F(KernelPlugTest, IsNotPluggedInAtFirst) {
  EXPECT_FALSE(plug_.IsIn());
  Settle();
  EXPECT_EQ(kernel_.TakeRequest(), "");
}

TEST_F(KernelPlugTest, ServesTheKernelWithoutAHandshake) {
  plug_.PlugIn();
  EXPECT_TRUE(plug_.IsIn());
  Settle();
  const UniqueFd kernel = TakeConnection();
  ASSERT_TRUE(kernel);
  const std::string device = Submitted(9, 0, 18);
  EXPECT_EQ(Tell(kernel, ControlIn(9, 0x80, 6, 0x0100, 64), device.size() + 18).substr(0, device.size()),
            device);
  ExpectAnswers(kernel);
}

TEST_F(KernelPlugTest, GivesTheKernelAnEndThatBlocks) {
  plug_.PlugIn();
  Settle();
  const UniqueFd kernel = TakeConnection();
  ASSERT_TRUE(kernel);
  EXPECT_EQ(fcntl(kernel.Get(), F_GETFL) & O_NONBLOCK, 0);
}

TEST_F(KernelPlugTest, ClosesTheConnectionToUnplug) {
  plug_.PlugIn();
  Settle();
  const UniqueFd kernel = TakeConnection();
  ASSERT_TRUE(kernel);
  EXPECT_FALSE(IsClosed(kernel));
  plug_.PullOut();
  EXPECT_FALSE(plug_.IsIn());
  Settle();
  EXPECT_TRUE(IsClosed(kernel));
  EXPECT_EQ(kernel_.TakeRequest(), "");
}

TEST_F(KernelPlugTest, IsPluggedInAgain) {
  for (int round = 0; round < 3; ++round) {
    plug_.PlugIn();
    SettleFor(Time{50});
    const UniqueFd kernel = TakeConnection();
    ASSERT_TRUE(kernel) << round;
    ExpectAnswers(kernel);
    plug_.PullOut();
    Settle();
    EXPECT_TRUE(IsClosed(kernel));
  }
}

TEST_F(KernelPlugTest, WaitsUntilTheKernelHasLetGoOfTheOldDevice) {
  plug_.PlugIn();
  Settle();
  const UniqueFd first = TakeConnection();
  kernel_.SetPorts({kUsedPort});
  kernel_.AddDevice();
  plug_.PullOut();
  plug_.PlugIn();
  SettleFor(Time{60});
  EXPECT_TRUE(IsClosed(first));
  EXPECT_FALSE(TakeConnection()) << "the port is taken yet";
  kernel_.SetPorts({kFreePort});
  SettleFor(Time{60});
  EXPECT_FALSE(TakeConnection()) << "the device is there yet";
  kernel_.RemoveDevice();
  SettleFor(Time{60});
  const UniqueFd second = TakeConnection();
  ASSERT_TRUE(second);
  ExpectAnswers(second);
}

TEST_F(KernelPlugTest, StaysOutOnceTheKernelHasDetachedIt) {
  plug_.PlugIn();
  Settle();
  UniqueFd kernel = TakeConnection();
  ASSERT_TRUE(kernel);
  shutdown(kernel.Get(), SHUT_RDWR);
  testing::internal::CaptureStderr();
  SettleFor(Time{60});
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "gwq-terminal: the kernel has detached the terminal\n");
  EXPECT_FALSE(plug_.IsIn());
  EXPECT_EQ(kernel_.TakeRequest(), "");
  plug_.PlugIn();
  SettleFor(Time{60});
  kernel = TakeConnection();
  ASSERT_TRUE(kernel);
  ExpectAnswers(kernel);
}

TEST_F(KernelPlugTest, WaitsUntilProgramsCanUseIt) {
  class Kernel final : public Timed {
   public:
    Kernel(const FakeVhci& files, Time at) : files_(files), at_(at) {}
    std::optional<Time> NextDeadline() override { return at_; }
    void Advance(Time) override {
      at_.reset();
      files_.SetPorts({kUsedPort});
      files_.AddDevice();
      files_.AddInterface();
      files_.AddNode();
    }
    [[nodiscard]] bool HasIt() const { return !at_; }

   private:
    const FakeVhci& files_;
    std::optional<Time> at_;
  };
  Kernel kernel(kernel_, clock_.Now() + Time{100});
  loop_.Add(kernel);
  plug_.PlugIn();
  plug_.AwaitReady();
  EXPECT_TRUE(kernel.HasIt());
  kernel_.RemoveDevice();
  kernel_.SetPorts({kFreePort});
}

TEST_F(KernelPlugTest, SaysThatTheKernelDoesNotTakeIt) {
  plug_.PlugIn();
  try {
    plug_.AwaitReady(Time{1000});
    FAIL() << "a device that is not there";
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(),
                 "the kernel does not take the terminal within 1 s: see what dmesg says of vhci_hcd and usb");
  }
}

TEST_F(KernelPlugTest, FailsWithoutAPort) {
  kernel_.SetPorts({kUsedPort});
  plug_.PlugIn();
  EXPECT_THROW(plug_.AwaitReady(), std::runtime_error);
}

TEST(KernelPlugEnd, UnplugsTheTerminal) {
  const FakeVhci files;
  const Clock clock;
  AgreeableCustomer customer;
  Device unit{Line::kUsb, customer};
  EventLoop loop;
  UsbTerminal terminal{kId, {unit}, clock, [] {}};
  UniqueFd kernel;
  {
    usbip::KernelPlug plug{usbip::Vhci(files.Root()), kId, terminal, loop, clock};
    plug.PlugIn();
    loop.RunFor(clock, Time{0});
    int socket = -1;
    ASSERT_EQ(std::sscanf(files.TakeRequest().c_str(), "%*u %d", &socket), 1);
    kernel = UniqueFd(fcntl(socket, F_DUPFD_CLOEXEC, 0));
    testing::internal::CaptureStderr();
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  char byte = 0;
  EXPECT_EQ(recv(kernel.Get(), &byte, 1, MSG_DONTWAIT), 0);
}

}  // namespace
}  // namespace gwq::terminal::test
