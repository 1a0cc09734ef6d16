// SPDX-License-Identifier: MIT
// A host on the USB side: libusb with owners, and the few steps that tests share.
#pragma once

#include <gtest/gtest.h>
#include <libusb.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace gwq::test {

using Clock = std::chrono::steady_clock;
using Report = std::array<unsigned char, 1024>;

inline constexpr unsigned char kOut = 0x02;
inline constexpr unsigned char kIn = 0x81;
inline constexpr std::string_view kGetVersion = "\033[0GETVERSION";

struct Transfer {
  int result = LIBUSB_ERROR_OTHER;
  int count = 0;
};

struct UsbId {
  std::uint16_t vendor;
  std::uint16_t product;
};

// The identity that this run's terminal was given, from GWQ_TEST_USB_ID.
inline UsbId ExpectedId() {
  const char* text = std::getenv("GWQ_TEST_USB_ID");
  const std::string id = text != nullptr ? text : "0:0";
  const auto hex = [](const std::string& part) {
    return static_cast<std::uint16_t>(std::stoul(part, nullptr, 16));
  };
  return {hex(id.substr(0, id.find(':'))), hex(id.substr(id.find(':') + 1))};
}

class Handle {
 public:
  Handle() = default;
  explicit Handle(libusb_device_handle* handle) : handle_(handle) {}
  Handle(Handle&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
  Handle& operator=(Handle&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
  }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;
  ~Handle() {
    if (handle_ != nullptr) libusb_close(handle_);
  }
  explicit operator bool() const { return handle_ != nullptr; }
  [[nodiscard]] libusb_device_handle* Get() const { return handle_; }

  [[nodiscard]] Transfer Send(std::string_view command) const {
    Report report{};
    command.copy(reinterpret_cast<char*>(report.data()), report.size());
    return Move(kOut, report.data(), static_cast<int>(report.size()), 1000);
  }
  [[nodiscard]] Transfer Read(Report& report, unsigned timeout_ms) const {
    return Move(kIn, report.data(), static_cast<int>(report.size()), timeout_ms);
  }
  [[nodiscard]] Transfer Move(unsigned char endpoint, unsigned char* data, int size,
                              unsigned timeout_ms) const {
    Transfer transfer;
    transfer.result = libusb_bulk_transfer(handle_, endpoint, data, size, &transfer.count, timeout_ms);
    return transfer;
  }

 private:
  libusb_device_handle* handle_ = nullptr;
};

class UsbFixture : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(libusb_init(&context_), 0); }
  void TearDown() override {
    if (context_ != nullptr) libusb_exit(context_);
  }

  // Empty when there is no such device.
  Handle Open() {
    const UsbId id = ExpectedId();
    return Handle(libusb_open_device_with_vid_pid(context_, id.vendor, id.product));
  }

  // Opened and claimed, whoever drove the interface before.
  Handle OpenAndClaim() {
    Handle handle = Open();
    if (!handle) return handle;
    if (libusb_kernel_driver_active(handle.Get(), 0) == 1) libusb_detach_kernel_driver(handle.Get(), 0);
    if (libusb_claim_interface(handle.Get(), 0) != 0) return {};
    return handle;
  }

  libusb_context* context_ = nullptr;
};

// An answer followed by nothing but padding.
inline testing::AssertionResult IsVersionAnswer(const Report& report) {
  const std::string text(report.begin(), report.end());
  const std::size_t end = text.find('\003');
  if (text[0] != '\002' || end == std::string::npos) return testing::AssertionFailure() << "no STX ... ETX";
  if (text.find('|') >= end)
    return testing::AssertionFailure() << "no version and date in " << text.substr(0, end);
  if (text.find_first_not_of('\0', end + 1) != std::string::npos)
    return testing::AssertionFailure() << "bytes behind the answer";
  return testing::AssertionSuccess();
}

inline Clock::duration Since(Clock::time_point start) {
  return Clock::now() - start;
}

}  // namespace gwq::test
