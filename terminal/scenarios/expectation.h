// SPDX-License-Identifier: MIT
// What must have happened in a run, as a scenario says it.
//
//   {"exit_status": 0}                           or "failure": 1 to 125
//   {"output_contains": "signed"}                the command's standard output
//   {"output_lacks": "error"}
//   {"at_most_s": 20}                            from the start of the command to its end
//   {"screens": ["html", {"kind": "signing", "contains": "agreement.pdf"}]}   in this order; others may be between
//   {"commands": ["YCNEWSTARTFILE", "YCNEWSTARTSIGN"]}                        in this order; others may be between
//   {"screen": "signing", "contains": "agreement.pdf", "times": 2}
//   {"command": "UPDATE"}
//   {"stored": "/tmp/agreement.pdf", "size": 2048}   or only the name, without directories
//   {"pin_asked": true}  {"pin_keyed": true}  {"unplugged": true}
//   {"last_screen": "idle"}                      what the customer still sees at the end
//
// Those from "screen" to "unplugged" are counted: "times": 2, "at_least": 2, "at_most": 2, "never":
// true; without any, at least once.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "base/json_script.h"
#include "scenarios/event.h"

namespace gwq::terminal::scenarios {

// All that can be known of a run.
struct Run {
  int exit_status = 0;
  std::chrono::milliseconds took{0};
  std::string output;
  History history;
};

// Events of one kind, with these properties.
struct Pattern {
  Event::Kind kind = Event::Kind::kScreen;
  std::string name;      // empty: any
  std::string contains;  // in the text
  std::optional<std::uint64_t> size;

  [[nodiscard]] bool Fits(const Event& event) const;
  [[nodiscard]] std::string Text() const;
};

struct ExitStatusIs {
  std::optional<int> status;  // nothing: a failure in good order
};
struct OutputHas {
  std::string text;
  bool lacks = false;
};
struct TakesAtMost {
  std::chrono::seconds limit{0};
};
struct OrderExpectation {
  std::vector<Pattern> patterns;
};
struct CountExpectation {
  Pattern pattern;
  std::uint64_t least = 1;
  std::optional<std::uint64_t> most;
};
struct EndsWithScreen {
  std::string kind;
};
using Expectation =
    std::variant<ExitStatusIs, OutputHas, TakesAtMost, OrderExpectation, CountExpectation, EndsWithScreen>;

// Throws std::runtime_error, telling what is wrong.
[[nodiscard]] Expectation ReadExpectation(const Json& json);

struct Failure {
  std::string expected;
  std::string seen;

  friend bool operator==(const Failure&, const Failure&) = default;
};

// Nothing when it is as expected.
[[nodiscard]] std::optional<Failure> Judge(const Expectation& expectation, const Run& run);

}  // namespace gwq::terminal::scenarios
