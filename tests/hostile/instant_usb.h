// SPDX-License-Identifier: MIT
// A libusb of the program's own, with one terminal behind it: transfers take no real time, only the
// test clock's. The library finds it in the place of the real one, because the program exports it.
#pragma once

#include <cstdint>
#include <functional>

#include "faults/faulty_line.h"
#include "hostile/soak.h"

namespace gwq::test {

// Everything below must outlive all calls of the library, and so must `line`.
void PlugInstantTerminal(terminal::faults::FaultyLine& line);

// Called before each transfer.
void OnInstantTransfer(std::function<void()> hook);

Traffic TakeInstantTraffic();

// Devices open, and lists not freed.
int InstantUsbLeftovers();

}  // namespace gwq::test
