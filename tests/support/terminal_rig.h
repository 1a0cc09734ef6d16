// SPDX-License-Identifier: MIT
// The terminal on USB, with the clock in hand, and the ways in which an exchange with it fails.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include <gwq/frame/transaction.h>
#include "support/log_capture.h"
#include "support/named.h"
#include "support/scripted_usb.h"
#include "support/test_clock.h"

namespace gwq::test {

using Lines = std::vector<std::string>;

inline std::string TextOf(const Bytes& bytes) {
  return {bytes.begin(), bytes.end()};
}

// How an exchange can fail, with the status that it then has.
enum class Failure { kNotSent = -10, kSilent = -11, kCancelled = -23, kNotOpened = -3 };

inline constexpr Failure kFailures[] = {Failure::kNotSent, Failure::kSilent, Failure::kCancelled,
                                        Failure::kNotOpened};

inline int StatusOf(Failure failure) {
  return static_cast<int>(failure);
}

inline std::string NameOf(Failure failure) {
  switch (failure) {
    case Failure::kNotSent:
      return "NotSent";
    case Failure::kSilent:
      return "Silent";
    case Failure::kCancelled:
      return "Cancelled";
    default:
      return "NotOpened";
  }
}

class TerminalRig : public testing::Test {
 protected:
  TerminalRig() {
    ResetClock();
    SetTime(kStart);
    usb_.PlugTerminal();
  }

  // The exchange that sends the report of this number, from 0, fails so. Before the first report,
  // it is the drain that a cancel ends; a terminal that cannot be opened vanishes in the read
  // before the exchange.
  void Fail(Failure how, int report) {
    failed_ = false;
    usb_.OnTransfer([this, how, report](const Transfer& transfer) {
      if (failed_ || !Strikes(how, report, transfer)) return;
      failed_ = true;
      if (how == Failure::kNotOpened) usb_.FailListing(-1);
      if (how != Failure::kNotOpened) CancelRead();
    });
  }
  void FailSending(int report) { Fail(Failure::kNotSent, report); }
  // In the first read after so many reports.
  void CancelReading(int sent) { Fail(Failure::kCancelled, sent - 1); }
  [[nodiscard]] bool Failed() const { return failed_; }

  // The seconds since the test began.
  [[nodiscard]] static std::time_t Elapsed() { return Now() - kStart; }

  // The messages that are the functions' own, without the exchanges' and the links'.
  static Lines OwnMessages(const LogCapture& log) {
    Lines own = log.Messages();
    std::erase_if(own, IsOfTheExchange);
    return own;
  }

  static constexpr std::time_t kStart = 1'700'000'000;
  static constexpr int kDrainSeconds = 1;
  static constexpr int kDrainReads = 5;  // of a drain that brings nothing

  ScriptedUsb usb_;

 private:
  [[nodiscard]] bool Strikes(Failure how, int report, const Transfer& transfer) const {
    if (how == Failure::kNotSent) return !transfer.in && transfer.index == report;
    const int sent = usb_.Count("out ");
    return transfer.in && sent == (how == Failure::kCancelled ? report + 1 : report);
  }

  static bool IsOfTheExchange(std::string_view message) {
    static constexpr std::string_view kBeginnings[] = {" TransProc  nPor", " TransProcOnlyRead  nPort=",
                                                       "TransProc nPort=", "ICC_Open",
                                                       "libusb_",          "find target",
                                                       "Not find target",  "m_targetDev",
                                                       "driver_active",    "Cannot Claim",
                                                       "\nOpen Device",    "Open device success",
                                                       "\nClose Device",   "Close Device",
                                                       "[ICC_Cancel",      "[EndOfRead",
                                                       "COM PACKGET READ", " ICC_ReadLinuxCom"};
    return std::any_of(std::begin(kBeginnings), std::end(kBeginnings),
                       [&](std::string_view beginning) { return message.starts_with(beginning); });
  }

  bool failed_ = false;
};

}  // namespace gwq::test
