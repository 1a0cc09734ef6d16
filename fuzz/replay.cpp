// SPDX-License-Identifier: MIT
// Runs a fuzzer's inputs once, for builds without libFuzzer: files, and directories of files. With
// -stack=BYTES they run on a thread with so much stack, and how much of it was in use at most is
// told.
#include <unistd.h>

#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <vector>

#include "support/small_stack.h"
#include "support/temp_dir.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

using Input = std::vector<std::uint8_t>;

// A copy of exactly this size, so that the byte beside it is nobody's.
void Read(const std::filesystem::path& path, std::vector<Input>& inputs) {
  if (std::filesystem::is_directory(path)) {
    for (const auto& entry : std::filesystem::directory_iterator(path)) Read(entry.path(), inputs);
    return;
  }
  const std::string content = gwq::test::ReadFile(path);
  inputs.emplace_back(content.begin(), content.end());
  std::fprintf(stderr, "%zu: %s\n", inputs.size(), path.c_str());
}

// Which input runs, in case it is the last. Formatted output to stderr takes 8 KB of stack.
void Tell(std::size_t number) {
  char text[24];
  char* const end = std::to_chars(text, text + sizeof text - 1, number).ptr;
  *end = '\n';
  static_cast<void>(::write(STDERR_FILENO, text, static_cast<std::size_t>(end + 1 - text)) == 0);
}

void Replay(const std::vector<Input>& inputs) {
  std::size_t number = 0;
  for (const Input& input : inputs) {
    Tell(++number);
    LLVMFuzzerTestOneInput(input.data(), input.size());
  }
}

bool ReplayOnSmallStack(const std::vector<Input>& inputs, std::size_t size) {
  gwq::test::SmallStack stack(size);
  if (!stack.Run([&inputs] { Replay(inputs); })) {
    std::fprintf(stderr, "no thread with %zu bytes of stack\n", size);
    return false;
  }
  std::fprintf(stderr, "%zu of %zu bytes of stack used\n", stack.Used(), size);
  if (stack.CanaryIsWhole()) return true;
  std::fprintf(stderr, "written to below the guard page of the stack\n");
  return false;
}

}  // namespace

int main(int argc, char** argv) {
  constexpr std::string_view kStack = "-stack=";
  std::vector<Input> inputs;
  std::size_t stack = 0;
  for (int i = 1; i < argc; ++i) {
    const std::string_view argument = argv[i];
    if (argument.starts_with(kStack)) stack = std::strtoul(argv[i] + kStack.size(), nullptr, 10);
    if (argv[i][0] != '-') Read(argv[i], inputs);
  }
  bool held = true;
  if (stack == 0) {
    Replay(inputs);
  } else {
    held = ReplayOnSmallStack(inputs, stack);
  }
  std::fprintf(stderr, "%zu inputs replayed\n", inputs.size());
  return held && !inputs.empty() ? 0 : 1;
}
