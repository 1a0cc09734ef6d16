// SPDX-License-Identifier: MIT
// What is in the terminal when it is switched on:
//
//   /tmp/hw.png       the default customer's signature
//   /tmp/hw.txt       its strokes (customer/signature.h tells the layout)
//   /tmp/capture.png  a picture of the screen
#pragma once

#include "device/files/file_system.h"

namespace gwq::terminal::store {

// Leaves alone what is there already, and what cannot be written.
void PutInitialFiles(device::FileSystem& files);

}  // namespace gwq::terminal::store
