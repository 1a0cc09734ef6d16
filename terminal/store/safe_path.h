// SPDX-License-Identifier: MIT
// Ways inside a directory that cannot lead out of it.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/unique_fd.h"

namespace gwq::terminal::store {

// Where half-written files lie; no path of the terminal begins with it.
inline constexpr const char* kIncomingName = ".incoming";

// The steps of an absolute path; nothing when it is none that a file may have.
[[nodiscard]] std::optional<std::vector<std::string>> StepsOf(std::string_view path);

// Opens a directory directly in another one, not through a link.
[[nodiscard]] UniqueFd OpenDirectory(int parent, const std::string& name);

enum class Missing { kFail, kMake };

// Opens the directory at the end of `steps`; makes those that are missing if asked.
[[nodiscard]] UniqueFd Walk(int root, const std::vector<std::string>& steps, Missing missing);

// The names in a directory.
[[nodiscard]] std::vector<std::string> NamesIn(int directory);

// True for a plain file directly in this directory; its size goes to `size`.
[[nodiscard]] bool IsPlainFile(int directory, const std::string& name, std::uint64_t* size = nullptr);

// The sizes of all plain files below a directory.
[[nodiscard]] std::uint64_t SizeBelow(int directory);

}  // namespace gwq::terminal::store
