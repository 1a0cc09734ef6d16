// SPDX-License-Identifier: MIT
#include "base/private_dir.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <filesystem>
#include <string_view>
#include <system_error>

#include "base/errors.h"
#include "base/processes.h"

namespace gwq::terminal {
namespace {

constexpr std::string_view kPrefix = "gwq-terminal-";
constexpr std::string_view kRandom = "XXXXXX";

// The testbed adds its own directory and a socket's name, some 45 characters,
// to this; a socket address holds 107.
constexpr std::size_t kLongestParent = 44;

std::string Parent() {
  std::error_code error;
  const std::filesystem::path parent = std::filesystem::temp_directory_path(error);
  if (error || parent.string().size() > kLongestParent) return "/tmp";
  return std::filesystem::absolute(parent).string();
}

bool HasOurName(const std::filesystem::path& path) {
  const std::string name = path.filename().string();
  return name.starts_with(kPrefix) && name.size() == kPrefix.size() + kRandom.size();
}

UniqueFd OpenDir(const std::string& path) {
  return UniqueFd(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

bool IsOurs(int dir) {
  struct stat state {};
  return fstat(dir, &state) == 0 && state.st_uid == geteuid();
}

// The lock keeps away whoever else removes it, and a process that has just made it and locks it too late.
void RemoveIfAbandoned(const std::string& path) {
  const UniqueFd dir = OpenDir(path);
  if (!dir || !IsOurs(dir.Get()) || flock(dir.Get(), LOCK_EX | LOCK_NB) != 0) return;
  if (ProcessesOf(path).empty()) PrivateDir::Remove(path);
}

void Sweep(const std::string& parent) {
  std::error_code error;
  for (std::filesystem::directory_iterator entry(parent, error), end; !error && entry != end;
       entry.increment(error)) {
    if (HasOurName(entry->path())) RemoveIfAbandoned(entry->path().string());
  }
}

std::string NewDir(const std::string& parent) {
  std::string path = (parent + "/").append(kPrefix).append(kRandom);
  if (mkdtemp(path.data()) == nullptr) ThrowErrno("cannot make a directory in " + parent);
  return path;
}

std::string SweptParent() {
  std::string parent = Parent();
  Sweep(parent);
  return parent;
}

}  // namespace

DirLock::DirLock(const std::string& dir) : dir_(OpenDir(dir)) {
  // Where directories cannot be locked, nobody sweeps either.
  while (dir_ && flock(dir_.Get(), LOCK_SH) != 0 && errno == EINTR) continue;
}

bool DirLock::IsHeld() const {
  struct stat state {};
  return dir_ && fstat(dir_.Get(), &state) == 0 && state.st_nlink > 0;
}

// A process that starts at the same time may have taken the new directory for an abandoned one.
PrivateDir::PrivateDir() : path_(NewDir(SweptParent())), lock_(path_) {
  constexpr int kAttempts = 10;
  for (int attempt = 1; !lock_.IsHeld(); ++attempt) {
    const int error = errno;
    Remove(path_);
    if (attempt == kAttempts) throw std::system_error(error, std::generic_category(), path_);
    path_ = NewDir(std::filesystem::path(path_).parent_path().string());
    lock_ = DirLock(path_);
  }
}

// umockdev aborts when it cannot make a file, and does not say why.
void PrivateDir::CheckRoom() const {
  constexpr int kFiles = 64;
  const std::string room = path_ + "/room";
  Checked(mkdir(room.c_str(), 0700), path_);
  for (int number = 0; number < kFiles; ++number) {
    const std::string name = room + "/" + std::to_string(number);
    const UniqueFd file(Checked(open(name.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600), path_));
    Checked(static_cast<int>(write(file.Get(), "", 1)), path_);
  }
  std::filesystem::remove_all(room);
}

void PrivateDir::Remove(const std::string& path) {
  if (!HasOurName(path)) return;
  std::error_code ignored;
  std::filesystem::remove_all(path, ignored);
}

}  // namespace gwq::terminal
