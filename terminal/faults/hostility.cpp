// SPDX-License-Identifier: MIT
#include "faults/hostility.h"

#include <algorithm>
#include <utility>

namespace gwq::terminal::faults {
namespace {

constexpr std::uint64_t kLongestDelayMs = 3000;
constexpr std::uint64_t kLongestSilence = 5;  // answers
constexpr std::uint64_t kMaxGarbage = 5000;   // bytes
constexpr std::size_t kHeaderSize = 8;

// The distributions of the standard library differ from one to another; these do not.
std::uint64_t Below(std::mt19937_64& random, std::uint64_t limit) {
  return random() % limit;
}

double Fraction(std::mt19937_64& random) {
  return static_cast<double>(random() >> 11U) * 0x1p-53;
}

std::uint8_t Other(std::mt19937_64& random, std::uint8_t byte) {
  return static_cast<std::uint8_t>(byte + 1 + Below(random, 255));
}

void SpoilLength(std::mt19937_64& random, Bytes& answer) {
  constexpr std::array<std::uint8_t, 5> kExtremes = {0x00, 0x01, 0x7F, 0x80, 0xFF};
  const std::uint8_t extreme = kExtremes[Below(random, kExtremes.size())];
  const std::size_t first = Below(random, kHeaderSize);
  const std::size_t size = 1 + Below(random, 4);
  for (std::size_t i = first; i < std::min(first + size, answer.size()); ++i) answer[i] = extreme;
}

void SpoilChecksum(std::mt19937_64& random, Bytes& answer) {
  const std::size_t near = 1 + Below(random, std::min<std::size_t>(answer.size(), 3));
  const std::size_t place = Below(random, 2) == 0 ? answer.size() - near : near - 1;
  answer[place] = Other(random, answer[place]);
}

Bytes Garbage(std::mt19937_64& random) {
  Bytes bytes(1 + Below(random, kMaxGarbage));
  std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<std::uint8_t>(random()); });
  return bytes;
}

}  // namespace

Hostility::Hostility(const FaultRates& rates, unsigned line)
    : rates_(rates), answers_(rates.seed + 3ULL * line), outs_(answers_()), ins_(answers_()) {}

void Hostility::SetRates(const FaultRates& rates) {
  rates_ = rates;
  silent_for_ = 0;
}

bool Hostility::Happens(Random& random, Fault fault) const {
  return Fraction(random) * 100 < rates_.PercentOf(fault);
}

Transfer Hostility::Next(Random& random) const {
  const bool stalls = Happens(random, Fault::kStall);
  const bool unplugs = Happens(random, Fault::kUnplug);
  const TransferFate stalled = Below(random, 2) == 0 ? TransferFate::kHangs : TransferFate::kFails;
  const double part = Fraction(random);
  if (unplugs) return {TransferFate::kUnplugs, part};
  return {stalls ? stalled : TransferFate::kPasses, part};
}

bool Hostility::IsLost(Random& random) {
  const bool dropped = Happens(random, Fault::kDrop);
  const bool falls_silent = Happens(random, Fault::kSilence);
  const auto length = static_cast<int>(1 + Below(random, kLongestSilence));
  if (silent_for_ > 0) {
    --silent_for_;
    return true;
  }
  if (falls_silent) silent_for_ = length;
  return dropped || falls_silent;
}

void Hostility::Damage(Random& random, Bytes& answer) const {
  if (Happens(random, Fault::kGarbage)) answer = Garbage(random);
  if (answer.empty()) return;
  if (Happens(random, Fault::kFlip))
    answer[Below(random, answer.size())] ^= static_cast<std::uint8_t>(1U << Below(random, 8));
  if (Happens(random, Fault::kLength)) SpoilLength(random, answer);
  if (Happens(random, Fault::kChecksum)) SpoilChecksum(random, answer);
  if (Happens(random, Fault::kCut)) answer.resize(Below(random, answer.size()));
}

// Each answer has a generator of its own, so that how much of it one answer uses is nothing to the next.
void Hostility::Send(Bytes answer, Time now) {
  Random random(answers_());
  if (IsLost(random)) return;
  Damage(random, answer);
  const bool late = Happens(random, Fault::kDelay);
  const Time at = now + Time(late ? 1 + Below(random, kLongestDelayMs) : 0);
  const bool repeated = Happens(random, Fault::kRepeat);
  if (answer.empty()) return;
  if (repeated) sent_.push_back({at, answer});
  sent_.push_back({at, std::move(answer)});
}

std::optional<Bytes> Hostility::Take(Time now) {
  if (sent_.empty() || sent_.front().at > now) return std::nullopt;
  Bytes bytes = std::move(sent_.front().bytes);
  sent_.pop_front();
  return bytes;
}

std::optional<Time> Hostility::NextArrival() const {
  if (sent_.empty()) return std::nullopt;
  return sent_.front().at;
}

}  // namespace gwq::terminal::faults
