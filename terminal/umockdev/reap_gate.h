// SPDX-License-Identifier: MIT
// What poll sees on the device node.
//
// A host waits on its device node until it is "writable", which for usbfs means
// that a finished transfer can be reaped. The testbed's node is a plain file and
// therefore always writable, so that a waiting host would spin. A FIFO with room
// for one byte tells the truth instead: filled, there is nothing to reap; empty,
// there is.
#pragma once

#include <string>

#include "base/unique_fd.h"

namespace gwq::terminal::umockdev {

class ReapGate {
 public:
  ReapGate() = default;
  // Puts a FIFO in the place of the file at `path`.
  explicit ReapGate(const std::string& path);

  void SetReapable(bool reapable);

 private:
  UniqueFd reader_;
  UniqueFd writer_;
  bool reapable_ = true;
};

}  // namespace gwq::terminal::umockdev
