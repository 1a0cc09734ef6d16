// SPDX-License-Identifier: MIT
#include "recording/masks.h"

#include <algorithm>
#include <array>

#include "device/bytes.h"

namespace gwq::terminal {
namespace {

constexpr std::size_t kMostOfAWord = 64;
constexpr std::size_t kPacketHeaderEnd = 4;  // check byte and length, behind STX and type
constexpr std::size_t kFrameHead = 8;        // nibbles of length, and of command or status
constexpr std::size_t kLeastPublicKey = 64;
constexpr unsigned kAskDeviceId = 0x3018;
constexpr unsigned kAskPin = 0x3005;
constexpr unsigned kAskPinWithText = 0x4030;

// Neither their arguments nor what can be told from them is a secret.
constexpr std::array<unsigned, 15> kOpenFrames = {0x3002, 0x3003, kAskPin, 0x3010, 0x3011,
                                                  0x3012, 0x3013, 0x3014,  0x3018, 0x3019,
                                                  0x3032, 0x3033, 0x3035,  0x303A, kAskPinWithText};

bool IsNibble(std::uint8_t byte) {
  return byte >= 0x30 && byte <= 0x3F;
}
bool IsDigit(std::uint8_t byte) {
  return byte >= '0' && byte <= '9';
}
bool IsPacketType(std::uint8_t byte) {
  return byte >= 1 && byte <= 4;
}

// A packet that is shorter than it says must not hide the commands behind it.
bool BeginsCommand(std::span<const std::uint8_t> bytes) {
  if (bytes.size() < 3) return false;
  if (bytes[0] == kStx) return IsNibble(bytes[1]) && IsNibble(bytes[2]);
  if (bytes[0] == kEntryMode0 || bytes[0] == kEntryMode1) return bytes[1] == 0;
  if (bytes[0] != kEsc) return false;
  if (bytes[1] == '[') return IsDigit(bytes[2]);
  return std::string_view("MSIFAR1").find(static_cast<char>(bytes[1])) != std::string_view::npos;
}

class SpanList {
 public:
  void Add(std::size_t offset, bool secret) {
    if (!secret) return;
    if (!masks_.empty() && masks_.back().offset + masks_.back().size == offset) {
      ++masks_.back().size;
    } else {
      masks_.push_back({offset, 1});
    }
  }
  [[nodiscard]] Masks Take() { return std::move(masks_); }

