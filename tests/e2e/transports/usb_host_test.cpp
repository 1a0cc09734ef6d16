// SPDX-License-Identifier: MIT
// What a libusb host sees of the terminal. Runs as the command of gwq-terminal.
#include <sys/resource.h>

#include <algorithm>
#include <future>
#include <thread>
#include <vector>

#include "usb_host.h"

namespace gwq::test {
namespace {

using namespace std::chrono_literals;

class UsbHost : public UsbFixture {};

double CpuSeconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  const auto seconds = [](timeval time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

TEST_F(UsbHost, FindsExactlyOneDeviceWithTheIdentityAskedFor) {
  libusb_device** list = nullptr;
  const ssize_t count = libusb_get_device_list(context_, &list);
  ASSERT_EQ(count, 1);
  libusb_device_descriptor descriptor{};
  EXPECT_EQ(libusb_get_device_descriptor(list[0], &descriptor), 0);
  EXPECT_EQ(descriptor.idVendor, ExpectedId().vendor);
  EXPECT_EQ(descriptor.idProduct, ExpectedId().product);
  EXPECT_EQ(libusb_get_device_speed(list[0]), LIBUSB_SPEED_HIGH);
  EXPECT_EQ(libusb_get_max_packet_size(list[0], kIn), 1024);
  EXPECT_EQ(libusb_get_max_packet_size(list[0], kOut), 1024);
  libusb_free_device_list(list, 1);
}

TEST_F(UsbHost, TellsItsProductNameAndStallsUnknownControlRequests) {
  const Handle handle = Open();
  ASSERT_TRUE(handle);
  unsigned char text[64] = {};
  ASSERT_GT(libusb_get_string_descriptor_ascii(handle.Get(), 2, text, sizeof text), 0);
  EXPECT_STREQ(reinterpret_cast<char*>(text), "Virtual customer terminal");
  EXPECT_EQ(libusb_control_transfer(handle.Get(), 0xc0, 0x55, 0, 0, text, sizeof text, 1000),
            LIBUSB_ERROR_PIPE);
  EXPECT_EQ(libusb_control_transfer(handle.Get(), 0x81, 0x06, 0x2200, 0, text, sizeof text, 1000), 29);
}

TEST_F(UsbHost, CannotBeClaimedUntilTheKernelDriverIsDetached) {
  const Handle handle = Open();
  ASSERT_TRUE(handle);
  if (libusb_kernel_driver_active(handle.Get(), 0) == 0) {
    ASSERT_EQ(libusb_attach_kernel_driver(handle.Get(), 0), 0);
  }
  EXPECT_EQ(libusb_kernel_driver_active(handle.Get(), 0), 1);
  EXPECT_EQ(libusb_claim_interface(handle.Get(), 0), LIBUSB_ERROR_BUSY);
  EXPECT_EQ(libusb_detach_kernel_driver(handle.Get(), 0), 0);
  EXPECT_EQ(libusb_kernel_driver_active(handle.Get(), 0), 0);
  EXPECT_EQ(libusb_claim_interface(handle.Get(), 0), 0);
}

TEST_F(UsbHost, StaysDetachedAfterClose) {
  OpenAndClaim();
  const Handle again = Open();
  ASSERT_TRUE(again);
  EXPECT_EQ(libusb_kernel_driver_active(again.Get(), 0), 0);
}

TEST_F(UsbHost, LetsOnlyOneHostClaimIt) {
  const Handle first = OpenAndClaim();
  ASSERT_TRUE(first);
  const Handle second = Open();
  ASSERT_TRUE(second);
  EXPECT_EQ(libusb_claim_interface(second.Get(), 0), LIBUSB_ERROR_BUSY);
  Report report{};
  EXPECT_EQ(second.Read(report, 100).result, LIBUSB_ERROR_IO);
  EXPECT_EQ(libusb_release_interface(first.Get(), 0), 0);
  EXPECT_EQ(libusb_claim_interface(second.Get(), 0), 0);
}

TEST_F(UsbHost, AnswersGETVERSIONInOnePaddedReport) {
  const Handle handle = OpenAndClaim();
  ASSERT_TRUE(handle);
  const Transfer sent = handle.Send(kGetVersion);
  EXPECT_EQ(sent.result, 0);
  EXPECT_EQ(sent.count, 1024);
  Report report{};
  const Transfer read = handle.Read(report, 1000);
  EXPECT_EQ(read.result, 0);
  EXPECT_EQ(read.count, 1024);
  EXPECT_TRUE(IsVersionAnswer(report));
}

TEST_F(UsbHost, TakesInterruptTransfersOnTheSameEndpoints) {
  const Handle handle = OpenAndClaim();
  ASSERT_TRUE(handle);
  Report report{};
  kGetVersion.copy(reinterpret_cast<char*>(report.data()), report.size());
  int count = 0;
  EXPECT_EQ(libusb_interrupt_transfer(handle.Get(), kOut, report.data(), 1024, &count, 1000), 0);
  EXPECT_EQ(libusb_interrupt_transfer(handle.Get(), kIn, report.data(), 1024, &count, 1000), 0);
  EXPECT_EQ(count, 1024);
  EXPECT_TRUE(IsVersionAnswer(report));
}

TEST_F(UsbHost, CarriesOutTwoReportsSentInOneTransfer) {
  const Handle handle = OpenAndClaim();
  ASSERT_TRUE(handle);
  std::vector<unsigned char> both(2048);
  std::copy(kGetVersion.begin(), kGetVersion.end(), both.begin());
  std::copy(kGetVersion.begin(), kGetVersion.end(), both.begin() + 1024);
  EXPECT_EQ(handle.Move(kOut, both.data(), 2048, 1000).count, 2048);
  const Transfer read = handle.Move(kIn, both.data(), 2048, 1000);
  EXPECT_EQ(read.result, 0);
  EXPECT_EQ(read.count, 2048);
  EXPECT_EQ(both[0], 2);
  EXPECT_EQ(both[1024], 2);
}

TEST_F(UsbHost, OverflowsAReadThatHasNoRoomForAReport) {
  const Handle handle = OpenAndClaim();
  ASSERT_TRUE(handle);
  ASSERT_EQ(handle.Send(kGetVersion).result, 0);
  unsigned char small[64] = {};
  EXPECT_EQ(handle.Move(kIn, small, sizeof small, 1000).result, LIBUSB_ERROR_OVERFLOW);
}

TEST_F(UsbHost, KnowsNoOtherEndpoint) {
  const Handle handle = OpenAndClaim();
  ASSERT_TRUE(handle);
  Report report{};
  EXPECT_EQ(handle.Move(0x85, report.data(), 1024, 100).result, LIBUSB_ERROR_IO);
}

TEST_F(UsbHost, TimesOutAReadAfter200MsWithNothing) {
  const Handle handle = OpenAndClaim();
  ASSERT_TRUE(handle);
  Report report{};
  const auto start = Clock::now();
  const Transfer read = handle.Read(report, 200);
  EXPECT_EQ(read.result, LIBUSB_ERROR_TIMEOUT);
  EXPECT_EQ(read.count, 0);
  EXPECT_GE(Since(start), 195ms);
  EXPECT_LT(Since(start), 1s);
}

TEST_F(UsbHost, StillAnswersAfterAReadTimedOut) {
  const Handle handle = OpenAndClaim();
  ASSERT_TRUE(handle);
  Report report{};
  ASSERT_EQ(handle.Read(report, 20).result, LIBUSB_ERROR_TIMEOUT);
  ASSERT_EQ(handle.Send(kGetVersion).result, 0);
  EXPECT_EQ(handle.Read(report, 1000).count, 1024);
  EXPECT_TRUE(IsVersionAnswer(report));
}

TEST_F(UsbHost, KeepsAnAnswerForTheHostThatOpensItNext) {
  ASSERT_EQ(OpenAndClaim().Send(kGetVersion).result, 0);
  const Handle handle = OpenAndClaim();
  ASSERT_TRUE(handle);
  Report report{};
  EXPECT_EQ(handle.Read(report, 1000).count, 1024);
  EXPECT_TRUE(IsVersionAnswer(report));
}

TEST_F(UsbHost, CanBeOpenedAndClosedAHundredTimes) {
  for (int cycle = 0; cycle < 100; ++cycle) ASSERT_TRUE(OpenAndClaim()) << "cycle " << cycle;
}

TEST_F(UsbHost, ServesAReadThatWaitsWhileAnotherThreadWrites) {
  const Handle handle = OpenAndClaim();
  ASSERT_TRUE(handle);
  Report report{};
  std::promise<void> started;
  auto reader = std::async(std::launch::async, [&] {
    started.set_value();
    return handle.Read(report, 2000);
  });
  started.get_future().wait();
  std::this_thread::sleep_for(20ms);  // so that the read most likely waits already
  EXPECT_EQ(handle.Send(kGetVersion).result, 0);
  EXPECT_EQ(reader.get().count, 1024);
  EXPECT_TRUE(IsVersionAnswer(report));
}

TEST_F(UsbHost, LetsAWaitingReadSleep) {
  const Handle handle = OpenAndClaim();
  ASSERT_TRUE(handle);
  Report report{};
  const double before = CpuSeconds();
  ASSERT_EQ(handle.Read(report, 1000).result, LIBUSB_ERROR_TIMEOUT);
  const double used = CpuSeconds() - before;
  RecordProperty("idle_cpu_ms", static_cast<int>(used * 1000));
  EXPECT_LT(used, 0.03);
}

TEST_F(UsbHost, ExchangesBriskly) {
  const Handle handle = OpenAndClaim();
  ASSERT_TRUE(handle);
  constexpr int kExchanges = 200;
  Report report{};
  const auto start = Clock::now();
  for (int i = 0; i < kExchanges; ++i) {
    ASSERT_EQ(handle.Send(kGetVersion).result, 0);
    ASSERT_EQ(handle.Read(report, 1000).result, 0);
  }
  const double rate = kExchanges / std::chrono::duration<double>(Since(start)).count();
  std::printf("%.0f exchanges per second\n", rate);
  EXPECT_GT(rate, 20);  // a spinning or sleeping transport would be far below
}

}  // namespace
}  // namespace gwq::test
