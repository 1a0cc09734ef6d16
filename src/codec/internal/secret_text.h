// SPDX-License-Identifier: MIT
// The length of a text that may be secret.
#pragma once

#include <cstddef>

namespace gwq {

// strlen that clears the vector registers it used: on Arm the log's variadic functions save these
// registers on the stack.
std::size_t SecretLength(const char* text);

}  // namespace gwq
