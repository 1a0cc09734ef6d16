// SPDX-License-Identifier: MIT
// The terminal on USB for the framed PIN-pad commands, with the clock in hand.
#pragma once

#include <list>

#include "support/guarded_buffer.h"
#include "support/terminal_rig.h"
#include "wire/frames.h"

namespace gwq::test {

class PinPadRig : public TerminalRig {
 protected:
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
    if (how != Failure::kSilent) Fail(how, reports_);
    if (how != Failure::kNotOpened) Sent(command);
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

  static constexpr std::uint8_t kFill = 0x55;
  static constexpr int kUntouched = 0x55555555;

 private:
  int reports_ = 0;  // expected so far
  std::list<GuardedBuffer> inputs_;
};

}  // namespace gwq::test
