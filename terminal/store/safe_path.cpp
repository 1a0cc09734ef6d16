// SPDX-License-Identifier: MIT
#include "store/safe_path.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <memory>

namespace gwq::terminal::store {
namespace {

constexpr std::size_t kMaxPath = 4096;
constexpr std::size_t kMaxStep = 255;
constexpr int kMaxDepth = 64;  // of directories that we did not make ourselves

struct DirectoryCloser {
  void operator()(DIR* directory) const { closedir(directory); }
};

bool IsStep(const std::string& step) {
  return step != "." && step != ".." && step.size() <= kMaxStep;
}

std::uint64_t SizeBelow(int directory, int depth) {
  std::uint64_t total = 0;
  for (const std::string& name : NamesIn(directory)) {
    std::uint64_t size = 0;
    if (IsPlainFile(directory, name, &size)) total += size;
    const UniqueFd inner = depth > 0 ? OpenDirectory(directory, name) : UniqueFd();
    if (inner) total += SizeBelow(inner.Get(), depth - 1);
  }
  return total;
}

}  // namespace

std::optional<std::vector<std::string>> StepsOf(std::string_view path) {
  if (!path.starts_with('/') || path.size() > kMaxPath || path.find('\0') != std::string_view::npos)
    return std::nullopt;
  std::vector<std::string> steps;
  while (!path.empty()) {
    path.remove_prefix(1);
    const std::size_t end = std::min(path.find('/'), path.size());
    if (end > 0) steps.emplace_back(path.substr(0, end));
    path.remove_prefix(end);
  }
  const bool good =
      !steps.empty() && steps.front() != kIncomingName && std::all_of(steps.begin(), steps.end(), IsStep);
  return good ? std::optional(std::move(steps)) : std::nullopt;
}

UniqueFd OpenDirectory(int parent, const std::string& name) {
  return UniqueFd(openat(parent, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

UniqueFd Walk(int root, const std::vector<std::string>& steps, Missing missing) {
  UniqueFd directory = OpenDirectory(root, ".");
  for (const std::string& step : steps) {
    if (!directory) break;
    if (missing == Missing::kMake) mkdirat(directory.Get(), step.c_str(), 0755);
    directory = OpenDirectory(directory.Get(), step);
  }
  return directory;
}

std::vector<std::string> NamesIn(int directory) {
  std::vector<std::string> names;
  const int own = openat(directory, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (own < 0) return names;
  const std::unique_ptr<DIR, DirectoryCloser> stream(fdopendir(own));
  if (!stream) {
    close(own);
    return names;
  }
  // Each stream is read by one thread only.
  while (const dirent* entry = readdir(stream.get())) {  // NOLINT(concurrency-mt-unsafe)
    const std::string name = &entry->d_name[0];
    if (name != "." && name != "..") names.push_back(name);
  }
  return names;
}

bool IsPlainFile(int directory, const std::string& name, std::uint64_t* size) {
  struct stat status {};
  if (fstatat(directory, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) return false;
  if (!S_ISREG(status.st_mode)) return false;
  if (size != nullptr) *size = static_cast<std::uint64_t>(status.st_size);
  return true;
}

std::uint64_t SizeBelow(int directory) {
  return SizeBelow(directory, kMaxDepth);
}

}  // namespace gwq::terminal::store
