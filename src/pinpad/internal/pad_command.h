// The PIN pad's framed commands: a body goes out packed, a status word with data comes back.
#pragma once

#include <span>
#include <string_view>

#include <gwq/status_codes.h>
#include "codec/internal/secret.h"
#include "frame/internal/ask.h"

namespace gwq {

// What is drained, and when: a command for which there is no memory is not packed, and nothing happens after that.
enum class PadDrain {
  kNothing,
  kUsbThenPack,
  kPackThenUsb,
  kPackThenUsbLogged,         // a terminal that is not there ends the call
  kPackThenUsbLoggedIgnored,  // the exchange will tell
};

// What AskPad makes of a status word.
enum class PadRefusal {
  kRefused,     // GWQ_REFUSED unless it is success
  kStatusWord,  // it is the result
  kJudged,      // the caller looks at it
};

struct PadCommand {
  int code;
  int timeout_ms;  // of an entry: what the pad gets beyond the customer's own time
  PadDrain drain = PadDrain::kNothing;
  PadRefusal refusal = PadRefusal::kRefused;
  const char* exchanged_log = nullptr;  // %d: the exchange's status
  const char* unpacked_log = nullptr;   // %d: the status word
};

// All of them.
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
                                      .refusal = PadRefusal::kJudged,
                                      .exchanged_log = "TransProc  iRet=%d,",
                                      .unpacked_log = "UnPackData  iRet=%d,"};
inline constexpr PadCommand kEnterPin{.code = 0x3005,
                                      .timeout_ms = 2000,
                                      .drain = PadDrain::kPackThenUsb,
                                      .refusal = PadRefusal::kJudged,
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
inline constexpr PadCommand kReadDeviceId{.code = 0x3018, .timeout_ms = 3000, .refusal = PadRefusal::kJudged};
inline constexpr PadCommand kReadFactor{.code = 0x3019, .timeout_ms = 2000};
inline constexpr PadCommand kSetMode{.code = 0x3032, .timeout_ms = 2000};
inline constexpr PadCommand kGetType{.code = 0x3033, .timeout_ms = 2000, .refusal = PadRefusal::kStatusWord};
inline constexpr PadCommand kGetLength{.code = 0x3035, .timeout_ms = 2000, .drain = PadDrain::kUsbThenPack};
inline constexpr PadCommand kLoadKey2{.code = 0x3039,
                                      .timeout_ms = 4000,
                                      .drain = PadDrain::kPackThenUsbLoggedIgnored,
                                      .refusal = PadRefusal::kJudged,
                                      .exchanged_log = "TransProc  iRet=%d,",
                                      .unpacked_log = "UnPackData  iRet=%d,"};
inline constexpr PadCommand kCreateFactor2{.code = 0x303A, .timeout_ms = 2000};
inline constexpr PadCommand kEnterPinShowing{.code = 0x4030,
                                             .timeout_ms = 2000,
                                             .drain = PadDrain::kPackThenUsb,
                                             .refusal = PadRefusal::kJudged,
                                             .exchanged_log = "TransProc iRet=%d",
                                             .unpacked_log = "UnPackData iRet=%d"};

}  // namespace pad

// A command's body under construction: the command's two bytes, then its arguments. What does not fit into
// the room, where a terminator is kept, is cut.
class PadBody {
 public:
  static constexpr std::size_t kUsualRoom = 256;
  explicit PadBody(const PadCommand& command, std::size_t room = kUsualRoom);

  PadBody& Text(std::string_view bytes);
  // The low byte of a number.
  PadBody& Byte(int number);

  // False when there was no memory.
  explicit operator bool() const { return static_cast<bool>(bytes_); }

  [[nodiscard]] const PadCommand& command() const { return command_; }
  // What the pad gets: everything before the first zero byte.
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
  // The answer as it came, frame and all.
  [[nodiscard]] std::string_view raw() const { return raw_.text(); }

 private:
  friend int AskPad(Endpoint endpoint, const PadBody& body, int timeout_ms, PadAnswer& answer);
  void Unpack();

  AnswerText<1024> raw_;
  SecretArray<unsigned char, 1024> data_;
  int length_ = 0;
  int status_ = GWQ_BAD_FRAME;
};

// Drains, packs the body, sends it and takes the answer apart. Returns GWQ_BAD_ARGUMENT when there is no memory, the failed
// exchange's status, or what the command makes of the status word.
int AskPad(Endpoint endpoint, const PadBody& body, int timeout_ms, PadAnswer& answer);

// In the command's own time.
inline int AskPad(Endpoint endpoint, const PadBody& body, PadAnswer& answer) {
  return AskPad(endpoint, body, body.command().timeout_ms, answer);
}

// Sends a setting of one byte.
int SetPad(Endpoint endpoint, const PadCommand& setting, int value);

// Copies data into a caller's buffer and terminates them.
void CopyOut(std::span<const unsigned char> data, char* out);

}  // namespace gwq
