// SPDX-License-Identifier: MIT
#include "abi/programs.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <sstream>
#include <system_error>

namespace gwq::test {
namespace {

[[noreturn]] void Become(const std::vector<std::string>& command, const std::string& directory, int output) {
  std::vector<char*> arguments;
  arguments.reserve(command.size() + 1);
  for (const std::string& argument : command) arguments.push_back(const_cast<char*>(argument.c_str()));
  arguments.push_back(nullptr);
  if (!directory.empty() && chdir(directory.c_str()) != 0) _exit(126);
  dup2(output, STDOUT_FILENO);
  execvp(arguments[0], arguments.data());
  _exit(127);
}

std::string ReadAll(int fd) {
  std::string all;
  std::array<char, 4096> piece{};
  for (;;) {
    const ssize_t count = read(fd, piece.data(), piece.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return all;
    all.append(piece.data(), static_cast<std::size_t>(count));
  }
}

}  // namespace

Outcome RunProgram(const std::vector<std::string>& command, const std::string& directory) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) throw std::system_error(errno, std::generic_category(), "pipe2");
  const pid_t child = fork();
  if (child < 0) throw std::system_error(errno, std::generic_category(), "fork");
  if (child == 0) Become(command, directory, ends[1]);
  close(ends[1]);
  Outcome outcome{-1, ReadAll(ends[0])};
  close(ends[0]);
  int status = 0;
  waitpid(child, &status, 0);
  if (WIFEXITED(status)) outcome.exit_status = WEXITSTATUS(status);
  return outcome;
}

Outcome RunHost(const std::vector<std::string>& command, const std::string& directory) {
  std::vector<std::string> emulated = command;
  const char* const emulator = GWQ_EMULATOR;
  if (*emulator != '\0') emulated.emplace(emulated.begin(), emulator);
  return RunProgram(emulated, directory);
}

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

}  // namespace gwq::test
