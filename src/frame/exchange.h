// The one path that every exchange with the terminal takes:
//
//   wait for the turn -> open the port's link -> send the command -> receive -> close the link
//
// The public members of the family are descriptions handed to it.
#pragma once

#include "frame/port.h"
#include "frame/usb_ids.h"

namespace gwq {

// What distinguishes one member from another.
struct Member {
  const char* opening_log;  // with the port as its one argument; null for silence
  bool logs_identities;
  bool logs_before_send;
  bool sends;
};

struct Target {
  int port;
  int baud;
  int timeout_ms;
  GwqEndOfRead predicate;
};

struct Command {
  char* bytes;
  int length;
};

// The receiving half; runs while the link is open and its result is the exchange's.
class Receiver {
 public:
  virtual int Receive() = 0;

 protected:
  ~Receiver() = default;
};

// Runs one exchange; `receiver` may be null, which ends it with 0 once the command is sent.
int RunExchange(const Member& member, const Target& target, const Command& command, Receiver* receiver);

// The right to exchange; making one waits until no other thread has it. The links' state is process-wide: a
// second exchange would otherwise close the device under a running transfer. Taking the turn drops a cancel
// that was meant for an earlier exchange.
class ExchangeTurn {
 public:
  ExchangeTurn();
  ~ExchangeTurn();
  ExchangeTurn(const ExchangeTurn&) = delete;
  ExchangeTurn& operator=(const ExchangeTurn&) = delete;
};

// The link of a port, held open. Its owner has the turn.
class OpenLink {
 public:
  OpenLink(const Target& target, bool logs_identities);
  ~OpenLink();
  OpenLink(const OpenLink&) = delete;
  OpenLink& operator=(const OpenLink&) = delete;

  explicit operator bool() const { return open_; }

 private:
  bool open_;
};

}  // namespace gwq
