// A grey picture to draw on.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace gwq::terminal {

class Canvas {
 public:
  Canvas(int width, int height) : width_(width), height_(height), pixels_(Count(), 255) {}

  // What lies outside is not drawn.
  void Dot(int x, int y, int radius, std::uint8_t grey);
  void Line(int x0, int y0, int x1, int y1, int radius, std::uint8_t grey);
  void Box(int x, int y, int width, int height, std::uint8_t grey);

  // Throws std::runtime_error if the encoder fails.
  [[nodiscard]] std::vector<std::uint8_t> Png() const;

 private:
  [[nodiscard]] std::size_t Count() const {
    return static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_);
  }
  void Set(int x, int y, std::uint8_t grey);

  int width_;
  int height_;
  std::vector<std::uint8_t> pixels_;
};

}  // namespace gwq::terminal
