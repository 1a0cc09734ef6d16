#include "customer/canvas.h"

#include <png.h>

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

namespace gwq::terminal {

void Canvas::Set(int x, int y, std::uint8_t grey) {
  if (x < 0 || y < 0 || x >= width_ || y >= height_) return;
  const auto row = static_cast<std::size_t>(y) * static_cast<std::size_t>(width_);
  pixels_[row + static_cast<std::size_t>(x)] = grey;
}

void Canvas::Dot(int x, int y, int radius, std::uint8_t grey) {
  for (int dy = -radius; dy <= radius; ++dy) {
    for (int dx = -radius; dx <= radius; ++dx) {
      if (dx * dx + dy * dy <= radius * radius) Set(x + dx, y + dy, grey);
    }
  }
}

void Canvas::Line(int x0, int y0, int x1, int y1, int radius, std::uint8_t grey) {
  const int steps = std::max({std::abs(x1 - x0), std::abs(y1 - y0), 1});
  for (int i = 0; i <= steps; ++i) Dot(x0 + (x1 - x0) * i / steps, y0 + (y1 - y0) * i / steps, radius, grey);
}

void Canvas::Box(int x, int y, int width, int height, std::uint8_t grey) {
  for (int row = y; row < y + height; ++row) {
    for (int column = x; column < x + width; ++column) Set(column, row, grey);
  }
}

std::vector<std::uint8_t> Canvas::Png() const {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = static_cast<png_uint_32>(width_);
  image.height = static_cast<png_uint_32>(height_);
  image.format = PNG_FORMAT_GRAY;
  std::vector<std::uint8_t> png(PNG_IMAGE_PNG_SIZE_MAX(image));
  png_alloc_size_t size = png.size();
  if (png_image_write_to_memory(&image, png.data(), &size, 0, pixels_.data(), 0, nullptr) == 0)
    throw std::runtime_error("the picture cannot be encoded");
  png.resize(size);
  return png;
}

}  // namespace gwq::terminal
