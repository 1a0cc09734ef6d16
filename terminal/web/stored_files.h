// SPDX-License-Identifier: MIT
// What the customer's page shows of the terminal's files.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "device/files/file_system.h"

namespace gwq::terminal::web {

// Nothing when there is no such file, or more than 64 MB of it.
[[nodiscard]] std::optional<std::string> ReadWhole(device::FileSystem& files, const std::string& path);
// The paths of those in the terminal's usual directories.
[[nodiscard]] std::vector<std::string> StoredFiles(device::FileSystem& files);

}  // namespace gwq::terminal::web
