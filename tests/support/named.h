// SPDX-License-Identifier: MIT
// What a test's parameter is called: shown in place of its bytes, and a part of the test's name.
#pragma once

#include <concepts>
#include <ostream>
#include <string>
#include <tuple>
#include <type_traits>

namespace gwq::test {

template <typename T>
requires requires(const T& parameter) {
  std::string(parameter.name);
}
std::string NameOf(const T& parameter) {
  return std::string(parameter.name);
}

template <std::integral T>
std::string NameOf(T number) {
  return std::to_string(number);
}

// What has a member `name`, or a NameOf of its own.
template <typename T>
concept Named = (std::is_class_v<T> || std::is_enum_v<T>)&&requires(const T& parameter) {
  { NameOf(parameter) } -> std::same_as<std::string>;
};

template <Named T>
void PrintTo(const T& parameter, std::ostream* out) {
  *out << NameOf(parameter);
}

// The last argument of INSTANTIATE_TEST_SUITE_P.
inline constexpr auto kByName = [](const auto& each) { return NameOf(each.param); };

// The same for a combination: all names, one after the other.
inline constexpr auto kByNames = [](const auto& each) {
  return std::apply([](const auto&... parts) { return (NameOf(parts) + ...); }, each.param);
};

// The parameters are of the tests' unnamed namespace, and are printed with what is found there.
namespace {
using test::PrintTo;
}

}  // namespace gwq::test
