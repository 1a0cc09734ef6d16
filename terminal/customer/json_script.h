// SPDX-License-Identifier: MIT
// Reading the JSON scripts of customers. What is wrong is thrown as a
// std::runtime_error that tells it.
#pragma once

#include <chrono>
#include <cstdint>
#include <initializer_list>
#include <nlohmann/json.hpp>
#include <span>
#include <string>
#include <string_view>

namespace gwq::terminal {

using Json = nlohmann::json;

[[noreturn]] void Fail(const std::string& what);
[[nodiscard]] std::string Quoted(std::string_view text);

// JSON with comments in the manner of C++. An object that names a member twice is refused.
[[nodiscard]] Json ParseScript(const std::string& text);
// The content of a file.
[[nodiscard]] std::string ReadScriptFile(const std::string& path);

void CheckMembers(const Json& object, std::span<const std::string_view> known);
inline void CheckMembers(const Json& object, std::initializer_list<std::string_view> known) {
  CheckMembers(object, std::span(known.begin(), known.size()));
}
// That of "after_ms", or the usual one.
[[nodiscard]] std::chrono::milliseconds ReadDelay(const Json& step);
void CheckHasNoDelay(const Json& step);
void CheckIsTrue(const Json& step, const char* name);

// Members that must be there, and of this type.
[[nodiscard]] std::string ReadText(const Json& object, const char* name);
[[nodiscard]] std::uint64_t ReadWhole(const Json& object, const char* name, std::uint64_t least,
                                      std::uint64_t most);
[[nodiscard]] const Json& ReadList(const Json& object, const char* name);

}  // namespace gwq::terminal
