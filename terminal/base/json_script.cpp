// SPDX-License-Identifier: MIT
#include "base/json_script.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <system_error>
#include <utility>

namespace gwq::terminal {
namespace {

constexpr std::int64_t kMaxDelay = 3'600'000;

// Counts the lines that the parser has begun to read.
class CountingIterator {
 public:
  using iterator_category = std::input_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = const char&;

  CountingIterator(const char* at, std::size_t& line) : at_(at), line_(&line) {}
  reference operator*() const { return *at_; }
  CountingIterator& operator++() {
    // Behind a number the parser has read one character more, which may be the line's end.
    *line_ += std::exchange(ended_line_, *at_ == '\n') ? 1U : 0U;
    ++at_;
    return *this;
  }
  CountingIterator operator++(int) {
    CountingIterator old = *this;
    ++*this;
    return old;
  }
  friend bool operator==(const CountingIterator& one, const CountingIterator& other) {
    return one.at_ == other.at_;
  }

 private:
  const char* at_;
  std::size_t* line_;
  bool ended_line_ = false;
};

// Follows the parser, and knows which member or element it reads.
class Locator {
 public:
  explicit Locator(const std::size_t& line) : line_(line) {}

  bool operator()(Json::parse_event_t event, const Json& parsed) {
    using Event = Json::parse_event_t;
    if (event == Event::key) {
      TakeName(parsed.get<std::string>());
    } else if (event == Event::object_end || event == Event::array_end) {
      open_.pop_back();
    } else {
      Begin();
      if (event != Event::value) open_.push_back({path_, event == Event::array_start, 0, {}});
    }
    return true;
  }

  [[nodiscard]] const std::map<std::string, std::size_t>& Lines() const { return lines_; }

 private:
  struct Open {
    std::string path;
    bool is_list = false;
    std::size_t next = 0;         // of a list
    std::set<std::string> names;  // of an object
  };

  // The parser itself would keep the last of several members with one name.
  void TakeName(const std::string& name) {
    if (!open_.back().names.insert(name).second)
      throw std::runtime_error("line " + std::to_string(line_) + ": duplicate member " + Quoted(name));
    path_ = open_.back().path + "/" + name;
    lines_[path_] = line_;
  }

  void Begin() {
    if (!open_.empty() && open_.back().is_list)
      path_ = open_.back().path + "/" + std::to_string(open_.back().next++);
    lines_.emplace(path_, line_);
  }

  const std::size_t& line_;
  std::vector<Open> open_;
  std::string path_;
  std::map<std::string, std::size_t> lines_;
};

}  // namespace

void Fail(const std::string& what) {
  throw ScriptError(what);
}

void FailAt(const Json& value, const std::string& what) {
  throw ScriptError(what, &value);
}

std::string Quoted(std::string_view text) {
  return std::string(1, '"').append(text).append(1, '"');
}

std::string Known(std::span<const std::string_view> names) {
  std::string list;
  for (const std::string_view name : names) list += (list.empty() ? "" : ", ") + std::string(name);
  return "(known: " + list + ")";
}

Script::Script(const std::string& text) {
  std::size_t line = 1;
  Locator locator(line);
  const auto look = [&locator](int /*depth*/, Json::parse_event_t event, Json& parsed) {
    return locator(event, parsed);
  };
  const char* const begin = text.data();
  try {
    root_ = Json::parse(CountingIterator(begin, line), CountingIterator(begin + text.size(), line), look,
                        true, true);
  } catch (const Json::exception& error) {
    throw std::runtime_error(error.what());
  }
  Locate(root_, "", locator.Lines());
}

void Script::Locate(const Json& value, const std::string& path, const Lines& lines) {
  if (const auto found = lines.find(path); found != lines.end()) lines_[&value] = found->second;
  if (!value.is_structured()) return;
  for (const auto& member : value.items()) Locate(member.value(), path + "/" + member.key(), lines);
}

std::string Script::WithLine(const ScriptError& error) const {
  const auto found = lines_.find(error.At() == nullptr ? &root_ : error.At());
  if (found == lines_.end()) return error.what();
  return "line " + std::to_string(found->second) + ": " + error.what();
}

std::string ReadScriptFile(const std::string& path) {
  if (std::filesystem::is_directory(path)) Fail("is a directory");
  std::ifstream file(path, std::ios::binary);
  if (!file) Fail("cannot be read: " + std::generic_category().message(errno));
  return {std::istreambuf_iterator<char>(file), {}};
}

void CheckMembers(const Json& object, std::span<const std::string_view> known) {
  if (!object.is_object()) FailAt(object, "must be an object");
  for (const auto& member : object.items()) {
    if (std::find(known.begin(), known.end(), member.key()) == known.end())
      FailAt(member.value(), "unknown member " + Quoted(member.key()) + " " + Known(known));
  }
}

std::chrono::milliseconds ReadDelay(const Json& step, std::chrono::milliseconds usual) {
  if (!step.contains("after_ms")) return usual;
  return std::chrono::milliseconds(ReadWhole(step, "after_ms", 0, kMaxDelay));
}

void CheckHasNoDelay(const Json& step) {
  if (step.contains("after_ms"))
    FailAt(step.at("after_ms"), "\"after_ms\" has no meaning beside \"walk_away\"");
}

void CheckIsTrue(const Json& step, const char* name) {
  const Json& value = step.at(name);
  if (!value.is_boolean() || !value.get<bool>()) FailAt(value, Quoted(name) + " can only be true");
}

std::string ReadText(const Json& object, const char* name) {
  if (!object.contains(name)) FailAt(object, "needs " + Quoted(name));
  const Json& value = object.at(name);
  if (!value.is_string() || value.get<std::string>().empty())
    FailAt(value, Quoted(name) + " must be a text that is not empty");
  return value.get<std::string>();
}

std::uint64_t ReadWhole(const Json& object, const char* name, std::uint64_t min, std::uint64_t max) {
  const Json& value = object.at(name);
  const bool fits =
      value.is_number_unsigned() && value.get<std::uint64_t>() >= min && value.get<std::uint64_t>() <= max;
  if (!fits)
    FailAt(value, Quoted(name) + " must be a whole number from " + std::to_string(min) + " to " +
                      std::to_string(max));
  return value.get<std::uint64_t>();
}

bool ReadFlag(const Json& object, const char* name) {
  const Json& value = object.at(name);
  if (!value.is_boolean()) FailAt(value, Quoted(name) + " must be true or false");
  return value.get<bool>();
}

const Json& ReadObject(const Json& object, const char* name) {
  const Json& value = object.at(name);
  if (!value.is_object()) FailAt(value, Quoted(name) + " must be an object");
  return value;
}

const Json& ReadList(const Json& object, const char* name) {
  const Json& value = object.at(name);
  if (!value.is_array() || value.empty()) FailAt(value, Quoted(name) + " must be a list that is not empty");
  return value;
}

}  // namespace gwq::terminal
