// Runs a fuzzer's inputs once, for builds without libFuzzer: files, and directories of files.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <vector>

#include "support/temp_dir.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

int Replay(const std::filesystem::path& path) {
  if (std::filesystem::is_directory(path)) {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(path)) count += Replay(entry.path());
    return count;
  }
  std::fprintf(stderr, "%s\n", path.c_str());
  const std::string content = gwq::test::ReadFile(path);
  // A copy of exactly this size, so that the byte beside it is nobody's.
  const std::vector<std::uint8_t> input(content.begin(), content.end());
  LLVMFuzzerTestOneInput(input.data(), input.size());
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  int count = 0;
  for (int i = 1; i < argc; ++i) {
    if (argv[i][0] != '-') count += Replay(argv[i]);
  }
  std::fprintf(stderr, "%d inputs replayed\n", count);
  return count > 0 ? 0 : 1;
}
