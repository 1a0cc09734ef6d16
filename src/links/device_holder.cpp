// SPDX-License-Identifier: MIT
#include "links/internal/device_holder.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>

namespace gwq {
namespace {

using PathText = std::array<char, 300>;

struct CloseDirectory {
  void operator()(DIR* directory) const { closedir(directory); }
};
using Directory = std::unique_ptr<DIR, CloseDirectory>;

const char* NextEntry(DIR* directory) {
  const dirent* const entry = readdir(directory);  // NOLINT(concurrency-mt-unsafe): a stream of our own
  return entry == nullptr ? nullptr : static_cast<const char*>(entry->d_name);
}

// By the file, not its name: the same node has other names in other mount namespaces.
bool IsSameFile(const struct stat& one, const struct stat& other) {
  if (one.st_dev == other.st_dev && one.st_ino == other.st_ino) return true;
  return S_ISCHR(one.st_mode) && S_ISCHR(other.st_mode) && one.st_rdev == other.st_rdev;
}

// The link has the descriptor's own mode. Who only reads, as a program that lists devices, holds
// nothing.
bool IsForReadingAndWriting(const char* descriptor) {
  struct stat link {};
  constexpr mode_t kBoth = S_IRUSR | S_IWUSR;
  return lstat(descriptor, &link) == 0 && (link.st_mode & kBoth) == kBoth;
}

// Asks the status of device files only: that of a file on a server that is gone would block.
bool IsOpenAs(const char* descriptor, const struct stat& node) {
  PathText target{};
  const ssize_t length = readlink(descriptor, target.data(), target.size());
  if (length <= 0) return false;
  const std::string_view path(target.data(), static_cast<std::size_t>(length));
  if (path.find("/dev/") == std::string_view::npos) return false;
  struct stat opened {};
  return stat(descriptor, &opened) == 0 && IsSameFile(opened, node) && IsForReadingAndWriting(descriptor);
}

bool HasOpen(int pid, const struct stat& node) {
  PathText path{};
  std::snprintf(path.data(), path.size(), "/proc/%d/fd", pid);
  const Directory descriptors(opendir(path.data()));
  if (!descriptors) return false;
  while (const char* const name = NextEntry(descriptors.get())) {
    if (*name == '.') continue;
    std::snprintf(path.data(), path.size(), "/proc/%d/fd/%.16s", pid, name);
    if (IsOpenAs(path.data(), node)) return true;
  }
  return false;
}

Holder HolderOf(int pid) {
  Holder holder{.pid = pid};
  PathText path{};
  std::snprintf(path.data(), path.size(), "/proc/%d/comm", pid);
  std::FILE* const file = std::fopen(path.data(), "re");
  if (file == nullptr) return holder;
  if (std::fgets(holder.name.data(), static_cast<int>(holder.name.size()), file) != nullptr) {
    holder.name[std::strcspn(holder.name.data(), "\n")] = '\0';
  }
  std::fclose(file);
  return holder;
}

}  // namespace

NodePath UsbNode(int bus, int address, const char* root) {
  NodePath path{};
  std::snprintf(path.data(), path.size(), "%s/dev/bus/usb/%03d/%03d", root, bus, address);
  return path;
}

Holder FindHolder(const char* node) {
  struct stat status {};
  DIR* const found = stat(node, &status) == 0 ? opendir("/proc") : nullptr;
  const Directory processes(found);
  if (!processes) return {};
  const int own = getpid();
  while (const char* const name = NextEntry(processes.get())) {
    const int pid = std::atoi(name);
    if (pid > 0 && pid != own && HasOpen(pid, status)) return HolderOf(pid);
  }
  return HasOpen(own, status) ? HolderOf(own) : Holder{};
}

}  // namespace gwq
