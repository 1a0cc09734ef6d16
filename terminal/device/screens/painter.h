// SPDX-License-Identifier: MIT
// Makes the pictures that the terminal keeps. Encoding them is no affair of the device.
#pragma once

#include <cstdint>
#include <vector>

#include "device/screens/pen.h"
#include "device/screens/screen.h"

namespace gwq::terminal::device {

class Painter {
 public:
  virtual ~Painter() = default;
  [[nodiscard]] virtual std::vector<std::uint8_t> Signature(const std::vector<PenPoint>& points) const = 0;
  // `pressed` is a key of the screen, or nullptr.
  [[nodiscard]] virtual std::vector<std::uint8_t> Picture(const Screen& screen,
                                                          const ScreenKey* pressed) const = 0;
};

}  // namespace gwq::terminal::device
