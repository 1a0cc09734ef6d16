// SPDX-License-Identifier: MIT
// The links' entries that only an exchange calls.
#pragma once

#include <gwq/links/end_of_read.h>
#include "links/internal/terminal_line.h"

namespace gwq {

// The functions of serial.h and usb_hid.h, for code of the library.
int ICC_OpenLinuxCom(const char* path, int baud);
int ICC_ReadLinuxCom(unsigned char* buffer, int maximum, int timeout_s, GwqEndOfRead end);
int ICC_CloseLinuxCom();
int ICC_CancelLinuxComRead();
int ICC_OpenLinuxHid(int vid, int pid);
int ICC_ReadLinuxHid(unsigned char* buffer, int maximum, int timeout_s, GwqEndOfRead end);
int ICC_CloseLinuxHid();
int ICC_CancelLinuxHidRead();

// As ICC_WriteLinuxCom.
int WriteSerial(unsigned char* data, int length, const WriteEnd& end);

// As ICC_WriteLinuxHid; `end` is not used, because a USB write ends after five transfers of at most
// one second.
int WriteUsbHid(unsigned char* data, int length, const WriteEnd& end);

// As Link::drain.
int DrainSerial(int silence_ms);
int DrainUsbHid(int silence_ms);

}  // namespace gwq
