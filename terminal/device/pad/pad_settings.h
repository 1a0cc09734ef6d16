// SPDX-License-Identifier: MIT
// What the host can set in the PIN pad, and ask back. A value out of range is
// refused by kStatusBadArgument and changes nothing.
//
//   3010, 3033  encryption type    set, get: 0 triple DES, 1 SM4
//   3012, 3035  PIN length         set, get: 4 to 14
//   3013        end rule           0 Enter ends the entry; 1 the last digit does so too
//   3011        fill type          FF or 00: the filler nibble of the PIN block
//   3032        PIN mode           1 with the account; 5 without; 6 without, and exactly
//                                  as many digits as the PIN length
//   3014        sound type         0 to 3
//   3016        account            its length in one byte, and digits; or none of them
//   3018        device id          get; set by the text command JPOSTSETSN
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "device/framed_commands.h"
#include "device/host_channel.h"
#include "device/pad/ciphers.h"
#include "device/text_commands.h"

namespace gwq::terminal::device {

enum PinMode : std::uint8_t { kWithAccount = 1, kWithoutAccount = 5, kOfFixedLength = 6 };

struct PadValues {
  std::uint8_t encryption_type = 0;
  std::uint8_t pin_length = 6;
  std::uint8_t end_rule = 0;
  std::uint8_t fill_type = 0xFF;
  std::uint8_t pin_mode = kWithoutAccount;
  std::uint8_t sound_type = 1;
  std::string account;
  std::string device_id = "st_00000001";

  [[nodiscard]] Algorithm CurrentAlgorithm() const { return static_cast<Algorithm>(encryption_type); }
};

class PadSettings {
 public:
  explicit PadSettings(HostChannel& host) : host_(host) {}

  // This object must outlive the tables.
  void AddTo(TextCommands& texts, FramedCommands& frames);

  [[nodiscard]] const PadValues& Values() const { return values_; }

 private:
  [[nodiscard]] FramedAnswer SetAccount(Arguments arguments);
  void SetDeviceId(std::string_view id);

  HostChannel& host_;
  PadValues values_;
};

}  // namespace gwq::terminal::device
