// SPDX-License-Identifier: MIT
#include "store/file_store.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <filesystem>
#include <system_error>

#include "store/safe_path.h"

namespace gwq::terminal::store {
namespace {

// Two stores may share a directory.
std::string IncomingName() {
  static std::atomic<unsigned> count{0};
  return std::to_string(getpid()) + "." + std::to_string(++count);
}

[[noreturn]] void Fail(const std::string& directory) {
  throw std::system_error(errno, std::generic_category(), "storage " + directory);
}

UniqueFd OpenRoot(const std::string& directory) {
  std::filesystem::create_directories(directory);
  UniqueFd root(open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!root) Fail(directory);
  return root;
}

bool WriteAll(int fd, std::span<const std::uint8_t> bytes) {
  while (!bytes.empty()) {
    const ssize_t count = write(fd, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    bytes = bytes.subspan(static_cast<std::size_t>(count));
  }
  return true;
}

// The name at the end of a path, and the directory it is in.
struct Place {
  UniqueFd directory;
  std::string name;
};

std::optional<Place> Find(int root, const std::string& path, Missing missing) {
  auto steps = StepsOf(path);
  if (!steps) return std::nullopt;
  Place place;
  place.name = std::move(steps->back());
  steps->pop_back();
  place.directory = Walk(root, *steps, missing);
  return place;
}

}  // namespace

class FileStore::Reader final : public device::FileReader {
 public:
  Reader(UniqueFd file, std::uint64_t size) : file_(std::move(file)), size_(size) {}

  [[nodiscard]] std::uint64_t Size() const override { return size_; }

  std::optional<std::size_t> Read(std::span<std::uint8_t> out) override {
    std::size_t filled = 0;
    while (filled < out.size()) {
      const ssize_t count = read(file_.Get(), out.data() + filled, out.size() - filled);
      if (count < 0 && errno == EINTR) continue;
      if (count < 0) return std::nullopt;
      if (count == 0) break;
      filled += static_cast<std::size_t>(count);
    }
    return filled;
  }

 private:
  UniqueFd file_;
  std::uint64_t size_;
};

class FileStore::Writer final : public device::FileWriter {
 public:
  Writer(FileStore& store, UniqueFd incoming, UniqueFd file, std::string name)
      : store_(store), incoming_(std::move(incoming)), file_(std::move(file)), name_(std::move(name)) {}
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;

  ~Writer() override {
    if (!moved_) unlinkat(incoming_.Get(), name_.c_str(), 0);
    store_.pending_ -= size_;
  }

  [[nodiscard]] bool Append(std::span<const std::uint8_t> bytes) override {
    if (broken_ || !store_.Reserve(size_, bytes.size())) return !(broken_ = true);
    size_ += bytes.size();
    broken_ = !WriteAll(file_.Get(), bytes);
    return !broken_;
  }

  [[nodiscard]] device::FileResult StoreAs(const std::string& path) override {
    if (broken_ || moved_) return device::FileResult::kFailed;
    const auto place = Find(store_.root_.Get(), path, Missing::kMake);
    if (!place) return device::FileResult::kBadPath;
    moved_ = place->directory &&
             renameat(incoming_.Get(), name_.c_str(), place->directory.Get(), place->name.c_str()) == 0;
    return moved_ ? device::FileResult::kDone : device::FileResult::kFailed;
  }

 private:
  FileStore& store_;
  UniqueFd incoming_;
  UniqueFd file_;
  std::string name_;
  std::uint64_t size_ = 0;
  bool broken_ = false;
  bool moved_ = false;
};

FileStore::FileStore(const std::string& directory, StoreLimits limits)
    : root_(OpenRoot(directory)), limits_(limits) {
  const UniqueFd incoming = OpenIncoming();
  if (!incoming) return;  // nothing can be written then, but much be read
  for (const std::string& name : NamesIn(incoming.Get())) unlinkat(incoming.Get(), name.c_str(), 0);
}

// Succeeds only when nothing is coming, for this store or another.
FileStore::~FileStore() {
  unlinkat(root_.Get(), kIncomingName, AT_REMOVEDIR);
}

// Each time anew, because another store of this directory may have removed it.
UniqueFd FileStore::OpenIncoming() const {
  mkdirat(root_.Get(), kIncomingName, 0700);
  return OpenDirectory(root_.Get(), kIncomingName);
}

// Opening must not wait for the other end of a pipe that lies there.
std::unique_ptr<device::FileReader> FileStore::Open(const std::string& path) {
  const auto place = Find(root_.Get(), path, Missing::kFail);
  if (!place || !place->directory) return nullptr;
  UniqueFd file(openat(place->directory.Get(), place->name.c_str(),
                       O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  struct stat status {};
  if (!file || fstat(file.Get(), &status) != 0 || !S_ISREG(status.st_mode)) return nullptr;
  return std::make_unique<Reader>(std::move(file), static_cast<std::uint64_t>(status.st_size));
}

// What lies in the directory may have been changed by others, so it is counted anew.
std::unique_ptr<device::FileWriter> FileStore::Create() {
  UniqueFd incoming = OpenIncoming();
  if (!incoming) return nullptr;
  std::string name = IncomingName();
  UniqueFd file(
      openat(incoming.Get(), name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
  if (!file) return nullptr;
  const std::uint64_t all = SizeBelow(root_.Get());
  stored_ = all - std::min(all, SizeBelow(incoming.Get()));
  return std::make_unique<Writer>(*this, std::move(incoming), std::move(file), std::move(name));
}

device::FileResult FileStore::Remove(const std::string& path) {
  const auto place = Find(root_.Get(), path, Missing::kFail);
  if (!place) return device::FileResult::kBadPath;
  if (!place->directory || !IsPlainFile(place->directory.Get(), place->name))
    return device::FileResult::kNotThere;
  const bool removed = unlinkat(place->directory.Get(), place->name.c_str(), 0) == 0;
  return removed ? device::FileResult::kDone : device::FileResult::kFailed;
}

std::vector<std::string> FileStore::List(const std::string& directory) {
  const auto steps = StepsOf(directory);
  const UniqueFd opened = steps ? Walk(root_.Get(), *steps, Missing::kFail) : UniqueFd();
  if (!opened) return {};
  std::vector<std::string> names = NamesIn(opened.Get());
  std::erase_if(names, [&](const std::string& name) { return !IsPlainFile(opened.Get(), name); });
  std::sort(names.begin(), names.end());
  return names;
}

bool FileStore::Reserve(std::uint64_t so_far, std::uint64_t size) {
  const bool fits = so_far + size <= limits_.file && stored_ + pending_ + size <= limits_.total;
  if (fits) pending_ += size;
  return fits;
}

}  // namespace gwq::terminal::store
