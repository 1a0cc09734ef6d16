// SPDX-License-Identifier: MIT
// Draws the pictures that the terminal keeps, as PNG.
#pragma once

#include <cstdint>
#include <vector>

#include "device/screens/painter.h"

namespace gwq::terminal {

[[nodiscard]] std::vector<std::uint8_t> ScreenPng(const Screen& screen, const ScreenKey* pressed = nullptr);

class PngPainter final : public Painter {
 public:
  [[nodiscard]] std::vector<std::uint8_t> Signature(const std::vector<PenPoint>& points) const override;
  [[nodiscard]] std::vector<std::uint8_t> Picture(const Screen& screen,
                                                  const ScreenKey* pressed) const override;
};

}  // namespace gwq::terminal
