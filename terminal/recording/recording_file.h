// SPDX-License-Identifier: MIT
// The file that a recording goes to. What has been appended is there even if this process is killed.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <span>
#include <string>

#include "base/unique_fd.h"

namespace gwq::terminal::recording {

class RecordingFile {
 public:
  // Only for its owner to read and write; what was in it goes. Throws when it cannot be opened.
  explicit RecordingFile(const std::string& path);

  // Whole or not at all. The first failure is told on standard error, and ends the recording.
  void Append(std::span<const std::uint8_t> block);

 private:
  void GiveUp(const std::string& reason);

  std::string path_;
  UniqueFd fd_;
  off_t size_ = 0;
};

}  // namespace gwq::terminal::recording
