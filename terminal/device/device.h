// SPDX-License-Identifier: MIT
// The virtual terminal's behaviour, without any I/O: bytes in, bytes out, and a
// clock that the owner moves. Transports (USB by umockdev, pseudo-terminals)
// and tests own a Device and feed it; nothing in here opens, reads, sleeps or
// looks at a clock.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "base/endpoint.h"
#include "base/types.h"
#include "device/files/file_faults.h"
#include "device/files/file_system.h"
#include "device/pad/entry_state.h"
#include "device/screens/customer.h"
#include "device/screens/painter.h"
#include "device/settings.h"
#include "device/trace.h"

namespace gwq::terminal::device {

// The terminal's storage; must outlive the device. Without one nothing can be stored.
struct Storage {
  FileSystem* files = nullptr;
  FileFaults faults;
  FileSystem* keys = nullptr;  // the PIN pad's key pairs (key_pairs.h); null: they are new each time
};

class Device final : public Endpoint {
 public:
  // `customer` answers for the person in front of the terminal and must outlive the device.
  // `painter` too; without one the terminal keeps no pictures.
  Device(Line line, Customer& customer, Settings settings = {}, TraceSink trace = {}, Storage storage = {},
         const Painter* painter = nullptr);
  ~Device() override;
  Device(Device&&) noexcept;
  Device& operator=(Device&&) noexcept;

  void Receive(std::span<const std::uint8_t> bytes, Time now) override;
  // A serial command whose line fell silent is carried out, the customer acts, time-outs run down.
  void Advance(Time now) override;
  [[nodiscard]] std::optional<Time> NextDeadline() const override;
  [[nodiscard]] bool TakeWithdrawal() override;
  [[nodiscard]] std::optional<Bytes> TakeAnswer() override;

  // What the customer sees now, valid until the next call of another member.
  [[nodiscard]] const Screen& CurrentScreen() const;
  // When it will close by itself; nothing if it stays.
  [[nodiscard]] std::optional<Time> ScreenClosesAt() const;
  // Counts the screens, so that a change can be noticed.
  [[nodiscard]] std::uint64_t ScreenChanges() const;

  // The entry that waits; nothing when there is none.
  [[nodiscard]] std::optional<EntryState> CurrentEntry() const;

  // What the customer does now, whatever they were going to do: at the screen, and at the
  // PIN pad. Nothing happens where nothing is asked. Lets time pass up to `now` first.
  void Act(ScreenAction action, Time now);
  void Press(const PadKey& key, Time now);

  // The terminal's files; empty and closed when it has no storage.
  [[nodiscard]] FileSystem& Files() const;

 private:
  class Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace gwq::terminal::device
