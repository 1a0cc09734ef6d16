// SPDX-License-Identifier: MIT
// What came of scenarios, for people and for build servers.
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "scenarios/expectation.h"

namespace gwq::terminal::scenarios {

// All texts are free of secrets, and printable (masking.h).
struct ScenarioResult {
  std::string name;
  std::chrono::milliseconds took{0};
  std::vector<Failure> failures;  // none: it has passed
  std::string output;             // the end of what the command said; only for people

  [[nodiscard]] bool Passed() const { return failures.empty(); }
};

// With its line ends.
[[nodiscard]] std::string ResultText(const ScenarioResult& result);
[[nodiscard]] std::string SummaryText(const std::vector<ScenarioResult>& results);

// In the layout that build servers know from JUnit.
[[nodiscard]] std::string JunitText(const std::vector<ScenarioResult>& results);

}  // namespace gwq::terminal::scenarios
