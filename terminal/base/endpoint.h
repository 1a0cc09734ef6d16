// SPDX-License-Identifier: MIT
// The terminal's end of a line, as a transport sees it: bytes in, bytes out, and deadlines.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "base/types.h"

namespace gwq::terminal {

class Endpoint {
 public:
  virtual ~Endpoint() = default;

  // Bytes from the host at `now`: on a USB line one report as it came (up to
  // 1024 bytes, zero-padded), on a serial line any piece of the stream. Any
  // bytes at all are allowed. Lets time pass up to `now` first.
  virtual void Receive(std::span<const std::uint8_t> bytes, Time now) = 0;

  // Lets time pass. `now` never goes backwards.
  virtual void Advance(Time now) = 0;

  // When Advance should be called next at the latest; nothing if the terminal
  // only waits for the host.
  [[nodiscard]] virtual std::optional<Time> NextDeadline() const = 0;

  // True once after the terminal has taken its answers back: those that the
  // transport holds ready and the host has not read are to be dropped. To be
  // asked before TakeAnswer.
  [[nodiscard]] virtual bool TakeWithdrawal() = 0;

  // The oldest answer not yet taken, without padding; nothing when there is none.
  // A USB transport pads it with zeros to whole 1024-byte reports.
  [[nodiscard]] virtual std::optional<Bytes> TakeAnswer() = 0;

 protected:
  Endpoint() = default;
  Endpoint(const Endpoint&) = default;
  Endpoint(Endpoint&&) = default;
  Endpoint& operator=(const Endpoint&) = default;
  Endpoint& operator=(Endpoint&&) = default;
};

}  // namespace gwq::terminal
