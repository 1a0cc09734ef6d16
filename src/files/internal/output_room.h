// Outputs whose size the contract does not pass.
#pragma once

#include <cstddef>

namespace gwq {

// Whether the calling thread has told that so many bytes find room, or nothing of it.
bool FindsRoom(std::size_t bytes);

}  // namespace gwq
