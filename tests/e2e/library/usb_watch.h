// SPDX-License-Identifier: MIT
// Looks at the library's USB transfers on their way to the real libusb, and makes its drains short.
//
// The program defines libusb_open, libusb_bulk_transfer and time itself; the library finds these
// first. Transfers are passed on as they are.
#pragma once

#include <chrono>
#include <string>

namespace gwq::test {

// From now on looks for a command that holds these bytes.
void WatchForQuestion(const std::string& bytes);

// Waits until such a command has gone out and the read of its answer has begun: a cancel is not lost then.
bool AwaitReadOfAnswer(std::chrono::milliseconds at_most);

// A read that follows no command throws away what an earlier call left, until the clock's second
// changes. From now on the library's clock jumps to the next second as soon as such a read has
// found nothing for once.
void ShortenDrains();
// From now on no longer.
void LeaveDrainsLong();

// Exchanges that have ended before the whole of a command, or of a file's packet, had gone out.
int CutCommands();

// USB devices and serial ports that this process holds open.
int OpenLinks();

}  // namespace gwq::test
