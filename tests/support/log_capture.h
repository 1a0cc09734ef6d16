// SPDX-License-Identifier: MIT
// The diagnostic log of this test process. A program that links gwq_test_support has its own dladdr, which
// places the library in a fresh directory of the process: log and INI file are looked for there, and tests
// that run at the same time do not see each other's.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace gwq::test {

// The directory where the library believes to be; exists, without a trailing "/". Removed at exit.
const std::filesystem::path& ModuleDirectory();

// Log/Gwq_Volkarn in it, which need not exist.
std::filesystem::path LogDirectory();

// Makes the library believe to be in another file, until the next call; an empty path means
// <ModuleDirectory()>/libgwq.so again.
void PretendModuleIs(const std::string& file);

// Switches the log on for its lifetime, beginning with no log files.
class LogCapture {
 public:
  LogCapture();
  ~LogCapture();
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  // The message of each line so far, without its stamp and line end. A message may hold newlines itself.
  [[nodiscard]] std::vector<std::string> Messages() const;

  // The log as it is on disk, all days after one another.
  [[nodiscard]] std::string Raw() const;

  // Begins anew with an empty log.
  void Clear();
};

}  // namespace gwq::test
