// SPDX-License-Identifier: MIT
// Reads the JSON scripts of customers, faults and scenarios. What is
// wrong is thrown as a ScriptError, and Script adds the line: duplicate and unknown members and
// wrong types are refused, with what is allowed.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <map>
#include <nlohmann/json.hpp>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace gwq::terminal {

using Json = nlohmann::json;

// `at` is the value that is wrong; null while nobody has said which.
class ScriptError : public std::runtime_error {
 public:
  explicit ScriptError(const std::string& what, const Json* at = nullptr) : runtime_error(what), at_(at) {}
  [[nodiscard]] const Json* At() const { return at_; }

 private:
  const Json* at_;
};

[[noreturn]] void Fail(const std::string& what);
[[noreturn]] void FailAt(const Json& value, const std::string& what);
[[nodiscard]] std::string Quoted(std::string_view text);
// (known: one, another)
[[nodiscard]] std::string Known(std::span<const std::string_view> names);

// Says where something is wrong: in `value`, unless it is known better, which is called `place`.
template <typename Read>
auto In(const Json& value, const std::string& place, Read read) {
  try {
    return read();
  } catch (const ScriptError& error) {
    throw ScriptError(place + ": " + error.what(), error.At() == nullptr ? &value : error.At());
  } catch (const std::exception& error) {
    throw ScriptError(place + ": " + error.what(), &value);
  }
}

// A script, and where its values are in the text.
class Script {
 public:
  // JSON with comments in the manner of C++.
  explicit Script(const std::string& text);
  Script(const Script&) = delete;
  Script& operator=(const Script&) = delete;

  // The result of `read` with the script's value; what is wrong is thrown as a std::runtime_error,
  // with its line.
  template <typename Read>
  auto ReadBy(Read read) const {
    try {
      return read(root_);
    } catch (const ScriptError& error) {
      throw std::runtime_error(WithLine(error));
    }
  }

 private:
  using Lines = std::map<std::string, std::size_t>;  // of values by their paths

  void Locate(const Json& value, const std::string& path, const Lines& lines);
  [[nodiscard]] std::string WithLine(const ScriptError& error) const;

  Json root_;
  std::map<const Json*, std::size_t> lines_;
};

// The content of a file.
[[nodiscard]] std::string ReadScriptFile(const std::string& path);

void CheckMembers(const Json& object, std::span<const std::string_view> known);
inline void CheckMembers(const Json& object, std::initializer_list<std::string_view> known) {
  CheckMembers(object, std::span(known.begin(), known.size()));
}
// That of "after_ms", or `usual`.
[[nodiscard]] std::chrono::milliseconds ReadDelay(const Json& step, std::chrono::milliseconds usual);
void CheckHasNoDelay(const Json& step);
void CheckIsTrue(const Json& step, const char* name);

// Members that must be there, and of this type.
[[nodiscard]] std::string ReadText(const Json& object, const char* name);
[[nodiscard]] std::uint64_t ReadWhole(const Json& object, const char* name, std::uint64_t min,
                                      std::uint64_t max);
[[nodiscard]] bool ReadFlag(const Json& object, const char* name);
[[nodiscard]] const Json& ReadObject(const Json& object, const char* name);
[[nodiscard]] const Json& ReadList(const Json& object, const char* name);

// Each object of a list, which is not empty.
template <typename Item, typename Read>
std::vector<Item> ReadEach(const Json& list, const std::string& name, Read read) {
  std::vector<Item> items;
  for (const Json& json : list) {
    items.push_back(In(json, name + " " + std::to_string(items.size() + 1), [&] {
      if (!json.is_object()) Fail("is not an object");
      return Item(read(json));
    }));
  }
  return items;
}

}  // namespace gwq::terminal
