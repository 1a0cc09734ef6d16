// The serial link's write as an exchange makes it, with an end.
#pragma once

#include "links/internal/terminal_line.h"

namespace gwq {

// As ICC_WriteLinuxCom.
int WriteSerial(unsigned char* data, int length, const tty::WriteEnd& end);

}  // namespace gwq
