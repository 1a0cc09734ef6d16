// SPDX-License-Identifier: MIT
#include "device/pad/pad_entry.h"

#include <algorithm>

#include "device/files/file_names.h"
#include "device/pad/pin_block.h"
#include "protocol/marks.h"
#include "protocol/split_form.h"

namespace gwq::terminal::device {

using protocol::Match;
using protocol::Row;
namespace {

constexpr int kMinPinDigits = 4;
constexpr int kMaxNumberDigits = 20;
constexpr int kLongestTimeout = 999;
constexpr std::size_t kAccountField = 12;
constexpr std::uint8_t kSm4Padding = 8;

std::string_view AsText(std::span<const std::uint8_t> bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// An account that is longer than the field still has its check digit.
std::string_view FieldOf(std::string_view account) {
  return account.size() > kAccountField ? AccountPart(account) : account;
}

// Nothing when a parameter is out of range or the prompt is no text.
std::optional<NumberRequest> ReadNumberRequest(const Match& match) {
  const int seconds = match.numbers[0];
  const int digits = match.numbers[1];
  const int display = match.numbers[2];
  const auto gbk =
      protocol::MergeSplit({reinterpret_cast<const std::uint8_t*>(match.text.data()), match.text.size()});
  const auto prompt = gbk ? TextFromGbk(AsText(*gbk)) : std::nullopt;
  const bool fits = seconds >= 1 && seconds <= kLongestTimeout && digits <= kMaxNumberDigits && display <= 2;
  if (!fits || !prompt) return std::nullopt;
  NumberRequest request;
  request.prompt = *prompt;
  request.max_digits = digits == 0 ? kMaxNumberDigits : digits;
  request.display = static_cast<NumberRequest::Display>(display);
  request.time_left = std::chrono::seconds(seconds);
  return request;
}

}  // namespace

void PadEntry::AddTo(TextCommands& texts, FramedCommands& frames) {
  frames.Add(Row("PIN entry", "framed"), [this](Arguments arguments) {
    StartPin(ArgumentAt(arguments, 0), {});
    return std::nullopt;
  });
  frames.Add(Row("PIN entry", "framed, with a text"), [this](Arguments arguments) {
    StartPin(ArgumentAt(arguments, 0), arguments.empty() ? arguments : arguments.subspan(1));
    return std::nullopt;
  });
  texts.Add(Row("GETINNO"), [this](const Match& match) { StartNumber(match); });
}

void PadEntry::StartPin(int seconds, Arguments shown) {
  const std::string text = shown.empty() ? "" : ", with a text of " + std::to_string(shown.size()) + " bytes";
  host_.Describe(", mode " + std::to_string(values_.pin_mode) + ", " + std::to_string(seconds) + " s" + text);
  if (keys_.Working(values_.CurrentAlgorithm()) == nullptr) return RefusePin();
  entry_.Start(
      Request(seconds, shown), [this](std::span<const std::uint8_t> digits) { AnswerBlock(digits); },
      [this](KeyEntry::End end) { EndPin(end); });
}

PinRequest PadEntry::Request(int seconds, Arguments shown) const {
  PinRequest request;
  request.max_digits = values_.pin_length;
  request.min_digits = values_.pin_mode == kOfFixedLength ? request.max_digits : kMinPinDigits;
  request.time_left = std::chrono::seconds(seconds);
  request.ends_when_full = values_.end_rule == 1;
  request.shown = TextFromHost(AsText(shown)).value_or("");
  return request;
}

void PadEntry::AnswerBlock(std::span<const std::uint8_t> digits) {
  const auto block = Block(digits);
  if (!block) return RefusePin();
  AnswerFrame(host_, {kStatusOk, {block->begin(), block->end()}});
}

std::optional<SecretBytes> PadEntry::Block(std::span<const std::uint8_t> digits) const {
  const Algorithm algorithm = values_.CurrentAlgorithm();
  const SecretBytes* key = keys_.Working(algorithm);
  const auto filler = static_cast<std::uint8_t>(values_.fill_type & 0x0F);
  const auto account = values_.pin_mode == kWithAccount ? FieldOf(values_.account) : std::string_view{};
  auto clear = PinBlockOfFormat0(digits, {account, filler});
  if (key == nullptr || !clear) return std::nullopt;
  if (algorithm == Algorithm::kSm4) clear->resize(BlockSize(algorithm), kSm4Padding);
  return EncipherBlocks(algorithm, *key, *clear);
}

void PadEntry::EndPin(KeyEntry::End end) {
  if (end == KeyEntry::End::kCancelled) return host_.Answer({0x01, protocol::kEtx}, "PIN entry cancelled");
  host_.Answer({0x02, protocol::kEtx}, "PIN entry timed out");
}

void PadEntry::RefusePin() {
  host_.Answer({protocol::kEtx}, "PIN entry refused");
}

void PadEntry::StartNumber(const Match& match) {
  host_.Describe(", " + std::to_string(match.numbers[0]) + " s");
  const auto request = ReadNumberRequest(match);
  if (!request) return AnswerNumber('R', {}, "refused");
  entry_.Start(
      *request,
      [this](std::span<const std::uint8_t> digits) {
        AnswerNumber('B', digits, "number (" + std::to_string(digits.size()) + " digits, masked)");
      },
      [this](KeyEntry::End end) {
        if (end == KeyEntry::End::kCancelled) return AnswerNumber('C', {}, "number cancelled");
        AnswerNumber('T', {}, "number timed out");
      });
}

void PadEntry::AnswerNumber(char lead, std::span<const std::uint8_t> digits, const std::string& what) {
  Bytes answer;
  answer.reserve(digits.size() + 2);
  answer.push_back(static_cast<std::uint8_t>(lead));
  answer.insert(answer.end(), digits.begin(), digits.end());
  answer.push_back('F');
  host_.Answer(std::move(answer), what);
}

}  // namespace gwq::terminal::device
