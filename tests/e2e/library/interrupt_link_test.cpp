// SPDX-License-Identifier: MIT
// The interrupt-transfer link on the real libusb, as a host program drives it.
#include <gtest/gtest.h>

#include <array>
#include <string>

#include "e2e/library/library.h"
#include "support/bytes.h"
#include "usb_ids.h"

namespace gwq::test {
namespace {

class InterruptLink : public testing::Test {
 protected:
  int Open() { return open_(kUsbIdentities[0].vid, kUsbIdentities[0].pid); }
  int Close() { return close_(); }

  int Ask(const std::string& command) {
    Bytes report = PaddedToReports(BytesOf(command));
    EXPECT_EQ(write_(report.data(), static_cast<int>(report.size())), static_cast<int>(report.size()));
    return read_(answer_.data(), static_cast<int>(kReportBytes), 3, nullptr);
  }

  [[nodiscard]] std::string Answer() const { return {answer_.begin(), answer_.end()}; }

  [[nodiscard]] std::string BuildDate() const {
    std::array<char, 64> date{};
    EXPECT_EQ(lib_.build_date(0, 0, 0, date.data()), GWQ_OK);
    return date.data();
  }

  Library lib_;

 private:
  decltype(&ICC_OpenLinuxSdt) open_ = lib_.Get<ICC_OpenLinuxSdt>();
  decltype(&ICC_CloseLinuxSdt) close_ = lib_.Get<ICC_CloseLinuxSdt>();
  decltype(&ICC_WriteLinuxSdt) write_ = lib_.Get<ICC_WriteLinuxSdt>();
  decltype(&ICC_ReadLinuxSdt) read_ = lib_.Get<ICC_ReadLinuxSdt>();
  std::array<unsigned char, 2 * kReportBytes> answer_{};
};

TEST_F(InterruptLink, BringsTheAnswerThatTheTransactionsBring) {
  const std::string date = BuildDate();
  ASSERT_FALSE(date.empty());
  ASSERT_EQ(Open(), 0);
  EXPECT_EQ(Ask("\x1B[0GETVERSION"), static_cast<int>(kReportBytes));
  EXPECT_NE(Answer().find(date), std::string::npos);
  EXPECT_EQ(Close(), 0);
}

TEST_F(InterruptLink, WorksAfterAnyNumberOfOpensAndLeavesTheOtherLinkItsContext) {
  for (int i = 0; i < 200; ++i) {
    ASSERT_EQ(Open(), 0);
    ASSERT_EQ(Close(), 0);
  }
  EXPECT_FALSE(BuildDate().empty());
  ASSERT_EQ(Open(), 0);
  EXPECT_EQ(Ask("\x1B[0GETVERSION"), static_cast<int>(kReportBytes));
  EXPECT_EQ(Close(), 0);
}

TEST_F(InterruptLink, HoldsTheInterfaceAgainstTheTransactions) {
  ASSERT_EQ(Open(), 0);
  std::array<char, 64> date{};
  EXPECT_EQ(lib_.build_date(0, 0, 0, date.data()), GWQ_NOT_OPENED);
  EXPECT_EQ(Close(), 0);
  EXPECT_FALSE(BuildDate().empty());
}

TEST_F(InterruptLink, FindsNoDeviceOfOtherIds) {
  const auto open = lib_.Get<ICC_OpenLinuxSdt>();
  for (int i = 0; i < 20; ++i) ASSERT_EQ(open(0xFFFF, 0xFFFF), -7);
  EXPECT_FALSE(BuildDate().empty());
}

}  // namespace
}  // namespace gwq::test