 private:
  Masks masks_;
};

}  // namespace

Masks LineMask::FromHost(std::span<const std::uint8_t> bytes) {
  answers_.HostSpoke();
  return host_.Feed(bytes, answers_);
}

// ---- The host's side

Masks HostMask::Feed(std::span<const std::uint8_t> bytes, AnswerMask& answers) {
  if (state_ == State::kPacketBody && BeginsCommand(bytes)) state_ = State::kIdle;
  SpanList spans;
  for (std::size_t i = 0; i < bytes.size(); ++i) spans.Add(i, Take(bytes[i], answers));
  return spans.Take();
}

bool HostMask::Take(std::uint8_t byte, AnswerMask& answers) {
  if (state_ == State::kPacketBody) {
    if (--value_ == 0) state_ = State::kIdle;
    return false;
  }
  if (state_ == State::kPacketHeader) return TakePacketHeader(byte), false;
  if (byte == kEsc || byte == 0) {
    state_ = byte == kEsc ? State::kEscape : State::kIdle;
    return false;
  }
  switch (state_) {
    case State::kIdle:
      return TakeIdle(byte, answers), false;
    case State::kEscape:
      return TakeLetter(byte, answers), false;
    case State::kWord:
      return TakeWord(byte, answers), false;
    case State::kStx:
      return TakeAfterStx(byte);
    case State::kFrame:
      return TakeFrame(byte, answers);
    case State::kOpen:
    case State::kSecret: {
      const bool secret = state_ == State::kSecret && byte != kEtx;
      if (byte == kEtx) state_ = State::kIdle;
      return secret;
    }
    default:
      return TakeLine(byte, answers);
  }
}

void HostMask::TakeIdle(std::uint8_t byte, AnswerMask& answers) {
  if (byte == kStx) state_ = State::kStx;
  if (byte == kEntryMode0 || byte == kEntryMode1) answers.ExpectSecret();
}

void HostMask::TakeLetter(std::uint8_t byte, AnswerMask& answers) {
  word_.clear();
  count_ = 0;
  state_ = State::kLine;
  if (byte == '[') state_ = State::kWord;
  if (byte == 'M' || byte == 'S') state_ = State::kSecretLine;
  if (byte == 'I') state_ = State::kAccount;
  if (byte == 'I' || byte == 'F') answers.ExpectSecret();
}

bool HostMask::TakeLine(std::uint8_t byte, AnswerMask& answers) {
  const bool secret = state_ == State::kSecretLine || (state_ == State::kAccount && ++count_ > 2);
  if (byte == '\n') state_ = State::kIdle;
  if (state_ == State::kLine) TakeIdle(byte, answers);
  return secret && byte != kCr && byte != '\n';
}

void HostMask::TakeWord(std::uint8_t byte, AnswerMask& answers) {
  if (byte != kStx) {
    if (word_.size() < kMostOfAWord) word_ += static_cast<char>(byte);
    if (byte == kEntryMode0 || byte == kEntryMode1) answers.ExpectSecret();
    return;
  }
  const auto has = [this](const char* part) { return word_.find(part) != std::string::npos; };
  state_ = has("GETENCDATA") ? State::kSecret : State::kOpen;
  if (has("GETINNO")) answers.ExpectNumber();
}

bool HostMask::TakeAfterStx(std::uint8_t byte) {
  count_ = 1;
  value_ = byte & 0x0F;
  if (IsNibble(byte)) {
    state_ = State::kFrame;
    return false;
  }
  if (IsPacketType(byte)) {
    state_ = State::kPacketHeader;
    count_ = value_ = 0;
    return false;
  }
  state_ = State::kSecret;
  return true;
}

bool HostMask::TakeFrame(std::uint8_t byte, AnswerMask& answers) {
  if (byte == kEtx) {
    state_ = State::kIdle;
    return false;
  }
  if (!IsNibble(byte)) {
    state_ = State::kSecret;
    return true;
  }
  value_ = (value_ << 4 | (byte & 0x0F)) & 0xFFFF;
  if (++count_ < kFrameHead) return false;
  const auto code = static_cast<unsigned>(value_);
  answers.FrameAsked(code);
  if (code == kAskPin || code == kAskPinWithText) answers.ExpectSecret();
  const bool open = std::find(kOpenFrames.begin(), kOpenFrames.end(), code) != kOpenFrames.end();
  state_ = open ? State::kOpen : State::kSecret;
  return false;
}

void HostMask::TakePacketHeader(std::uint8_t byte) {
  if (count_ > 0) value_ = value_ << 8 | byte;
  if (++count_ < kPacketHeaderEnd) return;
  state_ = value_ == 0 ? State::kIdle : State::kPacketBody;
}

// ---- The terminal's side

Masks AnswerMask::Feed(std::span<const std::uint8_t> bytes) {
  SpanList spans;
  for (std::size_t i = 0; i < bytes.size(); ++i) spans.Add(i, Take(bytes.subspan(i)));
  return spans.Take();
}

bool AnswerMask::Take(std::span<const std::uint8_t> rest) {
  const std::uint8_t byte = rest.front();
  switch (state_) {
    case State::kStart:
      return Begin(byte);
    case State::kStx:
      return TakeAfterStx(rest);
    case State::kOpen:
      if (byte == kEtx || byte == 0) state_ = State::kStart;
      return false;
    case State::kSecret:
      return TakeSecret(byte, kEtx);
    case State::kPin:
      return TakeSecret(byte, kCr);
    case State::kNumber:
      return TakeNumber(byte);
    case State::kFrame:
      return TakeFrame(byte);
    case State::kPacketHeader:
      return TakePacketHeader(byte), false;
    case State::kPacketBody:
      if (--value_ == 0) state_ = State::kStart;
      return false;
  }
  return true;
}

bool AnswerMask::Begin(std::uint8_t byte) {
  if (byte == 0 || byte == kAccepted || byte == kNotAccepted || byte == 1 || byte == kEtx) return false;
  if (byte == kStx) {
    state_ = State::kStx;
    return false;
  }
  if (std::string_view("ABCTR").find(static_cast<char>(byte)) != std::string_view::npos) {
    state_ = State::kNumber;
    hides_digits_ = byte == 'A' || number_asked_;
    return false;
  }
  const bool secret = IsNibble(byte) || secret_asked_ || number_asked_;
  state_ = IsNibble(byte) ? State::kPin : secret ? State::kSecret : State::kOpen;
  return secret;
}

// A text may begin with digits too, a version for one.
bool AnswerMask::TakeAfterStx(std::span<const std::uint8_t> rest) {
  const std::uint8_t byte = rest.front();
  count_ = value_ = 0;
  if (IsPacketType(byte)) {
    state_ = State::kPacketHeader;
    return false;
  }
  state_ = byte == 0 ? State::kStart : State::kOpen;
  if (!IsNibble(byte)) return false;
  const auto end = std::find_if_not(rest.begin(), rest.end(), IsNibble);
  const bool split = end == rest.end() || *end == kEtx || *end == 0;
  if (split && byte == '0') {
    state_ = State::kFrame;
    return TakeFrame(byte);
  }
  if (split || secret_asked_) state_ = State::kSecret;
  return state_ == State::kSecret;
}

bool AnswerMask::TakeSecret(std::uint8_t byte, std::uint8_t end) {
  const bool over = byte == end || byte == kEtx || byte == 0;
  if (over) {
    state_ = State::kStart;
    secret_asked_ = false;
  }
  return !over;
}

bool AnswerMask::TakeNumber(std::uint8_t byte) {
  if (byte == 'F' || byte == 0) {
    state_ = State::kStart;
    number_asked_ = false;
  }
  return hides_digits_ && IsDigit(byte);
}

bool AnswerMask::TakeFrame(std::uint8_t byte) {
  if (!IsNibble(byte)) {
    state_ = byte == kEtx || byte == 0 ? State::kStart : State::kSecret;
    return state_ == State::kSecret;
  }
  if (++count_ <= kFrameHead / 2) value_ = value_ << 4 | (byte & 0x0F);
  if (count_ == kFrameHead) state_ = IsSecretData(value_) ? State::kSecret : State::kOpen;
  return false;
}

// `size` counts the status word.
bool AnswerMask::IsSecretData(std::size_t size) const {
  const std::size_t data = size - std::min<std::size_t>(size, 2);
  if (data <= 1 || data >= kLeastPublicKey) return false;
  return frame_asked_ != kAskDeviceId || data == 8 || data == 16;
}

void AnswerMask::TakePacketHeader(std::uint8_t byte) {
  if (count_ > 0) value_ = value_ << 8 | byte;
  if (++count_ < kPacketHeaderEnd) return;
  state_ = value_ == 0 ? State::kStart : State::kPacketBody;
}

}  // namespace gwq::terminal
