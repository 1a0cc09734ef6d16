// The terminal on USB for the counter commands, with the clock in hand.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <gwq/frame/transaction.h>
#include <gwq/pinpad/counter.h>
#include "support/log_capture.h"
#include "support/scripted_usb.h"
#include "support/test_clock.h"
#include "wire/frames.h"

namespace gwq::test {

class CounterRig : public testing::Test {
 protected:
  CounterRig() {
    ResetClock();
    SetTime(kStart);
    usb_.PlugTerminal();
  }

  // A cancel with the transfer out of this number makes its exchange fail with -10.
  void FailSending(int index) {
    usb_.OnTransfer([index](const Transfer& transfer) {
      if (!transfer.in && transfer.index == index) CancelRead();
    });
  }

  // The messages that are the functions' own, without the exchanges' and the link's.
  static std::vector<std::string> OwnMessages(const LogCapture& log) {
    std::vector<std::string> own;
    for (const std::string& message : log.Messages()) {
      if (IsOwn(message)) own.push_back(message);
    }
    return own;
  }

  static constexpr std::time_t kStart = 1'700'000'000;
  static constexpr int kDrainSeconds = 1;
  static constexpr int kDrainReads = 5;

  ScriptedUsb usb_;

 private:
  static bool IsOwn(const std::string& message) {
    for (const char* word : {"GWQ_", "port:", "szData=", "VerBuildDate=", "nVerDate:"}) {
      if (message.find(word) != std::string::npos) return true;
    }
    return false;
  }
};

}  // namespace gwq::test
