// SPDX-License-Identifier: MIT
// A terminal that answers as one did that was recorded.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "base/endpoint.h"
#include "recording/masks.h"
#include "recording/transfer.h"

namespace gwq::terminal::recording {

// The host's bytes are compared with the recorded ones as one stream: how they are cut into transfers may
// differ. An answer comes as long after what stands before it as it did then; a host that goes on before that
// gets it at once. After the first difference there is silence. Reads without data count for nothing.
class ReplayedLine final : public Endpoint {
 public:
  using Report = std::function<void(const std::string& text)>;

  // `transfers` are those of one wire. `report` hears of the first difference, on any thread.
  ReplayedLine(std::vector<WireTransfer> transfers, bool fast, Report report);

  void Receive(std::span<const std::uint8_t> bytes, Time now) override;
  void Advance(Time now) override;
  [[nodiscard]] std::optional<Time> NextDeadline() const override;
  // Answers that the unit took back are not in a recording.
  [[nodiscard]] bool TakeWithdrawal() override { return false; }
  [[nodiscard]] std::optional<Bytes> TakeAnswer() override;

  // Reports how it went, unless that has been done. True when the host did all that is recorded.
  // May be called on any thread.
  bool Finish();

 private:
  using Lock = std::lock_guard<std::mutex>;

  [[nodiscard]] bool AtAnswer() const;
  void Answer(Time now);
  void AnswerWhatIsDue(Time now);
  [[nodiscard]] std::optional<Time> Due() const;
  void Compare(std::span<const std::uint8_t> bytes, const Masks& masks, Time now);
  [[nodiscard]] bool Matches(std::uint8_t byte) const;
  void Pass(Time now);
  void Differ(std::span<const std::uint8_t> bytes, const Masks& masks);

  const bool fast_;
  const Report report_;
  mutable std::mutex mutex_;  // guards everything below
  std::vector<WireTransfer> transfers_;
  std::size_t next_ = 0;         // in `transfers_`
  std::size_t offset_ = 0;       // in the host's data there
  std::size_t host_passed_ = 0;  // transfers of the host
  std::size_t host_total_ = 0;
  Time last_time_{0};  // of what was last passed, now and when it was recorded
  std::int64_t last_recorded_ = 0;
  std::int64_t start_ = 0;
  std::deque<Bytes> answers_;
  LineMask mask_;
  bool over_ = false;  // there was a difference
};

}  // namespace gwq::terminal::recording
