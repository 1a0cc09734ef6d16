// The links' writes as an exchange makes them.
#pragma once

#include "links/internal/terminal_line.h"

namespace gwq {

// As ICC_WriteLinuxCom.
int WriteSerial(unsigned char* data, int length, const WriteEnd& end);

// As ICC_WriteLinuxHid. A USB write ends by itself, after five transfers of a second each.
int WriteUsbHid(unsigned char* data, int length, const WriteEnd& end);

}  // namespace gwq
