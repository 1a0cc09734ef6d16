// SPDX-License-Identifier: MIT
// What becomes of answers and transfers on a hostile line. The same seed gives the same faults: for
// the nth answer, and for the nth transfer in each direction, whenever they come.
#pragma once

#include <deque>
#include <optional>
#include <random>

#include "base/types.h"
#include "faults/fault_rates.h"

namespace gwq::terminal::faults {

enum class TransferFate {
  kPasses,
  kHangs,    // until the host gives it up; some of it may have moved
  kFails,    // at once, as a halted endpoint
  kUnplugs,  // the terminal is gone
};

struct Transfer {
  TransferFate fate = TransferFate::kPasses;
  double part = 0;  // of a hanging one, moved
};

class Hostility {
 public:
  // Terminals of one program have each a `line` of their own.
  Hostility(const FaultRates& rates, unsigned line);

  void Send(Bytes answer, Time now);
  void Withdraw() { sent_.clear(); }
  // The oldest answer that has arrived by `now`.
  [[nodiscard]] std::optional<Bytes> Take(Time now);
  [[nodiscard]] std::optional<Time> NextArrival() const;

  // From now on; one that has fallen silent speaks again.
  void SetRates(const FaultRates& rates);

  [[nodiscard]] Transfer NextOut() { return Next(outs_); }
  [[nodiscard]] Transfer NextIn() { return Next(ins_); }

 private:
  using Random = std::mt19937_64;
  struct Arrival {
    Time at;
    Bytes bytes;
  };

  [[nodiscard]] bool Happens(Random& random, Fault fault) const;
  [[nodiscard]] Transfer Next(Random& random) const;
  [[nodiscard]] bool IsLost(Random& random);
  void Damage(Random& random, Bytes& answer) const;

  FaultRates rates_;
  Random answers_;
  Random outs_;
  Random ins_;
  int silent_for_ = 0;  // answers
  std::deque<Arrival> sent_;
};

}  // namespace gwq::terminal::faults
