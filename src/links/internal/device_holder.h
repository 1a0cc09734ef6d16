// SPDX-License-Identifier: MIT
// The process that has a device file open for reading and writing.
#pragma once

#include <array>

namespace gwq {

struct Holder {
  int pid = 0;  // 0: none that this user may see
  std::array<char, 32> name{};
};

// The node of a USB device, below `root`, which is empty but in tests.
using NodePath = std::array<char, 256>;
NodePath UsbNode(int bus, int address, const char* root = "");

// Looks through the open files of every process that this user may see. Another process is found
// before this one.
Holder FindHolder(const char* node);

}  // namespace gwq
