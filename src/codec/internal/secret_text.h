// Texts that may be secret.
#pragma once

#include <cstddef>

namespace gwq {

// strlen, without what it leaves in the vector registers: the log's functions have variable arguments, and on Arm such
// functions save these registers on the stack.
std::size_t SecretLength(const char* text);

}  // namespace gwq
