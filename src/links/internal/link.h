// SPDX-License-Identifier: MIT
// A link: the way to one kind of device. A process has at most one device of a kind open.
#pragma once

#include <cstdint>

#include <gwq/links/end_of_read.h>
#include "links/internal/terminal_line.h"

namespace gwq {

// Where a device is; each link uses the fields that it needs.
struct LinkAddress {
  int vid;
  int pid;
  const char* path;
  int baud;
};

// The dispatcher calls all entries except `cancel` from the one thread that exchanges; they may
// block. `cancel` may be called from any thread and never blocks.
struct Link {
  // Opens the device. Returns 0, also if a USB device is already open; GWQ_LINK_NO_DEVICE if there
  // is none, GWQ_NOT_OPENED if it cannot be opened or claimed, GWQ_LINK_UNUSABLE if its settings
  // cannot be applied. Nothing is open after a failure.
  int (*open)(const LinkAddress& address);

  // Writes `length` bytes. Returns the bytes written, fewer after an error or when `end` is
  // reached; GWQ_LINK_WRITE if only some were written and their count is unknown,
  // GWQ_LINK_NO_DEVICE or GWQ_LINK_BAD_ARGUMENT if none can be written.
  int (*write)(unsigned char* data, int length, const WriteEnd& end);

  // Reads until `maximum` bytes have arrived, `end` accepts them, or `timeout_s` is over; a USB
  // read may append up to 1023 bytes beyond `maximum`. Returns the bytes received,
  // GWQ_LINK_TIMEOUT, GWQ_LINK_READ, GWQ_LINK_BAD_ARGUMENT, or, after `cancel`, GWQ_CANCELLED or
  // GWQ_LINK_CANCELLED. Bytes received before a failure stay in `buffer`.
  int (*read)(unsigned char* buffer, int maximum, int timeout_s, GwqEndOfRead end);

  // Throws away what arrives until no byte has come for `silence_ms`, for a second at most. Returns
  // GWQ_LINK_TIMEOUT, or as a read after a failure or `cancel`.
  int (*drain)(int silence_ms);

  // Closes the device if it is open. Returns 0.
  int (*close)();

  // Makes a running read return; has no effect without one. Returns 0, or GWQ_LINK_NO_DEVICE if
  // nothing is open.
  int (*cancel)();
};

// By GwqLinkType; NULL for a type that has no link.
const Link* LinkOfType(std::int32_t type);

}  // namespace gwq
