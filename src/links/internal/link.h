// What a link is: the way to one kind of device, of which a process has one open at a time.
#pragma once

#include <cstdint>

#include <gwq/links/end_of_read.h>
#include "links/internal/terminal_line.h"

namespace gwq {

// Where a device is; each link takes what it needs of it.
struct LinkAddress {
  int vid;
  int pid;
  const char* path;
  int baud;
};

// The dispatcher calls all entries but `cancel` from the one thread that exchanges; these may block. `cancel` comes from
// any thread and never blocks.
struct Link {
  // Opens the device, or keeps it where it is open already. Returns 0; GWQ_LINK_NO_DEVICE if it is not there,
  // GWQ_NOT_OPENED if it cannot be had, GWQ_LINK_UNUSABLE if its settings cannot be applied. A failure leaves nothing open.
  int (*open)(const LinkAddress& address);

  // Writes `length` bytes. Returns how many were written, fewer after an error or at the end that `end` sets;
  // GWQ_LINK_WRITE if not all were and their count is unknown, GWQ_LINK_NO_DEVICE or GWQ_LINK_BAD_ARGUMENT if none can be.
  int (*write)(unsigned char* data, int length, const WriteEnd& end);

  // Reads until `maximum` bytes have arrived, `end` accepts them, or `timeout_s` is over; a USB read may bring 1023 bytes
  // more than `maximum`. Returns the bytes received, GWQ_LINK_TIMEOUT, GWQ_LINK_READ, GWQ_LINK_BAD_ARGUMENT, or, after
  // `cancel`, GWQ_CANCELLED or GWQ_LINK_CANCELLED. Bytes received before a failure stay in `buffer`.
  int (*read)(unsigned char* buffer, int maximum, int timeout_s, GwqEndOfRead end);

  // Closes what is open. Returns 0.
  int (*close)();

  // Makes the read that runs return; without one it has no effect. Returns 0, or GWQ_LINK_NO_DEVICE if nothing is open.
  int (*cancel)();
};

// By GwqLinkType; NULL for a type that has no link.
const Link* LinkOfType(std::int32_t type);

}  // namespace gwq
