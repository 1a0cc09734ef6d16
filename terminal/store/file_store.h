// SPDX-License-Identifier: MIT
// The terminal's files in a directory of the host: the path /tmp/hw.png of the
// terminal is DIR/tmp/hw.png.
//
// Nothing outside the directory is ever touched. A path of the terminal begins
// with "/" and has no step ".", ".." or NUL in it; every step is opened on its
// own, relative to the one before, and never through a symbolic link, so that
// links which lie in the directory lead nowhere. Only plain files are read.
//
// A file that comes is written to DIR/.incoming and renamed once it is whole.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "base/unique_fd.h"
#include "device/files/file_system.h"

namespace gwq::terminal::store {

struct StoreLimits {
  std::uint64_t file = std::uint64_t{64} << 20;
  std::uint64_t total = std::uint64_t{1} << 30;  // what is in the store and what is coming
};

class FileStore final : public device::FileSystem {
 public:
  // Makes the directory if it is missing; throws std::system_error if it cannot
  // be used. Files that an earlier run left half-written are removed.
  explicit FileStore(const std::string& directory, StoreLimits limits = {});
  ~FileStore() override;
  FileStore(const FileStore&) = delete;
  FileStore& operator=(const FileStore&) = delete;

  [[nodiscard]] std::unique_ptr<device::FileReader> Open(const std::string& path) override;
  [[nodiscard]] std::unique_ptr<device::FileWriter> Create() override;
  device::FileResult Remove(const std::string& path) override;
  [[nodiscard]] std::vector<std::string> List(const std::string& directory) override;

 private:
  class Reader;
  class Writer;

  // Takes the room for `size` more bytes of a file that has `so_far`.
  [[nodiscard]] bool Reserve(std::uint64_t so_far, std::uint64_t size);
  [[nodiscard]] UniqueFd OpenIncoming() const;

  UniqueFd root_;
  StoreLimits limits_;
  std::uint64_t stored_ = 0;   // when it was last counted
  std::uint64_t pending_ = 0;  // in the files that are coming
};

}  // namespace gwq::terminal::store
