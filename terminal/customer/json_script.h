// Reading the JSON scripts of customers. What is wrong is thrown as a
// std::runtime_error that tells it.
#pragma once

#include <chrono>
#include <initializer_list>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace gwq::terminal {

using Json = nlohmann::json;

[[noreturn]] void Fail(const std::string& what);
[[nodiscard]] std::string Quoted(std::string_view text);

void CheckMembers(const Json& object, std::initializer_list<std::string_view> known);
// That of "after_ms", or the usual one.
[[nodiscard]] std::chrono::milliseconds ReadDelay(const Json& step);
void CheckHasNoDelay(const Json& step);
void CheckIsTrue(const Json& step, const char* name);

}  // namespace gwq::terminal
