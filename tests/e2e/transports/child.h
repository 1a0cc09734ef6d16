// SPDX-License-Identifier: MIT
// A program run by a test, its output kept, and never left behind.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <vector>

namespace gwq::test {

// A temporary directory of the test's own, short enough for socket paths.
class TempDir {
 public:
  TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  ~TempDir();
  [[nodiscard]] const std::string& Path() const { return path_; }
  [[nodiscard]] bool IsEmpty() const { return std::filesystem::is_empty(path_); }

 private:
  std::string path_;
};

class Child {
 public:
  // `arguments` begin with the path of the program. `environment` is added to ours.
  explicit Child(std::vector<std::string> arguments, const std::vector<std::string>& environment = {});
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;
  ~Child();

  [[nodiscard]] pid_t Pid() const { return pid_; }
  void Signal(int signal) const;

  // The next line of its standard output, without the line end; empty at the end.
  [[nodiscard]] std::string ReadLine() const;
  [[nodiscard]] std::string ReadRest() const;
  // What it wrote on standard error; to be called after Wait.
  [[nodiscard]] std::string Errors() const;

  // Its exit status, or 128 and the number of the signal that ended it; -1 if
  // it was still there after ten seconds.
  int Wait();

 private:
  TempDir errors_;
  pid_t pid_ = -1;
  int output_ = -1;
  bool reaped_ = false;
};

// Direct children of a process.
std::vector<pid_t> ChildrenOf(pid_t pid);
std::string CommandLineOf(pid_t pid);
// A zombie counts as gone.
bool IsRunning(pid_t pid);

// Waits up to five seconds for it to come true.
template <typename Condition>
bool Soon(Condition condition);

void ShortSleep();

template <typename Condition>
bool Soon(Condition condition) {
  for (int i = 0; i < 1000; ++i) {
    if (condition()) return true;
    ShortSleep();
  }
  return false;
}

}  // namespace gwq::test
