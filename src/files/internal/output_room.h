// SPDX-License-Identifier: MIT
// The size of a caller's output buffer where no argument of the interface tells it.
#pragma once

#include <cstddef>

namespace gwq {

// Whether so many bytes fit into what the calling thread has set by GWQ_SetOutputRoom. True when it
// has set nothing.
bool FitsOutputRoom(std::size_t bytes);

}  // namespace gwq
