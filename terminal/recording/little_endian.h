// SPDX-License-Identifier: MIT
// Numbers in the byte order of the files that we write.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "base/types.h"

namespace gwq::terminal::recording {

template <std::integral T>
void AppendLittle(Bytes& out, T value) {
  auto bits = static_cast<std::make_unsigned_t<T>>(value);
  for (std::size_t i = 0; i < sizeof(T); ++i)
    out.push_back(static_cast<std::uint8_t>(std::uint64_t{bits} >> 8 * i));
}

}  // namespace gwq::terminal::recording
