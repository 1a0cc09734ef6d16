// SPDX-License-Identifier: MIT
// Entries of a PIN under the PIN pad's working key, and of other numbers. The
// answer comes when the customer is done.
//
//   3005 t       PIN block, within t seconds
//   4030 t text  the same; the screen shows the text
//
// Triple DES enciphers a block of ISO 9564 format 0; SM4 the same eight bytes and
// eight times 08, their padding. An entry without a PIN ends in no frame, but in
//
//   01 03  the customer cancelled      02 03  time-out      03  no working key
//
// GETINNO seconds|digits|display|prompt asks for a number: at most so many digits
// (0: 20), display 0 shown, 1 as stars, 2 not at all, prompt in GBK, split. The
// answer is one of
//
//   B digits F  the number      CF  cancelled      TF  time-out      RF  refused
#pragma once

#include <optional>
#include <span>
#include <string>

#include "device/framed_commands.h"
#include "device/host_channel.h"
#include "device/pad/key_entry.h"
#include "device/pad/pad_keys.h"
#include "device/pad/pad_settings.h"
#include "device/text_commands.h"

namespace gwq::terminal::device {

class PadEntry {
 public:
  // All must outlive this object.
  PadEntry(HostChannel& host, KeyEntry& entry, const PadValues& values, const PadKeys& keys)
      : host_(host), entry_(entry), values_(values), keys_(keys) {}

  // This object must outlive the tables.
  void AddTo(TextCommands& texts, FramedCommands& frames);

 private:
  void StartPin(int seconds, Arguments shown);
  [[nodiscard]] PinRequest Request(int seconds, Arguments shown) const;
  void AnswerBlock(std::span<const std::uint8_t> digits);
  [[nodiscard]] std::optional<SecretBytes> Block(std::span<const std::uint8_t> digits) const;
  void EndPin(KeyEntry::End end);
  void RefusePin();

  void StartNumber(const protocol::Match& match);
  void AnswerNumber(char lead, std::span<const std::uint8_t> digits, const std::string& what);

  HostChannel& host_;
  KeyEntry& entry_;
  const PadValues& values_;
  const PadKeys& keys_;
};

}  // namespace gwq::terminal::device
