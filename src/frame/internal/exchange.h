// SPDX-License-Identifier: MIT
// The one path that every exchange with the terminal takes:
//
//   wait for the turn -> open the port's link -> send the command -> receive -> close the link
//
// The TransProc functions only describe their exchange and pass it on.
#pragma once

#include <gwq/links/end_of_read.h>
#include <gwq/status_codes.h>
#include "frame/internal/dispatcher.h"
#include "frame/internal/turn.h"

namespace gwq {

// What differs between the kinds of exchange.
struct ExchangeKind {
  const char* opening_log;  // a format for the port; NULL logs nothing
  bool logs_identities;
  bool logs_before_send;
  bool sends;
  bool ends_with_call;  // fails with GWQ_CANCELLED once the call that it belongs to is cancelled
};

// Sends a command and reads the answer with the caller's predicate.
extern const ExchangeKind kAsk;
// Sends a command that has no answer.
extern const ExchangeKind kTell;
// Reads without sending.
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

// When an answer is complete.
struct AnswerEnd {
  GwqEndOfRead predicate;
  int timeout_ms;
};

// Where an answer is stored as text. `length`: in, the bytes that end the read; out, the answer's
// length.
struct AnswerRoom {
  char* text;
  int* length;
};

// The receiving half. Runs while the link is open; its result is the exchange's.
class Receiver {
 public:
  virtual int Receive(const ExchangeTurn& turn) = 0;

 protected:
  ~Receiver() = default;
};

// Runs one exchange. `receiver` may be NULL: the exchange then ends with GWQ_OK when the command is
// sent.
int RunExchange(const ExchangeKind& kind, Endpoint endpoint, const CommandBytes& command,
                const AnswerEnd& end, Receiver* receiver);

// Runs an exchange whose answer is text. A read that fails returns `read_failure`.
// Contract: without a buffer or a length no answer is read, and the result is GWQ_OK.
int Exchange(const ExchangeKind& kind, Endpoint endpoint, const CommandBytes& command, const AnswerEnd& end,
             AnswerRoom room, int read_failure = GWQ_READ_FAILED);

// Keeps the link of a port open. In a nested turn it uses the outer exchange's link, which stays
// open.
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
