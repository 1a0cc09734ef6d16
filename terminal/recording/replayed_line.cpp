// SPDX-License-Identifier: MIT
#include "recording/replayed_line.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "protocol/marks.h"

namespace gwq::terminal::recording {
namespace {

constexpr std::size_t kShown = 16;

// Bytes in hexadecimal and as text, masked ones as stars.
std::string Dump(std::span<const std::uint8_t> bytes, const Masks& masks) {
  Bytes marks(bytes.size());
  for (const MaskedSpan& span : masks) {
    for (std::size_t i = span.offset; i < std::min(span.offset + span.size, bytes.size()); ++i) marks[i] = 1;
  }
  std::string hex;
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    char two[4];
    std::snprintf(two, sizeof two, "%02x", static_cast<unsigned>(bytes[i]));
    hex += marks[i] != 0 ? "**" : two;
    hex += ' ';
    text += marks[i] != 0 ? '*' : bytes[i] >= ' ' && bytes[i] <= '~' ? static_cast<char>(bytes[i]) : '.';
  }
  hex.resize(3 * kShown, ' ');
  return hex + "|" + text + "|";
}

// What is masked of the bytes from `offset` on.
Masks MasksFrom(const Masks& masks, std::size_t offset) {
  Masks rest;
  for (const MaskedSpan& span : masks) {
    const std::size_t end = span.offset + span.size;
    const std::size_t begin = std::max(span.offset, offset);
    if (end > begin) rest.push_back({begin - offset, end - begin});
  }
  return rest;
}

std::uint8_t FromNibbles(const Bytes& bytes, std::size_t at) {
  return static_cast<std::uint8_t>((bytes[at] & 0x0F) << 4 | (bytes[at + 1] & 0x0F));
}

// Gives a PIN-pad frame the check byte (LRC) that its body asks for.
void CorrectFrame(Bytes& bytes) {
  constexpr std::size_t kBody = 5;  // behind STX and the length
  if (bytes.size() < kBody || bytes[0] != protocol::kStx || bytes[1] != '0') return;
  const std::size_t length = std::size_t{FromNibbles(bytes, 1)} << 8 | FromNibbles(bytes, 3);
  const std::size_t check = kBody + 2 * length;
  if (check + 2 >= bytes.size() || bytes[check + 2] != protocol::kEtx) return;
  std::uint8_t lrc = 0;
  for (std::size_t at = kBody; at < check; at += 2) lrc ^= FromNibbles(bytes, at);
  bytes[check] = static_cast<std::uint8_t>('0' + (lrc >> 4));
  bytes[check + 1] = static_cast<std::uint8_t>('0' + (lrc & 0x0F));
}

// What is not known of an answer becomes zeros that hosts can read: the character 0, in split form (30) where
// the answer is, and behind the mark of a PIN block.
void FillMasks(WireTransfer& answer) {
  Bytes& data = answer.data;
  const bool framed = data.size() > 1 && data[0] == protocol::kStx && data[1] == '0';
  for (const MaskedSpan& span : answer.masks) {
    for (std::size_t i = 0; i < span.size; ++i) data[span.offset + i] = framed && i % 2 == 0 ? '3' : '0';
    const bool block = data[0] == protocol::kStx && span.offset == 1;
    if (block) data[1] = '1';
  }
  if (!answer.masks.empty()) CorrectFrame(data);
}

std::string SecondsText(std::int64_t us) {
  char text[40];
  std::snprintf(text, sizeof text, "%.6f s", static_cast<double>(us) / 1e6);
  return text;
}

}  // namespace

ReplayedLine::ReplayedLine(std::vector<WireTransfer> transfers, bool fast, Report report)
    : fast_(fast), report_(std::move(report)), transfers_(std::move(transfers)) {
  std::erase_if(transfers_, [](const WireTransfer& transfer) { return transfer.data.empty(); });
  for (WireTransfer& transfer : transfers_) {
    if (transfer.ToHost()) FillMasks(transfer);
  }
  host_total_ = static_cast<std::size_t>(
      std::count_if(transfers_.begin(), transfers_.end(), [](const auto& one) { return !one.ToHost(); }));
  if (!transfers_.empty()) start_ = last_recorded_ = transfers_.front().time_us;
}

