// SPDX-License-Identifier: MIT
// Lets other threads cancel a read.
//
//            Reading begins           Reading ends
//   closed ------------------> open ----------------> closed
//                               | Cancel, from any thread
//                               v
//                            cancelled: the read returns at its next check
//
// Contract: a cancel that arrives while no read runs is dropped, also one between sending and
// reading.
#pragma once

#include <atomic>

namespace gwq {

class ReadGate {
 public:
  // A running read. The end of a read that a predicate has nested in another one leaves the gate
  // open for the outer one.
  class Reading {
   public:
    // The cancel flag is cleared before the read is announced, and the announcement is a release: a
    // canceller that sees the read also sees the cleared flag, so that its own store is not
    // overwritten.
    explicit Reading(ReadGate& gate) : gate_(gate), outer_(gate.reading()) {
      gate_.cancelled_.store(0, std::memory_order_release);
      gate_.reading_.store(1, std::memory_order_release);
    }
    ~Reading() { gate_.reading_.store(outer_, std::memory_order_release); }
    Reading(const Reading&) = delete;
    Reading& operator=(const Reading&) = delete;

   private:
    ReadGate& gate_;
    int outer_;
  };

  void Cancel() {
    if (reading() == 1) cancelled_.store(1, std::memory_order_release);
  }

  // Ends a read that never returned: a predicate has jumped out of it, or it is the parent's.
  void Reset() { reading_.store(0, std::memory_order_release); }

  [[nodiscard]] int reading() const { return reading_.load(std::memory_order_acquire); }
  [[nodiscard]] bool cancelled() const { return cancelled_.load(std::memory_order_acquire) != 0; }

 private:
  std::atomic<int> reading_{0};
  std::atomic<int> cancelled_{0};
};

}  // namespace gwq
