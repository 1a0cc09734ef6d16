#include "device/command_reader.h"

#include <algorithm>
#include <utility>

#include "device/bytes.h"

namespace gwq::terminal {
namespace {

bool IsEntryControl(std::uint8_t byte) {
  return byte >= kEntryMode1 && byte <= kEntryEnd;
}

bool BeginsCommand(std::uint8_t byte) {
  return byte == kEsc || byte == kStx || IsEntryControl(byte);
}

}  // namespace

CommandReader::CommandReader(Line line, Sink sink) : line_(line), sink_(std::move(sink)) {}

void CommandReader::Feed(std::span<const std::uint8_t> bytes, Time now) {
  if (bytes.empty()) return;
  last_byte_ = now;
  if (line_ == Line::kUsb) return FeedReports(bytes);
  for (const std::uint8_t byte : bytes) Take(byte);
}

// A report that is not full is the last one of its command.
void CommandReader::FeedReports(std::span<const std::uint8_t> bytes) {
  while (!bytes.empty()) {
    const auto report = bytes.first(std::min(bytes.size(), kReportSize));
    for (const std::uint8_t byte : report) Take(byte);
    if (report.size() < kReportSize) Finish();
    bytes = bytes.subspan(report.size());
  }
}

void CommandReader::Advance(Time now) {
  const auto deadline = NextDeadline();
  if (deadline && *deadline <= now) Finish();
}

std::optional<Time> CommandReader::NextDeadline() const {
  if (state_ == State::kIdle) return std::nullopt;
  return last_byte_ + (EndsBySilence() ? kGap : kPatience);
}

// "ESC [" words may end anywhere; all other shapes have an end mark to wait for.
bool CommandReader::EndsBySilence() const {
  if (state_ == State::kNoise) return true;
  return state_ == State::kText && bytes_.size() > 1 && bytes_[1] == '[';
}

void CommandReader::Take(std::uint8_t byte) {
  switch (state_) {
    case State::kIdle:
      return Begin(byte);
    case State::kText:
      return TakeText(byte);
    case State::kPayload:
    case State::kFrame:
      return TakeUntilEtx(byte);
    case State::kNoise:
      return TakeNoise(byte);
    case State::kSkip:
      if (byte == 0 || byte == kEtx) Finish();
      return;
  }
}

void CommandReader::Begin(std::uint8_t byte) {
  if (byte == 0) return;
  if (!BeginsCommand(byte)) {
    state_ = State::kNoise;
    noise_size_ = 1;
    return;
  }
  bytes_.push_back(byte);
  if (IsEntryControl(byte)) return Emit(Command::Kind::kText);
  state_ = byte == kEsc ? State::kText : State::kFrame;
}

void CommandReader::TakeText(std::uint8_t byte) {
  if (byte == 0) return Finish();
  if (byte == kEsc || IsEntryControl(byte)) {
    Finish();
    return Begin(byte);
  }
  const bool line_end = byte == '\n' && bytes_.back() == '\r';
  if (byte == kStx) state_ = State::kPayload;
  Store(byte);
  if (line_end) Finish();
}

// Neither text nor nibbles hold a zero, so a zero cuts an unfinished command
// off. Only a frame can be told apart from an ESC that begins the next command.
void CommandReader::TakeUntilEtx(std::uint8_t byte) {
  if (byte == 0) return Finish();
  if (byte == kEsc && state_ == State::kFrame) {
    Finish();
    return Begin(byte);
  }
  Store(byte);
  if (byte == kEtx) Finish();
}

void CommandReader::TakeNoise(std::uint8_t byte) {
  if (byte != 0 && !BeginsCommand(byte)) {
    ++noise_size_;
    return;
  }
  Finish();
  Begin(byte);
}

// Too much for any real command: it is reported at once, and its rest skipped.
void CommandReader::Store(std::uint8_t byte) {
  if (state_ == State::kSkip) return;
  bytes_.push_back(byte);
  if (bytes_.size() <= kMaxCommand) return;
  noise_size_ = bytes_.size();
  Emit(Command::Kind::kNoise);
  state_ = State::kSkip;
}

void CommandReader::Finish() {
  switch (state_) {
    case State::kIdle:
      return;
    case State::kText:
    case State::kPayload:
      return Emit(Command::Kind::kText);
    case State::kFrame:
      return Emit(Command::Kind::kFrame);
    case State::kNoise:
      return Emit(Command::Kind::kNoise);
    case State::kSkip:
      state_ = State::kIdle;
      return;
  }
}

// The reader is ready for the next byte before the command is carried out.
void CommandReader::Emit(Command::Kind kind) {
  Command command;
  command.kind = kind;
  if (kind == Command::Kind::kNoise) command.noise_size = noise_size_;
  if (kind != Command::Kind::kNoise) command.bytes.swap(bytes_);
  SecretBytes().swap(bytes_);
  noise_size_ = 0;
  state_ = State::kIdle;
  sink_(std::move(command));
}

}  // namespace gwq::terminal
