// SPDX-License-Identifier: MIT
// A transfer as a line of text:
//
//   TIME usb out 02 1024 1b "[0GETVERSION" 00*1011
//   TIME usb in 81 1024 02 "V1.0.0|20240615" 03 00*1007
//   TIME usb in 81 0 status=-2
//   TIME usb control 80 18 setup=8006000100001200 12 01 00*2 ...
//   TIME serial in - 1 aa
//
// TIME is seconds since the beginning, with six decimals. Data are bytes in hexadecimal, repeated by *N,
// printable ASCII in quotation marks, and ?*N for N masked bytes.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "recording/transfer.h"

namespace gwq::terminal::recording {

inline constexpr std::string_view kTextHead = "# gwq-terminal recording 1";
// A longer transfer than hosts make.
inline constexpr std::size_t kMaxTransferSize = std::size_t{1} << 20;

// As the data of a line are written.
[[nodiscard]] std::string DataText(std::span<const std::uint8_t> data, const Masks& masks);

[[nodiscard]] std::string LineOf(const WireTransfer& transfer);

// Throws std::runtime_error with what is wrong with it.
[[nodiscard]] WireTransfer ParseLine(std::string_view line);

}  // namespace gwq::terminal::recording
