// SPDX-License-Identifier: MIT
// What a page asks for, done.
#pragma once

#include "web/customer_page.h"
#include "web/messages.h"

namespace gwq::terminal::web {

// Does nothing when the request names a screen or an entry that is gone.
void CarryOut(const PageRequest& request, PageTerminal& terminal);

}  // namespace gwq::terminal::web
