// SPDX-License-Identifier: MIT
#include "protocol/command_reader.h"

#include <algorithm>
#include <utility>

#include "protocol/marks.h"

namespace gwq::terminal::protocol {
namespace {

bool IsEntryControl(std::uint8_t byte) {
  return byte >= kEntryMode1 && byte <= kEntryEnd;
}

// In a PIN-pad frame nibbles follow the STX, in a packet its type.
bool IsNibble(std::uint8_t byte) {
  return byte >= 0x30 && byte <= 0x3F;
}

// There is no ESC in what a command carries, so this is a new command, and the one
// before it was cut off: hosts send long pieces of text with their end missing.
bool BeginsWord(std::span<const std::uint8_t> report) {
  return report.size() > 1 && report[0] == kEsc && report[1] == '[';
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
  TakeAll(bytes);
}

// A report that is not full is the last one of its command. Only packets know
// their length better than that.
void CommandReader::FeedReports(std::span<const std::uint8_t> bytes) {
  while (!bytes.empty()) {
    const auto report = bytes.first(std::min(bytes.size(), kReportSize));
    if (state_ == State::kPayload && BeginsWord(report)) Finish();
    TakeAll(report);
    const bool in_packet = state_ == State::kPacketHeader || state_ == State::kPacketBody;
    if (report.size() < kReportSize && !in_packet) Finish();
    bytes = bytes.subspan(report.size());
  }
}

void CommandReader::TakeAll(std::span<const std::uint8_t> bytes) {
  while (!bytes.empty()) {
    std::size_t taken = 1;
    if (state_ == State::kPacketBody) {
      taken = TakePacketBody(bytes);
    } else {
      Take(bytes.front());
    }
    bytes = bytes.subspan(taken);
  }
}

void CommandReader::Advance(Time now) {
  const auto deadline = NextDeadline();
  if (!deadline || *deadline > now) return;
  if (state_ == State::kIdle) return StopPackets("silence");
  Finish();
}

std::optional<Time> CommandReader::NextDeadline() const {
  if (state_ == State::kIdle && packets_ == nullptr) return std::nullopt;
  if (state_ == State::kIdle) return last_byte_ + kPacketPatience;
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
    case State::kPacketHeader:
    case State::kPacketBody:  // taken in larger pieces
      return TakePacketHeader(byte);
  }
}

void CommandReader::Begin(std::uint8_t byte) {
  if (byte == 0) return;
  if (packets_ != nullptr && byte == kStx) {
    state_ = State::kPacketHeader;
    header_[0] = byte;
    header_size_ = 1;
    return;
  }
  StopPackets("another command");
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

void CommandReader::TakePacketHeader(std::uint8_t byte) {
  if (header_size_ == 1 && IsNibble(byte)) {
    StopPackets("another command");
    state_ = State::kFrame;
    bytes_.push_back(kStx);
    return TakeUntilEtx(byte);
  }
  header_[header_size_++] = byte;
  if (header_size_ < kPacketHeaderSize) return;
  const PacketHeader header = ReadPacketHeader(header_);
  body_left_ = header.length;
  state_ = State::kPacketBody;
  packets_->BeginPacket(header);
  if (body_left_ == 0) FinishPacket();
}

std::size_t CommandReader::TakePacketBody(std::span<const std::uint8_t> bytes) {
  const auto piece = bytes.first(std::min(bytes.size(), body_left_));
  body_left_ -= piece.size();
  packets_->TakePayload(piece);
  if (body_left_ == 0) FinishPacket();
  return piece.size();
}

// The reader is ready for the next byte before the packet is judged.
void CommandReader::FinishPacket() {
  state_ = State::kIdle;
  packets_->EndPacket();
}

void CommandReader::StopPackets(const char* why) {
  if (packets_ != nullptr) std::exchange(packets_, nullptr)->PacketsOver(why);
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
    case State::kPacketHeader:
    case State::kPacketBody:
      state_ = State::kIdle;
      return StopPackets("a packet was cut off");
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

}  // namespace gwq::terminal::protocol
