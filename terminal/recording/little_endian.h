// Numbers in the byte order of the files that we write.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>

#include "device/device.h"

namespace gwq::terminal {

template <std::integral T>
void AppendLittle(Bytes& out, T value) {
  auto bits = static_cast<std::uint64_t>(value);
  for (std::size_t i = 0; i < sizeof(T); ++i, bits >>= 8) out.push_back(static_cast<std::uint8_t>(bits));
}

}  // namespace gwq::terminal
