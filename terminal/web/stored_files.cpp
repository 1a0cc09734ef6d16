// SPDX-License-Identifier: MIT
#include "web/stored_files.h"

#include "device/files/file_names.h"

namespace gwq::terminal::web {
namespace {

constexpr std::uint64_t kMaxRead = std::uint64_t{64} << 20;

}  // namespace

std::optional<std::string> ReadWhole(device::FileSystem& files, const std::string& path) {
  const auto reader = files.Open(path);
  if (!reader || reader->Size() > kMaxRead) return std::nullopt;
  std::string content(static_cast<std::size_t>(reader->Size()), '\0');
  std::size_t done = 0;
  while (done < content.size()) {
    const auto count =
        reader->Read({reinterpret_cast<std::uint8_t*>(content.data()) + done, content.size() - done});
    if (!count) return std::nullopt;
    if (*count == 0) break;
    done += *count;
  }
  content.resize(done);
  return content;
}

std::vector<std::string> StoredFiles(device::FileSystem& files) {
  constexpr int kMediaTypes = 5;
  std::vector<std::string> directories;
  directories.reserve(kMediaTypes + 1);
  for (int type = 0; type < kMediaTypes; ++type) directories.push_back(device::MediaDirectory(type));
  directories.emplace_back("/tmp");
  std::vector<std::string> paths;
  for (const std::string& directory : directories) {
    for (const std::string& name : files.List(directory)) {
      paths.push_back(directory);
      (paths.back() += '/') += name;
    }
  }
  return paths;
}

}  // namespace gwq::terminal::web
