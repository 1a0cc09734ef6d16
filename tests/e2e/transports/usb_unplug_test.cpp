// SPDX-License-Identifier: MIT
// The cable is pulled and put back. Runs as the command of gwq-terminal.
#include <sys/types.h>

#include <csignal>
#include <future>
#include <thread>

#include "usb_host.h"

namespace gwq::test {
namespace {

using namespace std::chrono_literals;

void TellTerminal(int signal) {
  const char* pid = std::getenv("GWQ_TERMINAL_PID");
  ASSERT_NE(pid, nullptr);
  ASSERT_EQ(kill(static_cast<pid_t>(std::stol(pid)), signal), 0);
}

void Unplug() {
  TellTerminal(SIGUSR1);
}
void Replug() {
  TellTerminal(SIGUSR2);
}

class UsbUnplug : public UsbFixture {
 protected:
  void TearDown() override {
    Replug();
    EXPECT_TRUE(ComesBack());
    UsbFixture::TearDown();
  }

  template <typename Condition>
  static bool Soon(Condition condition) {
    const auto start = Clock::now();
    while (!condition()) {
      if (Since(start) > 5s) return false;
      std::this_thread::sleep_for(2ms);
    }
    return true;
  }
  bool ComesBack() {
    return Soon([this] { return static_cast<bool>(OpenAndClaim()); });
  }
  bool Vanishes() {
    return Soon([this] { return !Open(); });
  }
};

TEST_F(UsbUnplug, EndsAWaitingReadWithNoDevice) {
  const Handle handle = OpenAndClaim();
  ASSERT_TRUE(handle);
  Report report{};
  auto reader = std::async(std::launch::async, [&] { return handle.Read(report, 5000); });
  std::this_thread::sleep_for(20ms);  // so that the read most likely waits already
  const auto start = Clock::now();
  Unplug();
  const Transfer read = reader.get();
  EXPECT_EQ(read.result, LIBUSB_ERROR_NO_DEVICE);
  EXPECT_EQ(read.count, 0);
  EXPECT_LT(Since(start), 2s);
}

TEST_F(UsbUnplug, FailsEveryLaterTransferOnTheOldHandleEvenAfterReplug) {
  const Handle handle = OpenAndClaim();
  ASSERT_TRUE(handle);
  Unplug();
  ASSERT_TRUE(Vanishes());
  EXPECT_EQ(handle.Send(kGetVersion).result, LIBUSB_ERROR_NO_DEVICE);
  Replug();
  ASSERT_TRUE(ComesBack());
  EXPECT_EQ(handle.Send(kGetVersion).result, LIBUSB_ERROR_NO_DEVICE);
}

TEST_F(UsbUnplug, DisappearsFromTheDeviceListAndComesBackInTheSameContext) {
  for (int round = 0; round < 3; ++round) {
    Unplug();
    ASSERT_TRUE(Vanishes()) << "round " << round;
    Replug();
    ASSERT_TRUE(ComesBack()) << "round " << round;
    const Handle handle = OpenAndClaim();
    ASSERT_TRUE(handle);
    ASSERT_EQ(handle.Send(kGetVersion).result, 0);
    Report report{};
    ASSERT_EQ(handle.Read(report, 1000).count, 1024);
    EXPECT_TRUE(IsVersionAnswer(report));
  }
}

TEST_F(UsbUnplug, IsDrivenByTheKernelAgainAfterReplug) {
  ASSERT_TRUE(OpenAndClaim());
  Unplug();
  ASSERT_TRUE(Vanishes());
  Replug();
  ASSERT_TRUE(Soon([this] {
    const Handle handle = Open();
    return handle && libusb_kernel_driver_active(handle.Get(), 0) == 1;
  }));
}

TEST_F(UsbUnplug, LosesAnAnswerThatNobodyHadTaken) {
  ASSERT_EQ(OpenAndClaim().Send(kGetVersion).result, 0);
  Unplug();
  ASSERT_TRUE(Vanishes());
  Replug();
  ASSERT_TRUE(ComesBack());
  const Handle handle = OpenAndClaim();
  ASSERT_TRUE(handle);
  Report report{};
  EXPECT_EQ(handle.Read(report, 50).result, LIBUSB_ERROR_TIMEOUT);
}

}  // namespace
}  // namespace gwq::test
