// SPDX-License-Identifier: MIT
// Text that the host sends in pieces, each a command of its own. The piece is a
// record in split form:
//
//   offset  0      4          8      8+n
//           total  remaining  bytes  check
//
//   total, remaining: 32-bit, little-endian; remaining counts the pieces behind
//   this one. check: XOR of everything before it.
//
// The pieces come in order, all for the same file; the first one begins anew, and
// with the last one the file is stored. A piece that does not fit is refused, and
// may be sent again.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "base/secret.h"
#include "device/files/file_system.h"

namespace gwq::terminal::device {

class TextDownload {
 public:
  // What became of a piece; `text` tells the trace.
  struct Result {
    FileResult file = FileResult::kBadPath;
    std::string text;
  };

  explicit TextDownload(FileSystem& files) : files_(files) {}

  [[nodiscard]] Result Take(int type, std::string_view name, std::string_view split_record);

 private:
  struct Piece;

  [[nodiscard]] bool Fits(const std::string& path, const Piece& piece) const;
  [[nodiscard]] FileResult Begin(const std::string& path, const Piece& piece);
  [[nodiscard]] FileResult Add(const Piece& piece);
  [[nodiscard]] FileResult Drop(FileResult why);

  FileSystem& files_;
  std::unique_ptr<FileWriter> writer_;  // there while pieces are to come
  std::string path_;
  std::uint32_t total_ = 0;
  std::uint32_t next_ = 0;  // index of the piece to come, from 1
};

}  // namespace gwq::terminal::device
