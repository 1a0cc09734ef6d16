// SPDX-License-Identifier: MIT
#include "scenarios/shipped.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>

namespace gwq::terminal::scenarios {
namespace {

namespace fs = std::filesystem;

constexpr const char* kExtension = ".json";
constexpr const char* kSchema = "scenario.schema.json";

fs::path Directory() {
  const fs::path program = fs::read_symlink("/proc/self/exe").parent_path();
  return (program / GWQ_SCENARIOS_FROM_PROGRAM).lexically_normal();
}

}  // namespace

std::vector<std::string> ShippedScenarios() {
  std::vector<std::string> files;
  std::error_code missing;
  for (const auto& entry : fs::directory_iterator(Directory(), missing)) {
    const fs::path& path = entry.path();
    if (path.extension() == kExtension && path.filename() != kSchema) files.push_back(path.string());
  }
  std::sort(files.begin(), files.end());
  return files;
}

// What has a "/" or an extension is a path; a name is not looked for in the working directory.
std::string FindScenario(const std::string& name_or_path) {
  const fs::path given(name_or_path);
  if (given.has_parent_path() || given.extension() == kExtension) {
    if (fs::exists(given)) return name_or_path;
    throw std::runtime_error("there is no scenario file " + name_or_path);
  }
  const fs::path shipped = Directory() / (name_or_path + kExtension);
  if (!name_or_path.empty() && fs::exists(shipped)) return shipped.string();
  throw std::runtime_error("there is no scenario \"" + name_or_path +
                           "\" (gwq-terminal check --list lists them; a file is named by its path)");
}

}  // namespace gwq::terminal::scenarios
