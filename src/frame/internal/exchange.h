// The one path that every exchange with the terminal takes:
//
//   wait for the turn -> open the port's link -> send the command -> receive -> close the link
//
// The public members of the family are descriptions handed to it.
#pragma once

#include <gwq/frame/port.h>
#include "frame/internal/dispatcher.h"
#include "frame/internal/turn.h"
#include "usb_ids.h"

namespace gwq {

// What distinguishes one member of the family from another.
struct ExchangeKind {
  const char* opening_log;  // with the port as its one argument; null for silence
  bool logs_identities;
  bool logs_before_send;
  bool sends;
  bool ends_with_call;  // does not begin once the call that it belongs to is cancelled
};

// Sends a command, and the answer is read with a predicate of the caller's.
extern const ExchangeKind kAsk;
// Sends a command that has no answer.
extern const ExchangeKind kTell;
// Reads what is there.
extern const ExchangeKind kListen;

// Where the terminal is: 0 is USB, n of 1 or more the serial device /dev/ttyS(n-1).
struct Endpoint {
  int port;
  int baud;
};

struct CommandBytes {
  char* bytes;
  int length;
};

// When an answer is over.
struct AnswerEnd {
  GwqEndOfRead predicate;
  int timeout_ms;
};

// Where an answer is read to as text, and its length. `length` says on entry how many bytes end the read.
struct AnswerRoom {
  char* text;
  int* length;
};

// The receiving half; runs while the link is open and its result is the exchange's.
class Receiver {
 public:
  virtual int Receive(const ExchangeTurn& turn) = 0;

 protected:
  ~Receiver() = default;
};

// Runs one exchange; `receiver` may be null, which ends it with 0 once the command is sent.
int RunExchange(const ExchangeKind& kind, Endpoint endpoint, const CommandBytes& command,
                const AnswerEnd& end, Receiver* receiver);

// One whose answer is text; read only if there is room for it. A read that fails gives `read_failure`.
int Exchange(const ExchangeKind& kind, Endpoint endpoint, const CommandBytes& command, const AnswerEnd& end,
             AnswerRoom room, int read_failure = GWQ_READ_FAILED);

// The link of a port, held open; in a nested turn the outer exchange's link, for as long as that is not lost.
class OpenLink {
 public:
  OpenLink(const ExchangeTurn& turn, Endpoint endpoint, const AnswerEnd& end, bool logs_identities);
  ~OpenLink();
  OpenLink(const OpenLink&) = delete;
  OpenLink& operator=(const OpenLink&) = delete;

  explicit operator bool() const { return open_; }

 private:
  const ExchangeTurn& turn_;
  SavedParameters outer_;
  bool open_;
};

}  // namespace gwq
