// The terminal on USB for the framed PIN-pad commands, with the clock in hand.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <list>
#include <ostream>

#include <gwq/frame/transaction.h>
#include "support/guarded_buffer.h"
#include "support/log_capture.h"
#include "support/scripted_usb.h"
#include "support/test_clock.h"
#include "wire/frames.h"

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

inline void PrintTo(Failure failure, std::ostream* out) {
  *out << NameOf(failure);
}

class PinPadRig : public testing::Test {
 protected:
  PinPadRig() {
    ResetClock();
    SetTime(kStart);
    usb_.PlugTerminal();
    usb_.OnTransfer([this](const Transfer& transfer) { Follow(transfer); });
  }

  void Exchange(std::string_view body, const Bytes& answer) {
    ExchangeText(TextOf(wire::PinPadFrame(body)), answer);
  }
  void Accepted(std::string_view body, const Bytes& data = {}) {
    Exchange(body, wire::PinPadAnswer(0, data));
  }
  void Refused(std::string_view body, unsigned status = 0x6A82) {
    Exchange(body, wire::PinPadAnswer(status));
  }
  void Fails(std::string_view body, Failure how) { FailsText(TextOf(wire::PinPadFrame(body)), how); }

  void ExchangeText(std::string_view command, const Bytes& answer) {
    Sent(command);
    Answered(answer);
  }
  void FailsText(std::string_view command, Failure how) {
    how_ = how;
    failing_ = reports_;
    if (how == Failure::kNotOpened) return;
    Sent(command);
  }
  void Sent(std::string_view command) {
    reports_ += static_cast<int>(CutIntoReports(BytesOf(command)).size());
    usb_.ExpectCommand(command);
  }
  // A full report would end the read of a usual answer: a longer one comes with fewer bytes first.
  void Answered(const Bytes& answer) {
    constexpr std::ptrdiff_t kFirst = 1023;
    if (answer.size() <= kReportBytes) {
      usb_.Answer(answer);
      return;
    }
    usb_.Answer(Bytes(answer.begin(), answer.begin() + kFirst));
    usb_.Answer(Bytes(answer.begin() + kFirst, answer.end()));
  }

  // A text of the caller's; a byte read beyond its terminator is noticed.
  char* In(std::string_view text) { return InBytes(std::string(text) + '\0'); }
  char* InBytes(std::string_view bytes) { return inputs_.emplace_back(BytesOf(bytes)).text(); }

  [[nodiscard]] static std::time_t Elapsed() { return Now() - kStart; }

  // The messages that are the functions' own, without the exchanges' and the links'.
  static Lines OwnMessages(const LogCapture& log) {
    Lines own;
    for (const std::string& message : log.Messages()) {
      if (!IsOfTheExchange(message)) own.push_back(message);
    }
    return own;
  }

  // All of the buffer: the bytes, a terminator, and what it was filled with.
  static void ExpectBytes(const GuardedBuffer& buffer, const Bytes& bytes) {
    Bytes expected = Concat(bytes, {0});
    ASSERT_LE(expected.size(), buffer.size());
    expected.resize(buffer.size(), kFill);
    EXPECT_EQ(buffer.Content(), expected);
  }
  static void ExpectText(const GuardedBuffer& buffer, std::string_view text) {
    ExpectBytes(buffer, BytesOf(text));
  }

  static constexpr std::time_t kStart = 1'700'000'000;
  static constexpr int kDrainReads = 5;  // of a drain that brings nothing and takes a second
  static constexpr std::uint8_t kFill = 0x55;
  static constexpr int kUntouched = 0x55555555;

  ScriptedUsb usb_;
  bool failed_ = false;

 private:
  void Follow(const Transfer& transfer) {
    if (!transfer.in) sent_ = transfer.index + 1;
    if (failing_ < 0 || failed_) return;
    if (how_ == Failure::kNotSent && !transfer.in && transfer.index == failing_) Cancel();
    if (how_ == Failure::kCancelled && transfer.in && sent_ == failing_ + 1) Cancel();
    if (how_ == Failure::kNotOpened && transfer.in && sent_ == failing_) {
      failed_ = true;
      usb_.FailListing(-1);
    }
  }
  void Cancel() {
    failed_ = true;
    CancelRead();
  }

  static bool IsOfTheExchange(const std::string& message) {
    static constexpr std::string_view kBeginnings[] = {" TransProc  nPor",
                                                       " TransProcOnlyRead  nPort=",
                                                       "ICC_Open",
                                                       "libusb_",
                                                       "find target",
                                                       "Not find target",
                                                       "m_targetDev ==",
                                                       "driver_active",
                                                       "Cannot Claim",
                                                       "\nOpen Device",
                                                       "Open device success",
                                                       "\nClose Device",
                                                       "Close Device",
                                                       "[ICC_CancelLin",
                                                       "[EndOfRead",
                                                       "COM PACKGET READ",
                                                       " ICC_ReadLinuxCom"};
    return std::any_of(std::begin(kBeginnings), std::end(kBeginnings),
                       [&](std::string_view beginning) { return message.starts_with(beginning); });
  }

  int reports_ = 0;  // expected so far
  int sent_ = 0;
  int failing_ = -1;
  Failure how_ = Failure::kSilent;
  std::list<GuardedBuffer> inputs_;
};

}  // namespace gwq::test
