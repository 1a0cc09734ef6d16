// SPDX-License-Identifier: MIT
// The picture of what a customer writes on the pad.
#pragma once

#include <cstdint>
#include <vector>

#include "device/screens/pen.h"

namespace gwq::terminal::picture {

// A PNG of the signing area, black on white.
[[nodiscard]] std::vector<std::uint8_t> SignaturePng(const std::vector<device::PenPoint>& points);

}  // namespace gwq::terminal::picture
