// SPDX-License-Identifier: MIT
// The counter command set: version, PIN length, master and working keys, and
// PINs in clear or as a block. Each is a row of the table of text commands.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "device/host_channel.h"
#include "device/pad/key_entry.h"
#include "device/pad/key_store.h"
#include "device/settings.h"
#include "device/text_commands.h"
#include "protocol/pattern.h"

namespace gwq::terminal::device {

class CounterCommands {
 public:
  // All must outlive this object.
  CounterCommands(HostChannel& host, KeyEntry& entry, const Settings& settings);

  // This object must outlive the table.
  void AddTo(TextCommands& table);

  [[nodiscard]] const KeyStore& Keys() const { return keys_; }

 private:
  using Build = std::function<std::optional<SecretBytes>(std::span<const std::uint8_t> digits)>;

  void TellVersion();
  void TellFirmwareVersion();

  void SetPinLength(int digits);
  void SetDisplay(int style);
  void SetTimeout(int seconds);

  void LoadMasterKey(std::string_view split_record);
  void LoadWorkingKey(std::string_view split_record);
  void ActivateWorkingKey(std::string_view split_record);
  void ResetKeys();

  void StartClearEntry(bool again);
  void StartBlockEntry(const protocol::Match& match, Build build);
  void AnswerBlock(std::span<const std::uint8_t> digits, const Build& build);
  [[nodiscard]] bool HasKeyFor(int cipher) const;
  [[nodiscard]] PinRequest Request(bool again, bool ends_when_full) const;
  void EndEntry();

  // Tells the trace what it was.
  void Accept(bool accepted, const std::string& detail);

  HostChannel& host_;
  KeyEntry& entry_;
  const Settings& settings_;
  KeyStore keys_;
  int pin_digits_ = 12;
  Time timeout_{30000};
};

}  // namespace gwq::terminal::device
