// SPDX-License-Identifier: MIT
#include "child.h"

#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <thread>

namespace gwq::test {
namespace {

std::vector<char*> Pointers(const std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (const std::string& text : texts) pointers.push_back(const_cast<char*>(text.c_str()));
  pointers.push_back(nullptr);
  return pointers;
}

std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

TempDir::TempDir() : path_("/tmp/gwq-e2e.XXXXXX") {
  if (mkdtemp(path_.data()) == nullptr) throw std::runtime_error("no temporary directory");
}

TempDir::~TempDir() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

Child::Child(std::vector<std::string> arguments, const std::vector<std::string>& environment) {
  int output[2];
  if (pipe2(output, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
#ifdef GWQ_EMULATOR
  arguments.insert(arguments.begin(), GWQ_EMULATOR);
#endif
  std::vector<char*> argv = Pointers(arguments);
  std::vector<char*> env = Pointers(environment);
  env.pop_back();
  // Behind what was given, where the first entry of a name counts.
  for (char** entry = environ; *entry != nullptr; ++entry) env.push_back(*entry);
  env.push_back(nullptr);
  const std::string errors = errors_.Path() + "/stderr";
  pid_ = fork();
  if (pid_ == 0) {
    dup2(output[1], STDOUT_FILENO);
    dup2(open(errors.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600), STDERR_FILENO);
    execve(argv[0], argv.data(), env.data());
    _exit(99);
  }
  close(output[1]);
  output_ = output[0];
}

Child::~Child() {
  if (!reaped_) {
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
  }
  close(output_);
}

void Child::Signal(int signal) const {
  kill(pid_, signal);
}

std::string Child::ReadLine() const {
  std::string line;
  char letter = 0;
  while (read(output_, &letter, 1) == 1 && letter != '\n') line += letter;
  return line;
}

std::string Child::ReadRest() const {
  std::string text;
  char buffer[512];
  for (ssize_t count = 0; (count = read(output_, buffer, sizeof buffer)) > 0;)
    text.append(buffer, static_cast<std::size_t>(count));
  return text;
}

std::string Child::Errors() const {
  return ReadFile(errors_.Path() + "/stderr");
}

int Child::Wait() {
  int status = 0;
  reaped_ = Soon([&] { return waitpid(pid_, &status, WNOHANG) == pid_; }) ||
            Soon([&] { return waitpid(pid_, &status, WNOHANG) == pid_; });
  if (!reaped_) return -1;
  return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

std::vector<pid_t> ChildrenOf(pid_t pid) {
  const std::string id = std::to_string(pid);
  std::istringstream list(ReadFile("/proc/" + id + "/task/" + id + "/children"));
  return {std::istream_iterator<pid_t>(list), {}};
}

std::string CommandLineOf(pid_t pid) {
  return ReadFile("/proc/" + std::to_string(pid) + "/cmdline");
}

bool IsRunning(pid_t pid) {
  const std::string stat = ReadFile("/proc/" + std::to_string(pid) + "/stat");
  const std::size_t name_end = stat.rfind(')');
  return name_end != std::string::npos && stat.size() > name_end + 2 && stat[name_end + 2] != 'Z';
}

void ShortSleep() {
  std::this_thread::sleep_for(std::chrono::milliseconds(5));
}

}  // namespace gwq::test
