// The right to exchange with the terminal, which one thread at a time has: the links' state is process-wide, and a
// second exchange would close the device under a running transfer.
//
// The turn comes back whatever happens to the thread that has it:
//
//   it ends, cancelled or not          its thread-specific data's destructor gives the turn back
//   the host's predicate throws or     the thread's next exchange sees that its frames are gone; other threads take
//   jumps out of the exchange          the turn once the predicate has been away for a second
//   the process forks                  the child starts with the turn free and the links closed
//
// A predicate may begin an exchange of its own. On the port that is open it goes on over the open link; one on another
// port ends the exchange around it, as if the predicate had jumped.
#pragma once

#include <gwq/links/end_of_read.h>

namespace gwq {

struct PredicateMark;

class ExchangeTurn {
 public:
  // Waits until no other thread has the turn, and drops a cancel that was meant for an earlier exchange.
  explicit ExchangeTurn(int port);
  ~ExchangeTurn();
  ExchangeTurn(const ExchangeTurn&) = delete;
  ExchangeTurn& operator=(const ExchangeTurn&) = delete;

  // Whether it belongs to a predicate's exchange, within another one whose link is open.
  [[nodiscard]] bool nested() const { return nested_; }
  // Whether another thread has taken the turn in the meantime; the link is that thread's then.
  [[nodiscard]] bool Lost() const;

  // Whoever takes an abandoned turn closes the link that is left open.
  void SetLinkOpen(bool open) const;

 private:
  unsigned generation_;
  bool nested_;
  const PredicateMark* outer_predicate_;
  int hosts_cancel_state_;
};

// Within an exchange, where no link is in the middle of anything: a thread that has been cancelled ends here.
void AllowThreadCancel();

// Asks a predicate, from which the host's code may not return; a null one reads on. Allows the thread's cancel. Once the
// turn is lost the answer is 0, which ends the read.
int AskPredicate(GwqEndOfRead predicate, unsigned char* data, int count);

// Whether the calling thread exchanges, and its exchange has been cancelled.
bool ExchangeCancelled();

// While this thread waits for the turn it cancels again what has it: a cancel is lost between sending and reading.
class CancelsWhileWaiting {
 public:
  CancelsWhileWaiting();
  ~CancelsWhileWaiting();
  CancelsWhileWaiting(const CancelsWhileWaiting&) = delete;
  CancelsWhileWaiting& operator=(const CancelsWhileWaiting&) = delete;
};

// Cancels what runs and takes the turn, never to give it back. False when that takes too long, or the calling thread
// itself is in an exchange.
bool TakeTurnForGood(int longest_wait_ms);

}  // namespace gwq
