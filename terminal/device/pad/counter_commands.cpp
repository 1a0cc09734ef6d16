// SPDX-License-Identifier: MIT
#include "device/pad/counter_commands.h"

#include <algorithm>
#include <array>
#include <utility>

#include "device/pad/ciphers.h"
#include "device/pad/pin_block.h"
#include "protocol/marks.h"
#include "protocol/split_form.h"

namespace gwq::terminal::device {

using protocol::Match;
using protocol::Row;
namespace {

constexpr int kMinPinDigits = 4;
constexpr int kLongestTimeout = 999;
constexpr const char* kDamaged = ", damaged record";
constexpr std::uint8_t kShortBlockMark = 0x10;  // before a block of 8 bytes

std::span<const std::uint8_t> AsBytes(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

std::string Seconds(Time time) {
  return std::to_string(time.count() / 1000) + " s";
}

std::string Size(std::size_t bytes) {
  return " (" + std::to_string(bytes) + " bytes, masked)";
}

// The indexes at the front of a key record, and the key behind them.
struct KeyRecord {
  std::array<std::size_t, 2> index{};
  SecretBytes key;
};

std::optional<KeyRecord> ReadRecord(std::string_view split, std::size_t indexes) {
  const auto bytes = protocol::MergeSplit(AsBytes(split));
  if (!bytes || bytes->size() < indexes) return std::nullopt;
  KeyRecord record;
  for (std::size_t i = 0; i < indexes; ++i) record.index.at(i) = (*bytes)[i];
  record.key = CopySecret(std::span<const std::uint8_t>(*bytes).subspan(indexes));
  return record;
}

std::string Place(const KeyRecord& record) {
  return std::to_string(record.index[0]) + "/" + std::to_string(record.index[1]);
}

}  // namespace

CounterCommands::CounterCommands(HostChannel& host, KeyEntry& entry, const Settings& settings)
    : host_(host), entry_(entry), settings_(settings) {}

void CounterCommands::AddTo(TextCommands& table) {
  table.Add(Row("GETVERSION"), [this](const Match&) { TellVersion(); });
  table.Add(Row("GETFIRMVERSION"), [this](const Match&) { TellFirmwareVersion(); });
  table.Add(Row("PIN length"), [this](const Match& match) { SetPinLength(match.numbers[0]); });
  table.Add(Row("PIN display style"), [this](const Match& match) { SetDisplay(match.numbers[0]); });
  table.Add(Row("PIN entry time-out"), [this](const Match& match) { SetTimeout(match.numbers[0]); });
  table.Add(Row("load master key"), [this](const Match& match) { LoadMasterKey(match.text); });
  table.Add(Row("load working key"), [this](const Match& match) { LoadWorkingKey(match.text); });
  table.Add(Row("activate working key"), [this](const Match& match) { ActivateWorkingKey(match.text); });
  table.Add(Row("reset keys"), [this](const Match&) { ResetKeys(); });
  table.Add(Row("PIN entry"), [this](const Match&) { StartClearEntry(false); });
  table.Add(Row("PIN entry", "again"), [this](const Match&) { StartClearEntry(true); });
  table.Add(Row("end of PIN entry"), [this](const Match&) { EndEntry(); });
  table.Add(Row("DES PIN block"),
            [this](const Match& match) { StartBlockEntry(match, PinBlockWithoutAccount); });
  table.Add(Row("ANSI PIN block"), [this](const Match& match) {
    const auto build = [account = std::string(match.text)](std::span<const std::uint8_t> digits) {
      return PinBlockWithAccount(digits, account);
    };
    StartBlockEntry(match, build);
  });
}

void CounterCommands::TellVersion() {
  const std::string text = settings_.version + "|" + settings_.build_date;
  AnswerText(host_, text, "version " + text);
}

// The common version and the private one.
void CounterCommands::TellFirmwareVersion() {
  const std::string text = settings_.version + "|P" + settings_.build_date;
  AnswerText(host_, text, "version " + text);
}

// The settings of a PIN entry are not answered, unless their value is impossible.

void CounterCommands::SetPinLength(int digits) {
  host_.Describe(" " + std::to_string(digits));
  if (digits < 1 || digits > static_cast<int>(kMaxPinDigits)) return AnswerRefusal(host_);
  pin_digits_ = digits;
}

// How the digits are shown while they are keyed. Only style 0, a star for each
// digit, makes sense for a PIN.
void CounterCommands::SetDisplay(int style) {
  host_.Describe(" " + std::to_string(style));
  if (style != 0) AnswerRefusal(host_);
}

void CounterCommands::SetTimeout(int seconds) {
  host_.Describe(" " + std::to_string(seconds) + " s");
  if (seconds < 1 || seconds > kLongestTimeout) return AnswerRefusal(host_);
  timeout_ = std::chrono::seconds(seconds);
}

void CounterCommands::LoadMasterKey(std::string_view split_record) {
  const auto record = ReadRecord(split_record, 1);
  if (!record) return Accept(false, kDamaged);
  const std::size_t slot = record->index[0];
  const std::size_t old_size = std::min(keys_.MasterSize(slot), record->key.size());
  const std::string detail = " " + std::to_string(slot) + Size(record->key.size() - old_size);
  Accept(keys_.ReplaceMaster(slot, record->key), detail);
}

void CounterCommands::LoadWorkingKey(std::string_view split_record) {
  const auto record = ReadRecord(split_record, 2);
  if (!record) return Accept(false, kDamaged);
  const std::string detail = " " + Place(*record) + Size(record->key.size());
  Accept(keys_.LoadWorking(record->index[0], record->index[1], record->key), detail);
}

void CounterCommands::ActivateWorkingKey(std::string_view split_record) {
  const auto record = ReadRecord(split_record, 2);
  if (!record || !record->key.empty()) return Accept(false, kDamaged);
  Accept(keys_.Activate(record->index[0], record->index[1]), " " + Place(*record));
}

void CounterCommands::ResetKeys() {
  keys_.Reset();
  Accept(true, {});
}

// Mode 0 asks for the PIN; mode 1 asks for it once more, as when a new PIN is
// chosen. The host cannot be told of a cancelled clear entry: it takes anything
// up to a CR for the PIN. The refusal has none, so the host runs into its own
// time-out instead of taking it for an empty PIN.
void CounterCommands::StartClearEntry(bool again) {
  host_.Describe((again ? ", mode 1, " : ", mode 0, ") + Seconds(timeout_));
  entry_.Start(Request(again, false), [this](std::span<const std::uint8_t> digits) {
    Bytes answer;
    answer.reserve(digits.size() + 1);
    answer.assign(digits.begin(), digits.end());
    answer.push_back(protocol::kCr);
    host_.Answer(std::move(answer), "PIN in clear (" + std::to_string(digits.size()) + " digits, masked)");
  });
}

// The two digits behind "F" and "I":
//   first   0  cipher by the length of the active working key: DES or triple DES
//           1  triple DES, refused when the key is a single one
//   second  0  asks for the PIN           Enter ends the entry
//           1  asks for it once more      Enter ends the entry
//           2  asks for the PIN           also ends by itself with the last digit
//           3  asks for it once more      also ends by itself with the last digit
void CounterCommands::StartBlockEntry(const Match& match, Build build) {
  const int cipher = match.numbers[0];
  const int prompt = match.numbers[1];
  host_.Describe(", " + std::to_string(cipher) + " " + std::to_string(prompt) + ", " + Seconds(timeout_));
  const bool account_fits = match.text.find_first_not_of("0123456789") == std::string_view::npos;
  if (cipher > 1 || prompt > 3 || !account_fits || !HasKeyFor(cipher)) return AnswerRefusal(host_);
  const auto on_keyed = [this, made = std::move(build)](std::span<const std::uint8_t> digits) {
    AnswerBlock(digits, made);
  };
  entry_.Start(Request((prompt & 1) != 0, (prompt & 2) != 0), on_keyed);
}

bool CounterCommands::HasKeyFor(int cipher) const {
  const SecretBytes* key = keys_.Active();
  return key != nullptr && (cipher == 0 || key->size() > 8);
}

// The key may have gone while the customer was keying.
void CounterCommands::AnswerBlock(std::span<const std::uint8_t> digits, const Build& build) {
  const SecretBytes* key = keys_.Active();
  const auto clear = build(digits);
  if (key == nullptr || !clear) return AnswerRefusal(host_);
  const auto block = EncipherDes(*key, *clear);
  if (!block) return AnswerRefusal(host_);
  const std::uint8_t mark[] = {kShortBlockMark};
  Bytes answer{protocol::kStx};
  protocol::AppendSplit(answer, mark);
  protocol::AppendSplit(answer, *block);
  answer.push_back(protocol::kEtx);
  host_.Answer(std::move(answer), "PIN block (" + std::to_string(block->size()) + " bytes)");
}

// The length that was set is the most the customer may key.
PinRequest CounterCommands::Request(bool again, bool ends_when_full) const {
  PinRequest request;
  request.min_digits = std::min(kMinPinDigits, pin_digits_);
  request.max_digits = pin_digits_;
  request.time_left = timeout_;
  request.again = again;
  request.ends_when_full = ends_when_full;
  return request;
}

void CounterCommands::EndEntry() {
  entry_.Stop();
}

void CounterCommands::Accept(bool accepted, const std::string& detail) {
  host_.Describe(detail);
  AnswerKeyCommand(host_, accepted);
}

}  // namespace gwq::terminal::device
