// SPDX-License-Identifier: MIT
// The PIN pad's framed commands: a body is sent packed; a status word with data comes back.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

#include <gwq/status_codes.h>
#include "codec/internal/secret.h"
#include "frame/internal/ask.h"

namespace gwq {

// What is drained, and when. Without memory for the packed command the call ends there, so that a
// drain after packing does not happen.
enum class PadDrain {
  kNothing,
  kUsbThenPack,
  kPackThenUsb,
  kPackThenUsbLogged,         // GWQ_NOT_OPENED ends the call
  kPackThenUsbLoggedIgnored,  // no status ends the call
};

// What AskPad returns for a status word other than success.
// Contract: some commands return the pad's own number, the others GWQ_REFUSED; a caller must expect
// positive results from the former.
enum class PadRefusal {
  kRefused,        // GWQ_REFUSED
  kStatusWord,     // the status word, or GWQ_BAD_FRAME
  kCallerDecides,  // GWQ_OK; the caller checks PadAnswer::status
};

struct PadCommand {
  int code;
  int timeout_ms;  // in a PIN entry the customer's time is added
  PadDrain drain = PadDrain::kNothing;
  PadRefusal refusal = PadRefusal::kRefused;
  const char* exchanged_log = nullptr;  // %d: the exchange's status
  const char* unpacked_log = nullptr;   // %d: the status word
};

namespace pad {

inline constexpr PadCommand kReadPublicKey{.code = 0x3002,
                                           .timeout_ms = 6000,
                                           .refusal = PadRefusal::kStatusWord,
                                           .exchanged_log = "TransProc iRet=%d",
                                           .unpacked_log = "UnPackData iRet=%d"};
inline constexpr PadCommand kCreateFactor1{.code = 0x3003, .timeout_ms = 2000};
inline constexpr PadCommand kLoadKey1{.code = 0x3004,
                                      .timeout_ms = 4000,
                                      .drain = PadDrain::kPackThenUsbLoggedIgnored,
                                      .refusal = PadRefusal::kCallerDecides,
                                      .exchanged_log = "TransProc  iRet=%d,",
                                      .unpacked_log = "UnPackData  iRet=%d,"};
inline constexpr PadCommand kEnterPin{.code = 0x3005,
                                      .timeout_ms = 2000,
                                      .drain = PadDrain::kPackThenUsb,
                                      .refusal = PadRefusal::kCallerDecides,
                                      .exchanged_log = "TransProcByEnd iRet=%d",
                                      .unpacked_log = "UnPackData iRet=%d"};
inline constexpr PadCommand kSetType{.code = 0x3010, .timeout_ms = 2000, .refusal = PadRefusal::kStatusWord};
inline constexpr PadCommand kSetFill{.code = 0x3011, .timeout_ms = 2000, .drain = PadDrain::kUsbThenPack};
inline constexpr PadCommand kSetLength{.code = 0x3012, .timeout_ms = 2000, .drain = PadDrain::kUsbThenPack};
inline constexpr PadCommand kSetEndRule{.code = 0x3013, .timeout_ms = 2000, .drain = PadDrain::kUsbThenPack};
inline constexpr PadCommand kSetSound{.code = 0x3014, .timeout_ms = 2000};
inline constexpr PadCommand kDigest{.code = 0x3015,
                                    .timeout_ms = 3000,
                                    .drain = PadDrain::kPackThenUsbLogged,
                                    .refusal = PadRefusal::kStatusWord,
                                    .exchanged_log = "TransProc iRet=%d",
                                    .unpacked_log = "UnPackData iRet=%d"};
inline constexpr PadCommand kSetAccount{.code = 0x3016, .timeout_ms = 2000};
inline constexpr PadCommand kReadDeviceId{
    .code = 0x3018, .timeout_ms = 3000, .refusal = PadRefusal::kCallerDecides};
inline constexpr PadCommand kReadFactor{.code = 0x3019, .timeout_ms = 2000};
inline constexpr PadCommand kSetMode{.code = 0x3032, .timeout_ms = 2000};
inline constexpr PadCommand kGetType{.code = 0x3033, .timeout_ms = 2000, .refusal = PadRefusal::kStatusWord};
inline constexpr PadCommand kGetLength{.code = 0x3035, .timeout_ms = 2000, .drain = PadDrain::kUsbThenPack};
inline constexpr PadCommand kLoadKey2{.code = 0x3039,
                                      .timeout_ms = 4000,
                                      .drain = PadDrain::kPackThenUsbLoggedIgnored,
                                      .refusal = PadRefusal::kCallerDecides,
                                      .exchanged_log = "TransProc  iRet=%d,",
                                      .unpacked_log = "UnPackData  iRet=%d,"};
inline constexpr PadCommand kCreateFactor2{.code = 0x303A, .timeout_ms = 2000};
inline constexpr PadCommand kEnterPinShowing{.code = 0x4030,
                                             .timeout_ms = 2000,
                                             .drain = PadDrain::kPackThenUsb,
                                             .refusal = PadRefusal::kCallerDecides,
                                             .exchanged_log = "TransProc iRet=%d",
                                             .unpacked_log = "UnPackData iRet=%d"};

}  // namespace pad

// A command's body under construction: the command's two bytes, then its arguments. Cut to `room`,
// which includes a terminator.
class PadBody {
 public:
  static constexpr std::size_t kDefaultRoom = 256;
  explicit PadBody(const PadCommand& command, std::size_t room = kDefaultRoom);

  PadBody& Text(std::string_view bytes);
  // The low byte of a number.
  PadBody& Byte(int number);

  // False when there was no memory.
  explicit operator bool() const { return static_cast<bool>(bytes_); }

  [[nodiscard]] const PadCommand& command() const { return command_; }
  // Contract: a body ends before its first zero byte, also one in raw key bytes; what follows in
  // the arguments does not reach the pad.
  [[nodiscard]] std::span<const unsigned char> Sent() const;

 private:
  const PadCommand& command_;
  SecretHeap<char> bytes_;
  std::size_t size_ = 0;
};

class PadAnswer {
 public:
  // The pad's status word, or GWQ_BAD_FRAME.
  [[nodiscard]] int status() const { return status_; }
  [[nodiscard]] std::span<const unsigned char> data() const {
    return {data_.data(), static_cast<std::size_t>(length_)};
  }
  // Copies the data and a terminator.
  void CopyTo(char* out) const;
  // The answer as received, with its frame.
  [[nodiscard]] std::string_view raw() const { return raw_.text(); }

 private:
  friend int AskPad(Endpoint endpoint, const PadBody& body, PadAnswer& answer, int customer_s);
  void Unpack();

  AnswerText<1024> raw_;
  SecretArray<unsigned char, 1024> data_;
  int length_ = 0;
  int status_ = GWQ_BAD_FRAME;
};

// Drains, packs the body, sends it and unpacks the answer. Returns GWQ_BAD_ARGUMENT without memory,
// the status of a failed exchange, or what the command's PadRefusal makes of the status word. The
// customer's time is added to the command's time-out.
int AskPad(Endpoint endpoint, const PadBody& body, PadAnswer& answer, int customer_s = 0);

// Sends a setting of one byte.
int SetPad(Endpoint endpoint, const PadCommand& setting, int value);

}  // namespace gwq
