// SPDX-License-Identifier: MIT
// The bytes with a meaning of their own on the line.
#pragma once

#include <cstdint>

namespace gwq::terminal::protocol {

inline constexpr std::uint8_t kStx = 0x02;
inline constexpr std::uint8_t kEtx = 0x03;
inline constexpr std::uint8_t kCr = 0x0D;
inline constexpr std::uint8_t kEsc = 0x1B;

inline constexpr std::uint8_t kEntryMode1 = 0x81;
inline constexpr std::uint8_t kEntryMode0 = 0x82;
inline constexpr std::uint8_t kEntryEnd = 0x83;

inline constexpr std::uint8_t kAccepted = 0xAA;     // answer to a key command
inline constexpr std::uint8_t kNotAccepted = 0x55;  // the same, refused
inline constexpr std::uint8_t kRefusalMark = 'U';   // STX 'U' ETX refuses anything else

}  // namespace gwq::terminal::protocol
