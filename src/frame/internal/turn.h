// SPDX-License-Identifier: MIT
// The turn: the right to exchange with the terminal, for one thread at a time. The links' state is
// process-wide, and a second exchange would close the device while a transfer runs.
//
// The turn is released even if its owner does not return:
//
//   the thread ends or is cancelled    the destructor of its thread-specific data releases the turn
//   the host's predicate throws or     the thread's next exchange finds the frames gone; other
//   jumps out of the exchange          threads acquire the turn after 1 s in the predicate
//   the process forks                  the child starts with a free turn and closed links
//
// A predicate may start an exchange. On the open port it uses the open link; on another port it
// ends the exchange that called the predicate, as a jump does.
#pragma once

#include <gwq/links/end_of_read.h>

namespace gwq {

struct PredicateMark;

class ExchangeTurn {
 public:
  // Waits until no other thread has the turn and clears a cancel that was meant for an earlier
  // exchange.
  explicit ExchangeTurn(int port);
  ~ExchangeTurn();
  ExchangeTurn(const ExchangeTurn&) = delete;
  ExchangeTurn& operator=(const ExchangeTurn&) = delete;

  // Whether a predicate has started the exchange, within another one whose link is open.
  [[nodiscard]] bool nested() const { return nested_; }
  // Whether another thread has acquired the turn since; the link is then in its hands.
  [[nodiscard]] bool Lost() const;

  // The next owner of an abandoned turn closes a link that is open.
  void SetLinkOpen(bool open) const;

 private:
  unsigned generation_;
  bool nested_;
  const PredicateMark* outer_predicate_;
  int host_cancel_state_;
};

// A cancellation point within an exchange, for places where no transfer runs.
void AllowThreadCancel();

// Calls the host's code, which may not return. Within an exchange it is a cancellation point. Returns
// false once the turn is lost, and with it the link.
bool CallHost(void (*code)(void* context), void* context);

// Calls a predicate; NULL reads on. Returns 0, which ends the read, once the turn is lost.
int CallPredicate(GwqEndOfRead predicate, unsigned char* data, int count);

// Whether the calling thread's exchange has been cancelled; false outside an exchange.
bool ExchangeCancelled();

// While one exists, the thread repeats its cancel as long as it waits for the turn: a cancel
// between sending and reading is lost.
class CancelsWhileWaiting {
 public:
  CancelsWhileWaiting();
  ~CancelsWhileWaiting();
  CancelsWhileWaiting(const CancelsWhileWaiting&) = delete;
  CancelsWhileWaiting& operator=(const CancelsWhileWaiting&) = delete;
};

// Cancels the running exchange and acquires the turn, which is never released again. Returns false
// after `max_wait_ms`, or if the calling thread itself is in an exchange.
bool AcquireTurnForUnload(int max_wait_ms);

}  // namespace gwq
