// SPDX-License-Identifier: MIT
// Draws the pictures that the terminal keeps, as PNG.
#pragma once

#include <cstdint>
#include <vector>

#include "device/screens/painter.h"

namespace gwq::terminal::picture {

[[nodiscard]] std::vector<std::uint8_t> ScreenPng(const device::Screen& screen,
                                                  const device::ScreenKey* pressed = nullptr);

class PngPainter final : public device::Painter {
 public:
  [[nodiscard]] std::vector<std::uint8_t> Signature(
      const std::vector<device::PenPoint>& points) const override;
  [[nodiscard]] std::vector<std::uint8_t> Picture(const device::Screen& screen,
                                                  const device::ScreenKey* pressed) const override;
};

}  // namespace gwq::terminal::picture
