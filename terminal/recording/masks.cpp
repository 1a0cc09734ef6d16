// SPDX-License-Identifier: MIT
#include "recording/masks.h"

#include <algorithm>

#include "protocol/marks.h"

namespace gwq::terminal::recording {
namespace {

constexpr std::size_t kPacketHeaderEnd = 4;  // check byte and length, behind STX and type
constexpr std::size_t kFrameHead = 8;        // nibbles of length, and of command or status
constexpr std::size_t kMinPublicKey = 64;

bool IsNibble(std::uint8_t byte) {
  return byte >= 0x30 && byte <= 0x3F;
}
bool IsDigit(std::uint8_t byte) {
  return byte >= '0' && byte <= '9';
}
bool IsPacketType(std::uint8_t byte) {
  return byte >= 1 && byte <= 4;
}

bool BeginsCommand(std::uint8_t byte) {
  return byte == protocol::kStx || (byte >= protocol::kEntryMode1 && byte <= protocol::kEntryEnd);
}

// A packet that is shorter than it says must not hide the commands behind it.
bool BeginsCommand(std::span<const std::uint8_t> bytes) {
  if (bytes.size() < 3) return false;
  if (bytes[0] == protocol::kStx) return IsNibble(bytes[1]) && IsNibble(bytes[2]);
  if (bytes[0] == protocol::kEntryMode0 || bytes[0] == protocol::kEntryMode1) return bytes[1] == 0;
  if (bytes[0] != protocol::kEsc) return false;
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
  if (byte == protocol::kEsc || byte == 0) {
    state_ = byte == protocol::kEsc ? State::kEscape : State::kIdle;
    return false;
  }
  switch (state_) {
    case State::kIdle:
      return TakeIdle(byte, answers), false;
    case State::kEscape:
      return TakeLetter(byte, answers), false;
    case State::kWord:
      return TakeWord(byte, answers);
    case State::kStx:
      return TakeAfterStx(byte);
    case State::kFrame:
      return TakeFrame(byte, answers);
    case State::kOpen:
    case State::kSecret: {
      const bool secret = state_ == State::kSecret && byte != protocol::kEtx;
      if (byte == protocol::kEtx) state_ = State::kIdle;
      return secret;
    }
    default:
      return TakeLine(byte, answers);
  }
}

void HostMask::TakeIdle(std::uint8_t byte, AnswerMask& answers) {
  if (byte == protocol::kStx) state_ = State::kStx;
  if (byte == protocol::kEntryMode0 || byte == protocol::kEntryMode1) answers.ExpectSecret();
}

void HostMask::TakeLetter(std::uint8_t byte, AnswerMask& answers) {
  word_.clear();
  count_ = 0;
  state_ = State::kWord;
  if (byte == '[') return;
  const auto rows = protocol::LetterRows(static_cast<char>(byte));
  state_ = rows.empty() ? State::kSecretLine : State::kLine;
  for (const protocol::CommandRow* row : rows) {
    if (row->carried == protocol::Carried::kSecret) state_ = State::kSecretLine;
    if (row->carried == protocol::Carried::kSecretText) state_ = State::kAccount;
    answers.Asked(*row);
  }
}

bool HostMask::TakeLine(std::uint8_t byte, AnswerMask& answers) {
  const bool secret = state_ == State::kSecretLine || (state_ == State::kAccount && ++count_ > 2);
  if (byte == '\n') state_ = State::kIdle;
  if (state_ == State::kLine) TakeIdle(byte, answers);
  return secret && byte != protocol::kCr && byte != '\n';
}

// On a serial line the next command may follow a word that is whole.
bool HostMask::TakeWord(std::uint8_t byte, AnswerMask& answers) {
  const protocol::WordFit fit = protocol::FitWord(word_);
  if (byte == protocol::kStx && fit.with_data != nullptr) {
    state_ = fit.with_data->carried == protocol::Carried::kOpen ? State::kOpen : State::kSecret;
    answers.Asked(*fit.with_data);
    return false;
  }
  if (fit.whole && BeginsCommand(byte)) {
    state_ = State::kIdle;
    return TakeIdle(byte, answers), false;
  }
  word_ += static_cast<char>(byte);
  if (protocol::FitWord(word_).known) return false;
  state_ = State::kSecret;
  return true;
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
  if (byte == protocol::kEtx) {
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
  const protocol::CommandRow* const row = protocol::FrameRow(code);
  answers.FrameAsked(row);
  state_ = row != nullptr && row->carried == protocol::Carried::kOpen ? State::kOpen : State::kSecret;
  return false;
}

void HostMask::TakePacketHeader(std::uint8_t byte) {
  if (count_ > 0) value_ = value_ << 8 | byte;
  if (++count_ < kPacketHeaderEnd) return;
  state_ = value_ == 0 ? State::kIdle : State::kPacketBody;
}

// ---- The terminal's side

void AnswerMask::Asked(const protocol::CommandRow& row) {
  if (row.answer == protocol::AnswerKind::kPin) secret_asked_ = true;
  if (row.answer == protocol::AnswerKind::kNumber) number_asked_ = true;
}

void AnswerMask::FrameAsked(const protocol::CommandRow* row) {
  frame_asked_ = row;
  if (row != nullptr) Asked(*row);
}

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
      if (byte == protocol::kEtx || byte == 0) state_ = State::kStart;
      return false;
    case State::kSecret:
      return TakeSecret(byte, protocol::kEtx);
    case State::kPin:
      return TakeSecret(byte, protocol::kCr);
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
  if (byte == 0 || byte == protocol::kAccepted || byte == protocol::kNotAccepted || byte == 1 ||
      byte == protocol::kEtx)
    return false;
  if (byte == protocol::kStx) {
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
  const bool split = end == rest.end() || *end == protocol::kEtx || *end == 0;
  if (split && byte == '0') {
    state_ = State::kFrame;
    return TakeFrame(byte);
  }
  if (split || secret_asked_) state_ = State::kSecret;
  return state_ == State::kSecret;
}

bool AnswerMask::TakeSecret(std::uint8_t byte, std::uint8_t end) {
  const bool over = byte == end || byte == protocol::kEtx || byte == 0;
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
    state_ = byte == protocol::kEtx || byte == 0 ? State::kStart : State::kSecret;
    return state_ == State::kSecret;
  }
  if (++count_ <= kFrameHead / 2) value_ = value_ << 4 | (byte & 0x0F);
  if (count_ == kFrameHead) state_ = IsSecretData(value_) ? State::kSecret : State::kOpen;
  return false;
}

// `size` counts the status word.
bool AnswerMask::IsSecretData(std::size_t size) const {
  const std::size_t data = size - std::min<std::size_t>(size, 2);
  if (data <= 1 || data >= kMinPublicKey) return false;
  return frame_asked_ != &protocol::Row("get device id") || data == 8 || data == 16;
}

void AnswerMask::TakePacketHeader(std::uint8_t byte) {
  if (count_ > 0) value_ = value_ << 8 | byte;
  if (++count_ < kPacketHeaderEnd) return;
  state_ = value_ == 0 ? State::kStart : State::kPacketBody;
}

}  // namespace gwq::terminal::recording
