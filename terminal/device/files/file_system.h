// SPDX-License-Identifier: MIT
// The terminal's files, as the device sees them. Paths are those of the
// terminal ("/tmp/hw.png"), in UTF-8; what keeps them safe inside some store is
// the store's own affair.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace gwq::terminal::device {

enum class FileResult {
  kDone,
  kNotThere,
  kBadPath,  // no path that a file could have
  kFailed,   // full, too large, not writable
};

// Reads a file from its start to its end.
class FileReader {
 public:
  virtual ~FileReader() = default;
  [[nodiscard]] virtual std::uint64_t Size() const = 0;
  // Fills `out` as far as the file goes; 0 at its end, nothing when reading fails.
  virtual std::optional<std::size_t> Read(std::span<std::uint8_t> out) = 0;
};

// A file that comes piece by piece. It has no name and nobody sees it until it
// is stored; destroyed before, it is gone.
class FileWriter {
 public:
  virtual ~FileWriter() = default;
  // False when it did not fit; the file can then only be dropped.
  [[nodiscard]] virtual bool Append(std::span<const std::uint8_t> bytes) = 0;
  // Puts the whole file in the place of the one that may be there. At most once.
  [[nodiscard]] virtual FileResult StoreAs(const std::string& path) = 0;
};

// Must outlive its readers and writers.
class FileSystem {
 public:
  virtual ~FileSystem() = default;

  // Null when there is no such file.
  [[nodiscard]] virtual std::unique_ptr<FileReader> Open(const std::string& path) = 0;
  // Null when nothing can be written at all.
  [[nodiscard]] virtual std::unique_ptr<FileWriter> Create() = 0;
  virtual FileResult Remove(const std::string& path) = 0;
  // The names of the files directly in a directory, in order; none if it is missing.
  [[nodiscard]] virtual std::vector<std::string> List(const std::string& directory) = 0;
};

// A whole file at once.
inline FileResult StoreFile(FileSystem& files, const std::string& path,
                            std::span<const std::uint8_t> content) {
  const auto writer = files.Create();
  if (!writer || !writer->Append(content)) return FileResult::kFailed;
  return writer->StoreAs(path);
}

// A terminal without storage: nothing is there, and nothing can be written.
class NoFiles final : public FileSystem {
 public:
  std::unique_ptr<FileReader> Open(const std::string&) override { return nullptr; }
  std::unique_ptr<FileWriter> Create() override { return nullptr; }
  FileResult Remove(const std::string&) override { return FileResult::kNotThere; }
  std::vector<std::string> List(const std::string&) override { return {}; }
};

}  // namespace gwq::terminal::device
