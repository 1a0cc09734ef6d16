// SPDX-License-Identifier: MIT
// Pictures that came from the terminal, decoded by libpng.
#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

namespace gwq::test {

struct Picture {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::vector<std::uint8_t> grey;

  // Whether anything is drawn: blank paper is of one shade.
  [[nodiscard]] bool HasInk() const;
};

// Throws std::runtime_error when it is none.
Picture DecodePng(const std::filesystem::path& path);

}  // namespace gwq::test
