// SPDX-License-Identifier: MIT
#include "scenarios/report.h"

#include <algorithm>
#include <cstdio>
#include <sstream>

namespace gwq::terminal::scenarios {
namespace {

constexpr const char* kIndent = "    ";

std::string Seconds(std::chrono::milliseconds time, const char* format) {
  char text[32];
  std::snprintf(text, sizeof text, format, static_cast<double>(time.count()) / 1000);
  return text;
}

// The lines behind the first begin with this.
std::string Indented(const std::string& text, const std::string& margin) {
  std::istringstream lines(text);
  std::string indented;
  for (std::string line; std::getline(lines, line);) {
    if (!indented.empty()) indented.append(1, '\n').append(margin);
    indented += line;
  }
  return indented;
}

std::string FailureText(const Failure& failure, const std::string& indent) {
  const std::string margin = indent + "          ";
  return indent + "expected: " + Indented(failure.expected, margin) + "\n" + indent +
         "seen:     " + Indented(failure.seen, margin) + "\n";
}

std::size_t CountFailed(const std::vector<ScenarioResult>& results) {
  return static_cast<std::size_t>(std::count_if(
      results.begin(), results.end(), [](const ScenarioResult& result) { return !result.Passed(); }));
}

// Of a text without control characters.
std::string Xml(const std::string& text) {
  std::string xml;
  for (const char c : text) {
    switch (c) {
      case '&':
        xml += "&amp;";
        break;
      case '<':
        xml += "&lt;";
        break;
      case '>':
        xml += "&gt;";
        break;
      case '"':
        xml += "&quot;";
        break;
      case '\n':
        xml += "&#10;";
        break;
      default:
        xml += c;
    }
  }
  return xml;
}

std::string JunitCase(const ScenarioResult& result) {
  std::string xml = "    <testcase classname=\"gwq-terminal\" name=\"" + Xml(result.name) + "\" time=\"" +
                    Seconds(result.took, "%.3f") + "\"";
  if (result.Passed()) return xml + "/>\n";
  std::string all;
  for (const Failure& failure : result.failures) all += FailureText(failure, "");
  const Failure& first = result.failures.front();
  return xml + ">\n      <failure type=\"expectation\" message=\"" +
         Xml("expected: " + first.expected + "; seen: " + first.seen) + "\">" + Xml(all) +
         "</failure>\n    </testcase>\n";
}

}  // namespace

std::string ResultText(const ScenarioResult& result) {
  char head[128];
  std::snprintf(head, sizeof head, "%-32s %-6s (%s)\n", result.name.c_str(),
                result.Passed() ? "ok" : "FAILED", Seconds(result.took, "%.1f s").c_str());
  std::string text = head;
  for (const Failure& failure : result.failures) text += FailureText(failure, kIndent);
  if (result.Passed() || result.output.empty()) return text;
  return text + kIndent + "the command said:\n" + kIndent + "| " +
         Indented(result.output, std::string(kIndent) + "| ") + "\n";
}

std::string SummaryText(const std::vector<ScenarioResult>& results) {
  const std::size_t failed = CountFailed(results);
  return std::to_string(results.size() - failed) + " passed, " + std::to_string(failed) + " failed\n";
}

std::string JunitText(const std::vector<ScenarioResult>& results) {
  std::chrono::milliseconds took{0};
  std::string cases;
  for (const ScenarioResult& result : results) {
    took += result.took;
    cases += JunitCase(result);
  }
  const std::string counts = "tests=\"" + std::to_string(results.size()) + "\" failures=\"" +
                             std::to_string(CountFailed(results)) + "\" errors=\"0\" skipped=\"0\" time=\"" +
                             Seconds(took, "%.3f") + "\">\n";
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites " + counts +
         "  <testsuite name=\"gwq-terminal check\" " + counts + cases + "  </testsuite>\n</testsuites>\n";
}

}  // namespace gwq::terminal::scenarios