bool ReplayedLine::AtAnswer() const {
  return !over_ && next_ < transfers_.size() && transfers_[next_].ToHost();
}

std::optional<Time> ReplayedLine::Due() const {
  if (!AtAnswer()) return std::nullopt;
  if (fast_) return last_time_;
  const std::int64_t wait = std::max<std::int64_t>(transfers_[next_].time_us - last_recorded_, 0);
  return last_time_ + std::chrono::milliseconds(wait / 1000);
}

std::optional<Time> ReplayedLine::NextDeadline() const {
  const Lock lock(mutex_);
  return Due();
}

void ReplayedLine::Advance(Time now) {
  const Lock lock(mutex_);
  AnswerWhatIsDue(now);
}

void ReplayedLine::AnswerWhatIsDue(Time now) {
  for (auto due = Due(); due && *due <= now; due = Due()) Answer(*due);
}

void ReplayedLine::Answer(Time now) {
  answers_.push_back(transfers_[next_].data);
  Pass(now);
}

void ReplayedLine::Pass(Time now) {
  last_time_ = now;
  last_recorded_ = transfers_[next_].time_us;
  ++next_;
  offset_ = 0;
}

std::optional<Bytes> ReplayedLine::TakeAnswer() {
  const Lock lock(mutex_);
  if (answers_.empty()) return std::nullopt;
  Bytes answer = std::move(answers_.front());
  answers_.pop_front();
  return answer;
}

void ReplayedLine::Receive(std::span<const std::uint8_t> bytes, Time now) {
  const Lock lock(mutex_);
  if (over_) return;
  const Masks masks = mask_.FromHost(bytes);
  AnswerWhatIsDue(now);
  Compare(bytes, masks, now);
  AnswerWhatIsDue(now);
}

void ReplayedLine::Compare(std::span<const std::uint8_t> bytes, const Masks& masks, Time now) {
  for (std::size_t at = 0; at < bytes.size(); ++at) {
    while (AtAnswer()) Answer(now);
    if (next_ == transfers_.size() || !Matches(bytes[at]))
      return Differ(bytes.subspan(at), MasksFrom(masks, at));
    if (++offset_ < transfers_[next_].data.size()) continue;
    ++host_passed_;
    Pass(now);
  }
}

bool ReplayedLine::Matches(std::uint8_t byte) const {
  const WireTransfer& transfer = transfers_[next_];
  if (transfer.data[offset_] == byte) return true;
  return std::any_of(transfer.masks.begin(), transfer.masks.end(), [this](const MaskedSpan& span) {
    return offset_ >= span.offset && offset_ < span.offset + span.size;
  });
}

void ReplayedLine::Differ(std::span<const std::uint8_t> bytes, const Masks& masks) {
  over_ = true;
  const std::string seen = "  seen:     " + Dump(bytes.first(std::min(bytes.size(), kShown)), masks);
  if (next_ == transfers_.size()) {
    report_("the host goes on after the last of its " + std::to_string(host_total_) +
            " recorded transfers:\n" + seen);
    return;
  }
  const WireTransfer& transfer = transfers_[next_];
  const auto expected = std::span(transfer.data).subspan(offset_);
  report_("the host differs from the recording in its transfer " + std::to_string(host_passed_ + 1) + " of " +
          std::to_string(host_total_) + " (recorded at " + SecondsText(transfer.time_us - start_) +
          "), at byte " + std::to_string(offset_) + ":\n  expected: " +
          Dump(expected.first(std::min(expected.size(), kShown)), MasksFrom(transfer.masks, offset_)) + "\n" +
          seen);
}

bool ReplayedLine::Finish() {
  const Lock lock(mutex_);
  if (over_) return false;
  const std::string count =
      std::to_string(host_passed_) + " of " + std::to_string(host_total_) + " transfers of the host";
  const bool all = host_passed_ == host_total_;
  report_(all ? "replayed " + count + ", no difference" : "the host stopped before the end: " + count);
  return all;
}

}  // namespace gwq::terminal::recording
