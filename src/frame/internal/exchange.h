// The one path that every exchange with the terminal takes:
//
//   wait for the turn -> open the port's link -> send the command -> receive -> close the link
//
// The public members of the family are descriptions handed to it.
#pragma once

#include <gwq/frame/port.h>
#include "frame/internal/dispatcher.h"
#include "frame/internal/turn.h"
#include "frame/internal/usb_ids.h"

namespace gwq {

// What distinguishes one member from another.
struct Member {
  const char* opening_log;  // with the port as its one argument; null for silence
  bool logs_identities;
  bool logs_before_send;
  bool sends;
  bool ends_with_call;  // does not begin once the call that it belongs to is cancelled
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
  virtual int Receive(const ExchangeTurn& turn) = 0;

 protected:
  ~Receiver() = default;
};

// Runs one exchange; `receiver` may be null, which ends it with 0 once the command is sent.
int RunExchange(const Member& member, const Target& target, const Command& command, Receiver* receiver);

// The link of a port, held open; in a nested turn the outer exchange's link, for as long as that is not lost.
class OpenLink {
 public:
  OpenLink(const ExchangeTurn& turn, const Target& target, bool logs_identities);
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
