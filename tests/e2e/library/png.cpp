// SPDX-License-Identifier: MIT
#include "e2e/library/png.h"

#include <png.h>

#include <algorithm>
#include <stdexcept>

namespace gwq::test {

bool Picture::HasInk() const {
  return std::any_of(grey.begin(), grey.end(), [this](std::uint8_t shade) { return shade != grey.front(); });
}

Picture DecodePng(const std::filesystem::path& path) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  if (png_image_begin_read_from_file(&image, path.c_str()) == 0) {
    throw std::runtime_error(path.string().append(": ").append(image.message));
  }
  image.format = PNG_FORMAT_GRAY;
  Picture picture{image.width, image.height, std::vector<std::uint8_t>(PNG_IMAGE_SIZE(image))};
  if (png_image_finish_read(&image, nullptr, picture.grey.data(), 0, nullptr) == 0) {
    throw std::runtime_error(path.string().append(": ").append(image.message));
  }
  return picture;
}

}  // namespace gwq::test
