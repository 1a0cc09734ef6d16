// SPDX-License-Identifier: MIT
// What the terminal tells of itself, item by item; what it does not know is refused.
//
//   GETVERSION 5              STX version|build date ETX
//   GETGLOBALCONFIG 6 and 7   STX production date ETX
//   GETGLOBALCONFIG 8         STX model ETX
#pragma once

#include "device/host_channel.h"
#include "device/settings.h"
#include "device/text_commands.h"

namespace gwq::terminal::device {

class Description {
 public:
  // Both must outlive this object.
  Description(HostChannel& host, const Settings& settings) : host_(host), settings_(settings) {}

  // This object must outlive the table.
  void AddTo(TextCommands& table);

 private:
  void TellConfiguration(int item);
  void TellVersion(int item);

  HostChannel& host_;
  const Settings& settings_;
};

}  // namespace gwq::terminal::device
