// SPDX-License-Identifier: MIT
// The words that all rooms share.
#pragma once

#include <chrono>
#include <cstdint>
#include <vector>

namespace gwq::terminal {

using Bytes = std::vector<std::uint8_t>;

// Time since the terminal was switched on, given from outside.
using Time = std::chrono::milliseconds;

// How the bytes of the host arrive, which decides where a command without an
// end mark of its own ends: at the zero padding of a USB report, or where a
// serial line falls silent for a moment.
enum class Line { kUsb, kSerial };

}  // namespace gwq::terminal
