// SPDX-License-Identifier: MIT
// What the customer's page is made of, and what it shows of the terminal's files.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "device/files/file_system.h"

namespace gwq::terminal {

// A file of the page itself, which is part of this program.
[[nodiscard]] std::optional<std::string> OwnFile(const std::string& name);
[[nodiscard]] const char* TypeOf(std::string_view name);

// A file of the terminal; nothing when there is none, or more than 64 MB of it.
[[nodiscard]] std::optional<std::string> ReadWhole(FileSystem& files, const std::string& path);
// Pictures and documents by their name; everything else is only bytes.
[[nodiscard]] const char* TypeOfStored(std::string_view path);
// The files in the terminal's usual directories.
[[nodiscard]] std::vector<std::string> StoredFiles(FileSystem& files);

}  // namespace gwq::terminal
