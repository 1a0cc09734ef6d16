// SPDX-License-Identifier: MIT
// The links' writes with an end, as an exchange calls them.
#pragma once

#include "links/internal/terminal_line.h"

namespace gwq {

// As ICC_WriteLinuxCom.
int WriteSerial(unsigned char* data, int length, const WriteEnd& end);

// As ICC_WriteLinuxHid; `end` is not used, because a USB write ends after five transfers of at most
// one second.
int WriteUsbHid(unsigned char* data, int length, const WriteEnd& end);

}  // namespace gwq
