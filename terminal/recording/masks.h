// SPDX-License-Identifier: MIT
// Finds keys, PINs and numbers in what passes on the wire. It looks at each byte as it comes,
// and where it cannot be sure, it takes the byte for a secret. What a command carries and what may
// answer it says its row (protocol/commands.h); what a command without a row carries is masked.
//
// From the host:
//   ESC M ..., ESC S ... CR LF      the key record
//   ESC I d d account CR LF         the account
//   ESC [1GETENCDATA STX ... ETX    the data in clear
//   a PIN-pad frame                 arguments and LRC, but for commands known to carry no secret
// From the terminal:
//   digits CR                       a PIN in clear
//   STX split 10 ... ETX            a PIN block
//   a PIN-pad frame                 data and LRC, unless it is one byte, a public key or the device id
//   A digits F, B digits F          a number; of B only once a number was asked for
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "protocol/commands.h"
#include "recording/transfer.h"

namespace gwq::terminal::recording {

// The terminal's side. What the host asks for helps to understand it.
class AnswerMask {
 public:
  Masks Feed(std::span<const std::uint8_t> bytes);

  // The host has spoken: an answer that was not read to its end will not go on.
  void HostSpoke() { state_ = State::kStart; }
  void ExpectSecret() { secret_asked_ = true; }
  void Asked(const protocol::CommandRow& row);
  void FrameAsked(const protocol::CommandRow* row);  // null: an unknown one

 private:
  enum class State { kStart, kStx, kOpen, kSecret, kPin, kNumber, kFrame, kPacketHeader, kPacketBody };
  [[nodiscard]] bool Take(std::span<const std::uint8_t> rest);
  [[nodiscard]] bool Begin(std::uint8_t byte);
  [[nodiscard]] bool TakeAfterStx(std::span<const std::uint8_t> rest);
  [[nodiscard]] bool TakeSecret(std::uint8_t byte, std::uint8_t end);
  [[nodiscard]] bool TakeNumber(std::uint8_t byte);
  [[nodiscard]] bool TakeFrame(std::uint8_t byte);
  void TakePacketHeader(std::uint8_t byte);
  [[nodiscard]] bool IsSecretData(std::size_t size) const;

  State state_ = State::kStart;
  bool secret_asked_ = false;
  bool number_asked_ = false;
  bool hides_digits_ = false;
  const protocol::CommandRow* frame_asked_ = nullptr;
  std::size_t count_ = 0;
  std::size_t value_ = 0;
};

// The host's side.
class HostMask {
 public:
  Masks Feed(std::span<const std::uint8_t> bytes, AnswerMask& answers);

 private:
  enum class State {
    kIdle,
    kEscape,
    kLine,
    kAccount,
    kSecretLine,
    kWord,
    kOpen,
    kSecret,
    kStx,
    kFrame,
    kPacketHeader,
    kPacketBody
  };
  [[nodiscard]] bool Take(std::uint8_t byte, AnswerMask& answers);
  void TakeIdle(std::uint8_t byte, AnswerMask& answers);
  void TakeLetter(std::uint8_t byte, AnswerMask& answers);
  [[nodiscard]] bool TakeLine(std::uint8_t byte, AnswerMask& answers);
  [[nodiscard]] bool TakeWord(std::uint8_t byte, AnswerMask& answers);
  [[nodiscard]] bool TakeAfterStx(std::uint8_t byte);
  [[nodiscard]] bool TakeFrame(std::uint8_t byte, AnswerMask& answers);
  void TakePacketHeader(std::uint8_t byte);

  State state_ = State::kIdle;
  std::string word_;
  std::size_t count_ = 0;
  std::size_t value_ = 0;
};

// Both sides of one line. A copy can look ahead.
class LineMask {
 public:
  Masks FromHost(std::span<const std::uint8_t> bytes);
  Masks ToHost(std::span<const std::uint8_t> bytes) { return answers_.Feed(bytes); }

 private:
  HostMask host_;
  AnswerMask answers_;
};

}  // namespace gwq::terminal::recording
